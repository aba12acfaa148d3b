#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "SampleRoot.h"
#include "platform/LogCapture.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

using test::SampleRoot;

// Reads the context back through its locking getters from inside every
// notification, as the effect controller does, and records what it was told.
class ReadingObserver : public OnSxContextChange {
  public:
    void onLoad(SxContext& sx) override { record("load", sx); }
    void onAupOnChanged(SxContext& sx, bool on) override {
        record(on ? "on" : "off", sx);
        EXPECT_EQ(on, sx.getAupOn());
    }
    void onSelectedProfileChanged(SxContext& sx) override {
        record("profile " + std::to_string(sx.getSelectedProfile()->getProfileId()), sx);
    }
    void onSelectedProfileParameterChanged(SxContext& sx, Profile& profile) override {
        record("profile-parameter", sx);
        EXPECT_EQ(&profile, sx.getSelectedProfile());
    }
    void onSelectedProfileEndpointChanged(SxContext& sx, Port port, ProfileEndpoint& pe) override {
        record(std::string("endpoint ") + portName(port), sx);
        EXPECT_EQ(&pe, sx.getSelectedProfileEndpoint(port));
    }
    void onSelectedProfileIeqChanged(SxContext& sx, Port port, IeqPreset& preset) override {
        record(std::string("ieq ") + portName(port) + " " + presetTypeName(preset.getType()), sx);
        EXPECT_EQ(&preset, sx.getSelectedProfileIeq(port));
    }
    void onSelectedProfileGeqChanged(SxContext& sx, GeqPreset& preset) override {
        record("geq", sx);
        EXPECT_EQ(&preset, sx.getSelectedProfileGeq());
    }
    void onSelectedTuningChanged(SxContext& sx, Port port, Tuning& tuning) override {
        record(std::string("tuning ") + portName(port), sx);
        EXPECT_EQ(&tuning, sx.getSelectedTuning(port));
    }

    std::vector<std::string> events;

  private:
    void record(const std::string& event, SxContext& sx) {
        events.push_back(event);
        // Every locking getter must be callable from here without deadlock.
        sx.getSelectedProfile();
        sx.getSelectedProfileGeq();
        sx.getAupOn();
        for (Port port : SxContext::kSupportedPorts) {
            sx.getSelectedProfileEndpoint(port);
            sx.getSelectedProfileIeq(port);
        }
        sx.getProfileParameter(0, Endpoint::SPEAKER, Parameter::IEQ_AMOUNT);
        sx.isProfileModified(0);
    }
};

class ContextNotificationTest : public ::testing::Test {
  protected:
    void SetUp() override {
        context = manager.getSxContext();
        ASSERT_NE(nullptr, context);
        context->registerObserver(&observer);
        observer.events.clear();
    }
    void TearDown() override {
        if (context != nullptr) context->unregisterObserver(&observer);
    }

    SampleRoot root;
    SxContextManager manager;
    SxContext* context = nullptr;
    ReadingObserver observer;
};

TEST_F(ContextNotificationTest, NotifiesAfterReleasingTheLockInTheStatedOrder) {
    context->setAupOn(false);
    context->setAupOn(false);
    context->setSelectedProfile(2);
    context->setSelectedProfile(2);
    std::vector<int> on = {1};
    context->setProfileParameter(2, Parameter::VOLUME_MODELER_ENABLE, on);
    // Not the selected profile: stored silently.
    std::vector<int> amount = {7};
    context->setProfileParameter(3, Endpoint::HEADPHONE, Parameter::IEQ_AMOUNT, amount);
    EXPECT_EQ(std::vector<std::string>({"off", "profile 2", "profile-parameter"}), observer.events);
    EXPECT_EQ(amount, context->getProfileParameter(3, Endpoint::HEADPHONE, Parameter::IEQ_AMOUNT));

    // An endpoint value reaches every port whose tuning is on that endpoint.
    observer.events.clear();
    std::vector<int> leveler = {9};
    context->setProfileParameter(2, Endpoint::HEADPHONE, Parameter::VOLUME_LEVELER_AMOUNT, leveler);
    EXPECT_EQ(
            std::vector<std::string>({"endpoint headphone", "endpoint bluetooth", "endpoint usb"}),
            observer.events);

    // Selecting preset 0 switches the IEQ off first, then announces the preset per port.
    observer.events.clear();
    std::vector<int> off = {0};
    context->setProfileParameter(2, Endpoint::SPEAKER, Parameter::IEQ_ID, off);
    EXPECT_EQ(std::vector<std::string>({"endpoint internal_speaker", "ieq internal_speaker off"}),
              observer.events);
    EXPECT_EQ(std::vector<int>({0}),
              context->getProfileParameter(2, Endpoint::SPEAKER, Parameter::IEQ_ENABLE));
    observer.events.clear();
    std::vector<int> warm = {3};
    context->setProfileParameter(2, Endpoint::SPEAKER, Parameter::IEQ_ID, warm);
    EXPECT_EQ(std::vector<std::string>({"endpoint internal_speaker", "ieq internal_speaker warm"}),
              observer.events);

    {
        LogCapture log;
        observer.events.clear();
        std::vector<int> bad = {4};
        context->setProfileParameter(2, Endpoint::SPEAKER, Parameter::IEQ_ID, bad);
        EXPECT_TRUE(observer.events.empty());
        EXPECT_TRUE(log.contains("SxContext", "setProfileParameter(): Invalid IEq preset 4"));
        std::vector<int> bass = {1};
        context->setProfileParameter(2, Endpoint::HEADPHONE, Parameter::VIRTUAL_BASS_ENABLE, bass);
        EXPECT_TRUE(log.contains(
                "SxContext",
                "Setting virtual-bass-enable is not supported for non-speaker endpoints"));
    }

    // The write rule: a prefix of the stored values is no change; an empty
    // write changes nothing once values exist.
    observer.events.clear();
    std::vector<int> gains = context->getProfileGeqParameter(2, Parameter::GEQ_GAIN);
    ASSERT_GT(gains.size(), 2u);
    std::vector<int> prefix(gains.begin(), gains.begin() + 2);
    context->setProfileGeqParameter(2, Parameter::GEQ_GAIN, prefix);
    std::vector<int> empty;
    context->setProfileGeqParameter(2, Parameter::GEQ_GAIN, empty);
    EXPECT_TRUE(observer.events.empty());
    gains[0] += 1;
    context->setProfileGeqParameter(2, Parameter::GEQ_GAIN, gains);
    EXPECT_TRUE(context->isProfileGeqModified(2));
    context->resetProfileGeq(2);
    EXPECT_FALSE(context->isProfileGeqModified(2));
    context->resetProfile(2);
    EXPECT_FALSE(context->isProfileModified(2));
    EXPECT_EQ(std::vector<std::string>({"geq", "geq", "profile 2"}), observer.events);

    // Tunings: same device is a no-op unless forced; reloads announce every port.
    observer.events.clear();
    EXPECT_TRUE(context->setSelectedTuning(Port::USB, "default_usb", false));
    EXPECT_TRUE(context->setSelectedTuning(Port::USB, "default_usb", true));
    EXPECT_FALSE(context->setSelectedTuning(Port::USB, "no_such_device", false));
    EXPECT_EQ(std::vector<std::string>({"tuning usb"}), observer.events);
    observer.events.clear();
    context->reloadTuning();
    context->reloadAllProfile();
    EXPECT_EQ(std::vector<std::string>({"tuning internal_speaker", "tuning hdmi", "tuning miracast",
                                        "tuning headphone", "tuning bluetooth", "tuning usb",
                                        "profile 0", "on"}),
              observer.events);
}

