#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "SampleRoot.h"
#include "effect/AupController.h"
#include "effect/AupParameter.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

using Entries = std::vector<AupParamCache>;
using namespace ::testing;
constexpr const char* kTag = "SxContextManager";
constexpr const char* kUpdated = "Tuning XML file has been updated";

AupParamStore& store() {
    return AupParamStore::getInstance();
}

// The committed values of one code of one device; {-999} when it was never sent.
std::vector<int32_t> committed(uint32_t device, const std::string& code) {
    for (const AupParamCache& e : store().storedParams(true)) {
        if (e.getDevice() == device && unpackParameterCode(e.getParameterId()) == code) {
            return e.getValues();
        }
    }
    return {-999};
}

// One process life: the manager, and an effect's controller observing its context.
struct Life {
    Life() : effect(0, android::String16("test")), controller(2, effect) {
        if (context == nullptr) throw std::runtime_error("the start left no context");
        context->registerObserver(&controller);
    }
    ~Life() { context->unregisterObserver(&controller); }
    SxContextManager manager;
    SxContext* context = manager.getSxContext();
    AupEffect effect;
    AupController controller;
};

// The sample default tuning file before the first start, and an empty effect store.
class AFreshRoot : public Test {
  protected:
    AFreshRoot() { store().reset(); }
    test::SampleRoot root;
    LogCapture log;
};

TEST_F(AFreshRoot, StoresTheDefaultFileOnFirstStart) {
    Life life;
    EXPECT_TRUE(log.contains(kTag, kUpdated));
    EXPECT_TRUE(log.contains(kTag, "OEM Tuning XML doesn't exist!"));
    EXPECT_EQ(5, life.context->getNumOfProfiles());
    EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
    EXPECT_TRUE(life.context->getAupOn());
    EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
}

TEST_F(AFreshRoot, SendsTheWholeStateForEveryDeviceInOneCommit) {
    Life life;
    EXPECT_EQ(1u, store().getCommitCount());
    std::set<uint32_t> devices;
    for (const AupParamCache& e : store().storedParams(true)) devices.insert(e.getDevice());
    EXPECT_THAT(devices, IsSupersetOf(AupController::kControlledDevices));
    EXPECT_EQ(life.context->getProfileEndpoint(0, Endpoint::SPEAKER)
                      ->valuesOf(Parameter::DIALOG_ENHANCER_ENABLE),
              committed(kDeviceOutSpeaker, "DEON"));
    EXPECT_EQ(life.context->getProfile(0)->valuesOf(Parameter::VOLUME_MODELER_ENABLE),
              committed(kDeviceOutDefault, "DVME"));
}

TEST_F(AFreshRoot, StartsFromTheDatabaseAloneWhileTheFileIsUnchanged) {
    Entries first;
    {
        Life life;
        first = store().storedParams(true);
    }
    store().reset();
    log.clear();
    Life life;
    EXPECT_FALSE(log.contains(kTag, kUpdated));
    EXPECT_EQ(first, store().storedParams(true));
}

// That the saved choices are kept while the file is unchanged is followed through the
// daemon's restart in the end-to-end tests.
TEST_F(AFreshRoot, RefillsTheDatabaseAndDropsTheSavedChoicesWhenTheFileChanges) {
    {
        Life life;
        life.context->setSelectedProfile(1);
        ASSERT_TRUE(life.context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
        life.context->save();
    }
    root.touchDefault(10);
    log.clear();
    Life life;
    EXPECT_TRUE(log.contains(kTag, kUpdated));
    EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
    EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
}

TEST(AnEmptyRoot, StartsNoContext) {
    test::TempDir empty;
    FileSystemRoot::set(empty.path());
    LogCapture log;
    SxContextManager manager;
    EXPECT_EQ(nullptr, manager.getSxContext());
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Default XML Tuning file doesn't exist!!"));
    EXPECT_EQ(-19, manager.loadOemTuning());
    FileSystemRoot::set("/");
}

class AStartedLife : public AFreshRoot {
  protected:
    Life life;
    SxContext* context = life.context;
};

TEST_F(AStartedLife, SendsOnlyWhatAProfileChangeAltersDeviceByDeviceProfileWideLast) {
    const size_t whole = store().storedParams(true).size();
    context->setSelectedProfile(1);
    EXPECT_EQ(2u, store().getCommitCount());
    const Entries batch = store().lastCommit();
    ASSERT_FALSE(batch.empty());
    EXPECT_LT(batch.size(), whole / 2);
    EXPECT_EQ(kDeviceOutDefault, batch.back().getDevice());
    std::vector<uint32_t> devices;
    for (const AupParamCache& entry : batch) {
        devices.push_back(entry.getDevice());
        // Tuning-only codes do not move when the profile changes.
        EXPECT_THAT((std::vector<std::string>{"AOBS", "ARBS", "VBSF", "DFSA", "DVMC", "AOON"}),
                    Not(Contains(unpackParameterCode(entry.getParameterId()))));
    }
    EXPECT_TRUE(std::is_sorted(devices.begin(), devices.end()));
    EXPECT_EQ(context->getProfileEndpoint(1, Endpoint::HEADPHONE)
                      ->valuesOf(Parameter::VOLUME_LEVELER_AMOUNT),
              committed(kDeviceOutBluetoothA2dp, "DVLA"));
}

TEST_F(AStartedLife, SendsATuningChangeToThatPortsDeviceOnly) {
    ASSERT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
    std::set<uint32_t> devices;
    for (const AupParamCache& entry : store().lastCommit()) devices.insert(entry.getDevice());
    EXPECT_EQ(std::set<uint32_t>{kDeviceOutBluetoothA2dp}, devices);
}

TEST_F(AStartedLife, AddsTheOemDevicesExceptThoseTheDefaultFileHas) {
    root.installOem(root.sampleOem());
    EXPECT_EQ(0, life.manager.loadOemTuning());
    const std::vector<std::string> devices = context->getAvailableTuningDevice(Port::BLUETOOTH);
    EXPECT_EQ(1, std::count(devices.begin(), devices.end(), "bt_neckband_x1"));
    EXPECT_EQ(1, std::count(devices.begin(), devices.end(), "bt_earbuds_a"));
    EXPECT_TRUE(log.contains(kTag,
                             "Found OEM device ID [bt_earbuds_a] already exists in the default "
                             "tuning XML, drop it."));
    EXPECT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_neckband_x1", false));
}

TEST_F(AStartedLife, RefusesAWholeOemFileOfAnotherFormatVersion) {
    std::string other = root.sampleOem();
    const size_t at = other.find("major=\"3\" minor=\"3\"");
    ASSERT_NE(std::string::npos, at) << "sample OEM file format version changed";
    root.installOem(other.replace(at, 19, "major=\"3\" minor=\"2\""));
    EXPECT_EQ(-22, life.manager.loadOemTuning());
    EXPECT_TRUE(log.contains(kTag,
                             "OEM tuning format V=3.2.0 is not consistent with current V=3.3.0, "
                             "abort loading OEM tuning XML."));
    EXPECT_FALSE(context->setSelectedTuning(Port::BLUETOOTH, "bt_neckband_x1", false));
}

}  // namespace
}  // namespace vessa
