#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SampleRoot.h"
#include "context/SxContextManager.h"
#include "manager/ParameterAdapter.h"
#include "manager/SxManager.h"
#include "platform/AupParamStore.h"
#include "platform/FileSystemRoot.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

constexpr const char* kAdapterTag = "ParameterAdapter";
constexpr const char* kManagerTag = "SxManager";

// Every test of this binary shares one device root with the sample tuning
// file: the manager reaches the context through the process-wide singleton.
const ::testing::Environment* const kEnvironment =
        ::testing::AddGlobalTestEnvironment(new test::SampleRootEnvironment());

SxContext* sharedContext() {
    return SxContextManager::getInstance().getSxContext();
}

TEST(ParameterAdapterTest, ClampsInPlaceExceptTheVirtualizer) {
    SxContext* context = sharedContext();
    ASSERT_NE(nullptr, context);
    ParameterAdapter adapter(context);

    std::vector<int> amount = {20};
    adapter.setParameter(1, 107, amount);
    EXPECT_EQ(std::vector<int>({16}), amount);
    EXPECT_EQ(amount, adapter.getParameter(1, 107));
    amount = {-3};
    adapter.setParameter(1, 107, amount);
    EXPECT_EQ(std::vector<int>({0}), adapter.getParameter(1, 107));

    std::vector<int> leveler = {1};
    adapter.setParameter(1, 103, leveler);
    for (Endpoint e : {Endpoint::SPEAKER, Endpoint::HEADPHONE, Endpoint::OTHER}) {
        EXPECT_EQ(leveler, adapter.getProfileEndpointParameter(1, e, 103));
    }
    std::vector<int> speakerOnly = {0};
    adapter.setProfileEndpointParameter(1, Endpoint::SPEAKER, 103, speakerOnly);
    EXPECT_EQ(speakerOnly, adapter.getParameter(1, 103));  // reads the speaker's value
    EXPECT_EQ(leveler, adapter.getProfileEndpointParameter(1, Endpoint::HEADPHONE, 103));

    std::vector<int> headphoneBefore =
            context->getProfileParameter(1, Endpoint::SPEAKER, Parameter::VIRTUALIZER_ENABLE);
    std::vector<int> virtualizer = {5};
    adapter.setParameter(1, 101, virtualizer);
    EXPECT_EQ(std::vector<int>({5}), adapter.getParameter(1, 101));
    EXPECT_EQ(headphoneBefore,
              context->getProfileParameter(1, Endpoint::SPEAKER, Parameter::VIRTUALIZER_ENABLE));

    std::vector<int> gains(20, 0);
    gains[0] = 1000;
    gains[19] = -1000;
    adapter.setParameter(1, 110, gains);
    std::vector<int> stored = adapter.getParameter(1, 110);
    ASSERT_EQ(20u, stored.size());
    EXPECT_EQ(576, stored[0]);
    EXPECT_EQ(-576, stored[19]);
    EXPECT_EQ(20, adapter.getParameterLength(110));
}

TEST(ParameterAdapterTest, UnsupportedIdsAndTheSetGetAsymmetry) {
    ParameterAdapter adapter(sharedContext());
    LogCapture log;
    std::vector<int> v = {1};
    adapter.setParameter(0, 100, v);
    EXPECT_TRUE(adapter.getParameter(0, 100).empty());
    EXPECT_EQ(1, adapter.getParameterLength(100));
    EXPECT_EQ(3u, log.count(kAdapterTag, "param id 100 not supported"));

    log.clear();
    adapter.setParameter(0, 117, v);
    adapter.setProfileEndpointParameter(0, Endpoint::SPEAKER, 117, v);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_TRUE(adapter.getParameter(0, 117).empty());
    EXPECT_TRUE(adapter.getProfileEndpointParameter(0, Endpoint::SPEAKER, 117).empty());
    EXPECT_EQ(1, adapter.getParameterLength(117));
    EXPECT_EQ(3u, log.count(kAdapterTag, "param id 117 not supported"));
}