TEST_F(ContextNotificationTest, DefaultDeviceRuleAndSaveOfAnUnselectedProfile) {
    EXPECT_EQ("default_hdmi", context->getDefaultTuningDevice(Port::HDMI));
    // A port without any device falls back to its own name.
    EXPECT_EQ("other", context->getDefaultTuningDevice(Port::OTHER));

    std::vector<int> amount = {3};
    context->setProfileParameter(4, Endpoint::OTHER, Parameter::DIALOG_ENHANCER_AMOUNT, amount);
    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(context->isProfileModified(4));
    EXPECT_TRUE(context->isProfileSpecificSettingsModified(4));
    EXPECT_FALSE(context->isProfileGeqModified(4));
    context->save();

    SxContextManager again;
    SxContext* reloaded = again.getSxContext();
    ASSERT_NE(nullptr, reloaded);
    EXPECT_EQ(amount,
              reloaded->getProfileParameter(4, Endpoint::OTHER, Parameter::DIALOG_ENHANCER_AMOUNT));
}

using ContextDeathTest = ContextNotificationTest;

TEST_F(ContextDeathTest, UnknownProfileIdEndsTheProcess) {
    EXPECT_EXIT(
            {
                __android_log_set_minimum_priority(ANDROID_LOG_ERROR);
                context->getProfile(99);
            },
            ::testing::ExitedWithCode(255), "Couldn't find the context for profileId: 99");
}

// A provider over the sample database whose profiles have speaker settings only.
class SpeakerOnlyProvider : public Provider {
  public:
    SpeakerOnlyProvider() { mEndpoints.insert(&mSpeaker); }
    ProfileEndpointSet loadProfileEndpoints(int) override { return mEndpoints; }
    ProfileEndpointSet loadDefaultProfileEndpoints(int) override { return mEndpoints; }

  private:
    ProfileEndpoint mSpeaker{0, Endpoint::SPEAKER, PresetType::OFF};
    ProfileEndpointSet mEndpoints;
};

TEST(ContextDeathTestNoFixture, MissingProfileEndpointEndsTheProcess) {
    SampleRoot root;
    { SxContextManager populate; }
    SpeakerOnlyProvider provider;
    ASSERT_EQ(0, provider.init());
    ProfileContext context(&provider, 0);
    context.load();
    EXPECT_NE(nullptr, context.getProfileEndpoint(Endpoint::SPEAKER));
    EXPECT_EXIT(
            {
                __android_log_set_minimum_priority(ANDROID_LOG_ERROR);
                context.getProfileEndpoint(Endpoint::OTHER);
            },
            ::testing::ExitedWithCode(255), "Couldn't find the profile endpoint fo 2");
    EXPECT_EXIT(
            {
                __android_log_set_minimum_priority(ANDROID_LOG_ERROR);
                context.getSelectedIeqPreset(Endpoint::HEADPHONE);
            },
            ::testing::ExitedWithCode(255), "Couldn't find the profile endpoint fo 1");
}

}  // namespace
}  // namespace vessa
