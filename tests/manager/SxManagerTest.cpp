#include <gtest/gtest.h>

#include <vector>

#include "SampleRoot.h"
#include "manager/SxManager.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

using Values = std::vector<int>;
constexpr const char* kTag = "SxManager";

// Every test of this binary shares one device root with the sample tuning file: the
// manager reaches the context through the process-wide singleton.
const ::testing::Environment* const kEnvironment =
        ::testing::AddGlobalTestEnvironment(new test::SampleRootEnvironment());

class AStartedManager : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(0, manager.init()); }
    SxManager manager;
};

TEST_F(AStartedManager, ClampsEveryValueIntoItsRangeButTheVirtualizers) {
    Values gains(20, 0), clamped(20, 0);
    gains[0] = 1000, gains[19] = -1000, clamped[0] = 576, clamped[19] = -576;
    const Values speakerVirtualizer = manager.getParameter(1, 102);
    const struct {
        int id;
        Values in, out;
    } cases[] = {{107, {20}, {16}},
                 {107, {-3}, {0}},
                 {115, {12}, {9}},
                 {101, {5}, {5}},
                 {110, gains, clamped}};
    for (const auto& c : cases) {
        ASSERT_TRUE(manager.setParameter(1, c.id, c.in));
        EXPECT_EQ(c.out, manager.getParameter(1, c.id)) << c.id;
    }
    EXPECT_EQ(20, manager.getParamLength(110));
    EXPECT_EQ(speakerVirtualizer, manager.getParameter(1, 102));  // 101 is the headphone's
}

TEST_F(AStartedManager, WritesAnEndpointParameterToEveryPortAndReadsTheSpeakers) {
    ASSERT_TRUE(manager.setParameter(1, 103, {1}));
    for (int port = 0; port <= 6; ++port) {
        EXPECT_EQ(Values{1}, manager.getProfilePortParameter(1, port, 103)) << port;
    }
    ASSERT_TRUE(manager.setProfilePortParameter(1, 0, 103, {0}));
    EXPECT_EQ(Values{0}, manager.getParameter(1, 103));
    EXPECT_EQ(Values{1}, manager.getProfilePortParameter(1, 3, 103));
}

TEST_F(AStartedManager, MirrorsTheBassEnhancerOntoTheVirtualBassButNotBack) {
    ASSERT_TRUE(manager.setParameter(2, 111, {1}));
    EXPECT_EQ(Values{1}, manager.getParameter(2, 112));
    ASSERT_TRUE(manager.setParameter(2, 112, {0}));
    EXPECT_EQ(Values{1}, manager.getParameter(2, 111));
}

TEST_F(AStartedManager, RefusesAnEmptyListAnIdBelowTheTableOrABadProfileOrPortLoggingTheLast) {
    LogCapture log;
    EXPECT_FALSE(manager.setParameter(2, 111, {}));
    EXPECT_FALSE(manager.setParameter(5, 111, {1}));
    EXPECT_FALSE(manager.setParameter(-1, 111, {1}));
    EXPECT_FALSE(manager.setParameter(0, 99, {1}));
    EXPECT_TRUE(manager.getParameter(0, 99).empty());
    EXPECT_EQ("", manager.getProfileName(-1));
    EXPECT_TRUE(log.contains(kTag, "Invalid Profile Id!"));
    EXPECT_EQ(0, manager.getParamLength(99));
    EXPECT_TRUE(log.contains(kTag, "Invalid paramId!"));
    EXPECT_FALSE(manager.setProfilePortParameter(2, 7, 105, {1}));
    EXPECT_TRUE(manager.getProfilePortParameter(2, 7, 105).empty());
    EXPECT_EQ(2u, log.count(kTag, "Invalid Port!"));
}

// 100 is inside the adapter's id table but unsupported; 117 is past its end.
TEST_F(AStartedManager, LogsAnUnsupportedIdAtEveryUseAndOnePastTheTableOnlyWhenRead) {
    LogCapture log;
    for (int id : {100, 117}) {
        manager.setParameter(0, id, {1});
        manager.setProfilePortParameter(0, 0, id, {1});
        EXPECT_TRUE(manager.getParameter(0, id).empty());
        EXPECT_TRUE(manager.getProfilePortParameter(0, 0, id).empty());
        EXPECT_EQ(1, manager.getParamLength(id));
    }
    EXPECT_EQ(5u, log.count("ParameterAdapter", "param id 100 not supported"));
    EXPECT_EQ(3u, log.count("ParameterAdapter", "param id 117 not supported"));
}

TEST_F(AStartedManager, MasksTheSwitchWhileSuspendedWithoutChangingIt) {
    manager.setSxOn(true);
    manager.setSxSuspended(true);
    EXPECT_FALSE(manager.getSxOn());
    manager.setSxOn(false);
    manager.setSxSuspended(false);
    EXPECT_FALSE(manager.getSxOn());
    manager.setSxOn(true);
    EXPECT_TRUE(manager.getSxOn());
}

TEST_F(AStartedManager, RefusesAnUnknownTuningDeviceAndAReloadWithoutAnOemFile) {
    EXPECT_FALSE(manager.setSelectedTuning(Port::HDMI, "nope"));
    EXPECT_EQ("default_hdmi", manager.getSelectedTuningName(Port::HDMI));
    EXPECT_EQ(-2, manager.reloadTuningXml());
}

}  // namespace
}  // namespace vessa