class SxManagerTest : public ::testing::Test {
  protected:
    SxManagerTest() : manager(nullptr, sharedContext()) {}
    void SetUp() override { ASSERT_EQ(0, manager.init()); }
    SxManager manager;
};

TEST_F(SxManagerTest, InitSendsTheWholeStateAndChecksArguments) {
    EXPECT_GT(AupParamStore::getInstance().storedParams(true).size(), 100u);
    EXPECT_EQ(5, manager.getNumOfProfiles());

    // 111 is mirrored onto 112, never the other way.
    ASSERT_TRUE(manager.setParameter(2, 111, {1}));
    EXPECT_EQ(std::vector<int>({1}), manager.getParameter(2, 112));
    ASSERT_TRUE(manager.setParameter(2, 112, {0}));
    EXPECT_EQ(std::vector<int>({1}), manager.getParameter(2, 111));
    EXPECT_FALSE(manager.setParameter(2, 111, {}));
    EXPECT_FALSE(manager.setParameter(5, 111, {1}));
    EXPECT_FALSE(manager.setParameter(-1, 111, {1}));
    EXPECT_FALSE(manager.setParameter(0, 99, {1}));
    EXPECT_TRUE(manager.getParameter(0, 99).empty());

    LogCapture log;
    EXPECT_EQ("", manager.getProfileName(-1));
    EXPECT_TRUE(log.contains(kManagerTag, "Invalid Profile Id!"));
    EXPECT_EQ(0, manager.getParamLength(99));
    EXPECT_TRUE(log.contains(kManagerTag, "Invalid paramId!"));
    EXPECT_TRUE(manager.setProfilePortParameter(2, 6, 105, {1}));
    EXPECT_EQ(std::vector<int>({1}), manager.getProfilePortParameter(2, 6, 105));
    EXPECT_FALSE(manager.setProfilePortParameter(2, 7, 105, {1}));
    EXPECT_TRUE(manager.getProfilePortParameter(2, 7, 105).empty());
    EXPECT_EQ(2u, log.count(kManagerTag, "Invalid Port!"));
    // An empty list is passed on by the port form: nothing changes.
    std::vector<int> speaker = manager.getProfilePortParameter(2, 0, 105);
    ASSERT_FALSE(speaker.empty());
    EXPECT_TRUE(manager.setProfilePortParameter(2, 0, 105, {}));
    EXPECT_EQ(speaker, manager.getProfilePortParameter(2, 0, 105));
}

TEST_F(SxManagerTest, SuspensionMasksTheSwitchOnly) {
    manager.setSxOn(true);
    manager.setSxSuspended(true);
    EXPECT_FALSE(manager.getSxOn());
    manager.setSxOn(false);
    manager.setSxSuspended(false);
    EXPECT_FALSE(manager.getSxOn());
    manager.setSxOn(true);
    EXPECT_TRUE(manager.getSxOn());
}

TEST_F(SxManagerTest, TuningDevicesAndTuningReads) {
    std::vector<std::string> devices = manager.getAvailableTuningDevices(Port::HDMI);
    int expected = 0;
    for (const std::string& d : devices) expected += static_cast<int>(d.size()) + 1;
    EXPECT_EQ(expected, manager.getAvailableTuningDevicesLen(Port::HDMI));
    EXPECT_EQ("default_hdmi", manager.getSelectedTuningName(Port::HDMI));
    EXPECT_FALSE(manager.setSelectedTuning(Port::HDMI, "nope"));
    EXPECT_EQ("3.3.0", manager.getDefaultXmlFormatVersion());
    EXPECT_EQ("SX_VERSION_EXTERNAL", manager.getSxVersion());
    EXPECT_EQ(-2, manager.reloadTuningXml());  // no OEM file in this root
}

}  // namespace
}  // namespace vessa
