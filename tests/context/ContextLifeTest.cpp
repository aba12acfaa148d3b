#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "SampleRoot.h"
#include "effect/AupController.h"
#include "effect/AupEffect.h"
#include "effect/AupParameter.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

using test::SampleRoot;

constexpr const char* kManagerTag = "SxContextManager";
constexpr const char* kUpdated = "Tuning XML file has been updated";

std::string codeOf(uint32_t id) {
    return unpackParameterCode(id);
}

std::vector<std::string> codesFor(const std::vector<AupParamCache>& entries, uint32_t device) {
    std::vector<std::string> codes;
    for (const AupParamCache& e : entries) {
        if (e.getDevice() == device) codes.push_back(codeOf(e.getParameterId()));
    }
    return codes;
}

std::vector<int32_t> valueOf(const std::vector<AupParamCache>& entries, uint32_t device,
                             const std::string& code) {
    for (const AupParamCache& e : entries) {
        if (e.getDevice() == device && codeOf(e.getParameterId()) == code) return e.getValues();
    }
    return {-999};
}

// One process life: the manager, an effect and a controller attached to the context.
struct Life {
    Life() : effect(0, android::String16("test")), controller(2, effect) {
        context = manager.getSxContext();
        if (context != nullptr) context->registerObserver(&controller);
    }
    ~Life() {
        if (context != nullptr) context->unregisterObserver(&controller);
    }
    SxContextManager manager;
    AupEffect effect;
    AupController controller;
    SxContext* context = nullptr;
};

AupParamStore& store() {
    return AupParamStore::getInstance();
}

TEST(ContextLifeTest, FollowsAWholeLifeFromTheSampleTuningFile) {
    SampleRoot root;
    store().reset();
    std::vector<AupParamCache> firstState;
    {
        LogCapture log;
        Life life;
        ASSERT_NE(nullptr, life.context);
        EXPECT_TRUE(log.contains(kManagerTag, kUpdated));
        EXPECT_TRUE(log.contains(kManagerTag, "OEM Tuning XML doesn't exist!"));
        EXPECT_EQ(5, life.context->getNumOfProfiles());
        EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
        EXPECT_TRUE(life.context->getAupOn());
        EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));

        // The full state reached the store in one commit, for every device.
        EXPECT_EQ(1u, store().getCommitCount());
        firstState = store().storedParams(true);
        for (AndroidDevice device : AupController::kControlledDevices) {
            EXPECT_FALSE(codesFor(firstState, device).empty()) << std::hex << device;
        }
        ProfileEndpoint* speaker = life.context->getProfileEndpoint(0, Endpoint::SPEAKER);
        EXPECT_EQ(speaker->valuesOf(Parameter::DIALOG_ENHANCER_ENABLE),
                  valueOf(firstState, kDeviceOutSpeaker, "DEON"));
        EXPECT_EQ(life.context->getProfile(0)->valuesOf(Parameter::VOLUME_MODELER_ENABLE),
                  valueOf(firstState, kDeviceOutDefault, "DVME"));
    }

    // Second start with the file unchanged: the database alone, same state.
    store().reset();
    {
        LogCapture log;
        Life life;
        ASSERT_NE(nullptr, life.context);
        EXPECT_FALSE(log.contains(kManagerTag, kUpdated));
        EXPECT_EQ(firstState, store().storedParams(true));

        // A profile change sends only what differs, device by device, with the
        // profile-wide values last.
        uint64_t commits = store().getCommitCount();
        life.context->setSelectedProfile(1);
        EXPECT_EQ(commits + 1, store().getCommitCount());
        std::vector<AupParamCache> batch = store().lastCommit();
        ASSERT_FALSE(batch.empty());
        EXPECT_LT(batch.size(), firstState.size() / 2);
        EXPECT_EQ(kDeviceOutDefault, batch.back().getDevice());
        EXPECT_TRUE(std::is_sorted(batch.begin(), batch.end(),
                                   [](const AupParamCache& a, const AupParamCache& b) {
                                       return a.getDevice() < b.getDevice();
                                   }));
        for (const AupParamCache& entry : batch) {
            std::string code = codeOf(entry.getParameterId());
            // Tuning-only codes do not move when the profile changes.
            for (const char* tuningOnly : {"AOBS", "ARBS", "VBSF", "DFSA", "DVMC", "AOON"}) {
                EXPECT_NE(tuningOnly, code);
            }
        }
        ProfileEndpoint* headphone = life.context->getProfileEndpoint(1, Endpoint::HEADPHONE);
        std::vector<AupParamCache> now = store().storedParams(true);
        EXPECT_EQ(headphone->valuesOf(Parameter::VOLUME_LEVELER_AMOUNT),
                  valueOf(now, kDeviceOutBluetoothA2dp, "DVLA"));

        // A tuning change on one port concerns that port's device only.
        ASSERT_TRUE(life.context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
        batch = store().lastCommit();
        ASSERT_FALSE(batch.empty());
        for (const AupParamCache& entry : batch) {
            EXPECT_EQ(kDeviceOutBluetoothA2dp, entry.getDevice());
        }
        life.context->save();
    }

    // OEM additions: new devices appear, collisions with the default are dropped.
    {
        LogCapture log;
        Life life;
        ASSERT_NE(nullptr, life.context);
        EXPECT_EQ(1, life.context->getSelectedProfile()->getProfileId());
        EXPECT_EQ("bt_earbuds_b", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
        root.installOem(root.sampleOem());
        EXPECT_EQ(0, life.manager.loadOemTuning());
        std::vector<std::string> devices = life.context->getAvailableTuningDevice(Port::BLUETOOTH);
        EXPECT_NE(devices.end(), std::find(devices.begin(), devices.end(), "bt_neckband_x1"));
        EXPECT_EQ(1, std::count(devices.begin(), devices.end(), "bt_earbuds_a"));
        EXPECT_TRUE(log.contains(kManagerTag,
                                 "Found OEM device ID [bt_earbuds_a] already exists in the default "
                                 "tuning XML, drop it."));
        EXPECT_TRUE(life.context->setSelectedTuning(Port::BLUETOOTH, "bt_neckband_x1", false));

        // An OEM file of another format version is refused as a whole.
        std::string other = root.sampleOem();
        size_t at = other.find("major=\"3\" minor=\"3\"");
        ASSERT_NE(std::string::npos, at) << "sample OEM file format version changed";
        other.replace(at, 19, "major=\"3\" minor=\"2\"");
        root.installOem(other);
        log.clear();
        EXPECT_EQ(-22, life.manager.loadOemTuning());
        EXPECT_TRUE(log.contains(kManagerTag,
                                 "OEM tuning format V=3.2.0 is not consistent with current "
                                 "V=3.3.0, abort loading OEM tuning XML."));
    }

    // A touched default file refills the database: user choices are gone.
    root.touchDefault(10);
    {
        LogCapture log;
        Life life;
        ASSERT_NE(nullptr, life.context);
        EXPECT_TRUE(log.contains(kManagerTag, kUpdated));
        EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
        EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
    }
}

TEST(ContextLifeTest, MissingDefaultFileLeavesNoContext) {
    test::TempDir empty;
    FileSystemRoot::set(empty.path());
    LogCapture log;
    SxContextManager manager;
    EXPECT_EQ(nullptr, manager.getSxContext());
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kManagerTag,
                             "Default XML Tuning file doesn't exist!!"));
    EXPECT_EQ(-19, manager.loadOemTuning());
    FileSystemRoot::set("/");
}

}  // namespace
}  // namespace vessa
