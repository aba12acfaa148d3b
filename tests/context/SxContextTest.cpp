#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "SampleRoot.h"
#include "platform/LogCapture.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

using Strings = std::vector<std::string>;
using Values = std::vector<int>;

// Records what it was told. Each notice reads the context back through a locking getter,
// as the effect controller does, so a notice raised under the lock deadlocks here, and
// checks that it was handed the record the context now holds.
class ReadingObserver : public OnSxContextChange {
  public:
    void onLoad(SxContext& sx) override { record("load", sx.getSelectedProfile() != nullptr); }
    void onAupOnChanged(SxContext& sx, bool on) override {
        record(on ? "on" : "off", on == sx.getAupOn());
    }
    void onSelectedProfileChanged(SxContext& sx) override {
        record("profile " + std::to_string(sx.getSelectedProfile()->getProfileId()));
    }
    void onSelectedProfileParameterChanged(SxContext& sx, Profile& profile) override {
        record("profile-parameter", &profile == sx.getSelectedProfile());
    }
    void onSelectedProfileEndpointChanged(SxContext& sx, Port port, ProfileEndpoint& pe) override {
        record(std::string("endpoint ") + portName(port),
               &pe == sx.getSelectedProfileEndpoint(port));
    }
    void onSelectedProfileIeqChanged(SxContext& sx, Port port, IeqPreset& preset) override {
        record(std::string("ieq ") + portName(port) + " " + presetTypeName(preset.getType()),
               &preset == sx.getSelectedProfileIeq(port));
    }
    void onSelectedProfileGeqChanged(SxContext& sx, GeqPreset& preset) override {
        record("geq", &preset == sx.getSelectedProfileGeq());
    }
    void onSelectedTuningChanged(SxContext& sx, Port port, Tuning& tuning) override {
        record(std::string("tuning ") + portName(port), &tuning == sx.getSelectedTuning(port));
    }
    void record(const std::string& event, bool current = true) {
        EXPECT_TRUE(current) << event << ": not what the context holds now";
        events.push_back(event);
    }

    Strings events;
};

// A context started from the sample tuning file, profile 0 selected, observed.
class AnObservedContext : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_NE(nullptr, context = manager.getSxContext());
        context->registerObserver(&observer);
        events();
    }
    void TearDown() override {
        if (context != nullptr) context->unregisterObserver(&observer);
    }
    // What the observer was told since the last call.
    Strings events() { return std::exchange(observer.events, {}); }
    void set(int id, Endpoint endpoint, Parameter p, Values values) {
        context->setProfileParameter(id, endpoint, p, values);
    }

    test::SampleRoot root;
    SxContextManager manager;
    SxContext* context = nullptr;
    ReadingObserver observer;
};

TEST_F(AnObservedContext, NotifiesEachRealChangeOfTheSelectedProfileOnce) {
    context->setAupOn(false);
    context->setAupOn(false);
    context->setSelectedProfile(2);
    context->setSelectedProfile(2);
    Values on = {1};
    context->setProfileParameter(2, Parameter::VOLUME_MODELER_ENABLE, on);
    set(3, Endpoint::HEADPHONE, Parameter::IEQ_AMOUNT, {7});  // not selected: stored silently
    EXPECT_EQ((Strings{"off", "profile 2", "profile-parameter"}), events());
    EXPECT_TRUE(context->isProfileModified(3));
    EXPECT_TRUE(context->isProfileSpecificSettingsModified(3));
    EXPECT_FALSE(context->isProfileGeqModified(3));
    EXPECT_EQ(Values{7},
              context->getProfileParameter(3, Endpoint::HEADPHONE, Parameter::IEQ_AMOUNT));
}

// Preset zero switches the IEQ off; the preset is announced after the endpoint.
TEST_F(AnObservedContext, AnnouncesAnEndpointValueOnEveryPortTunedAsThatEndpointThenItsPreset) {
    set(0, Endpoint::HEADPHONE, Parameter::VOLUME_LEVELER_AMOUNT, {9});
    EXPECT_EQ((Strings{"endpoint headphone", "endpoint bluetooth", "endpoint usb"}), events());
    set(0, Endpoint::SPEAKER, Parameter::IEQ_ID, {0});
    EXPECT_EQ((Strings{"endpoint internal_speaker", "ieq internal_speaker off"}), events());
    EXPECT_EQ(Values{0}, context->getProfileParameter(0, Endpoint::SPEAKER, Parameter::IEQ_ENABLE));
    set(0, Endpoint::SPEAKER, Parameter::IEQ_ID, {3});
    EXPECT_EQ((Strings{"endpoint internal_speaker", "ieq internal_speaker warm"}), events());
}

TEST_F(AnObservedContext, RefusesAnUnknownIeqPresetAndVirtualBassOffTheSpeakerSilently) {
    LogCapture log;
    set(0, Endpoint::SPEAKER, Parameter::IEQ_ID, {4});
    set(0, Endpoint::HEADPHONE, Parameter::VIRTUAL_BASS_ENABLE, {1});
    EXPECT_TRUE(events().empty());
    EXPECT_TRUE(log.contains("SxContext", "setProfileParameter(): Invalid IEq preset 4"));
    EXPECT_TRUE(log.contains("SxContext",
                             "Setting virtual-bass-enable is not supported for non-speaker "
                             "endpoints"));
}

// A prefix of the stored values or an empty list is no change.
TEST_F(AnObservedContext, TakesAPrefixAsNoChangeAndResetsTheGeqAndProfileWithANotice) {
    Values gains = context->getProfileGeqParameter(0, Parameter::GEQ_GAIN);
    ASSERT_GT(gains.size(), 2u);
    Values prefix(gains.begin(), gains.begin() + 2), empty;
    context->setProfileGeqParameter(0, Parameter::GEQ_GAIN, prefix);
    context->setProfileGeqParameter(0, Parameter::GEQ_GAIN, empty);
    EXPECT_TRUE(events().empty());
    EXPECT_EQ(gains, context->getProfileGeqParameter(0, Parameter::GEQ_GAIN));
    EXPECT_FALSE(context->isProfileGeqModified(0));
    gains[0] += 1;
    context->setProfileGeqParameter(0, Parameter::GEQ_GAIN, gains);
    EXPECT_TRUE(context->isProfileGeqModified(0));
    context->resetProfileGeq(0);
    EXPECT_FALSE(context->isProfileGeqModified(0));
    context->resetProfile(0);
    EXPECT_FALSE(context->isProfileModified(0));
    EXPECT_EQ((Strings{"geq", "geq", "profile 0"}), events());
}

// A port without devices of its own falls back to its name for the default device.
TEST_F(AnObservedContext, ReselectsTheSameTuningOnlyWhenForcedAndNamesEachPortsDefault) {
    EXPECT_TRUE(context->setSelectedTuning(Port::USB, "default_usb", false));
    EXPECT_TRUE(context->setSelectedTuning(Port::USB, "default_usb", true));
    EXPECT_FALSE(context->setSelectedTuning(Port::USB, "no_such_device", false));
    EXPECT_EQ((Strings{"tuning usb"}), events());
    EXPECT_EQ("default_hdmi", context->getDefaultTuningDevice(Port::HDMI));
    EXPECT_EQ("other", context->getDefaultTuningDevice(Port::OTHER));
}

TEST_F(AnObservedContext, AnnouncesEveryPortOnAReloadThenTheStoredProfileAndSwitch) {
    context->setAupOn(false);
    context->setSelectedProfile(2);
    events();
    context->reloadTuning();
    context->reloadAllProfile();
    EXPECT_EQ((Strings{"tuning internal_speaker", "tuning hdmi", "tuning miracast",
                       "tuning headphone", "tuning bluetooth", "tuning usb", "profile 0", "on"}),
              events());
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

using AnObservedContextDeathTest = AnObservedContext;

// Both mean the tuning is broken, and the service cannot run on it.
TEST_F(AnObservedContextDeathTest, EndsTheProcessOnAnUnknownProfileIdOrAMissingEndpoint) {
    SpeakerOnlyProvider provider;
    ASSERT_EQ(0, provider.init());
    ProfileContext profile(&provider, 0);
    profile.load();
    EXPECT_NE(nullptr, profile.getProfileEndpoint(Endpoint::SPEAKER));
    __android_log_set_minimum_priority(ANDROID_LOG_ERROR);  // the fatal line reaches stderr
    EXPECT_EXIT(context->getProfile(99), ::testing::ExitedWithCode(255),
                "Couldn't find the context for profileId: 99");
    EXPECT_EXIT(profile.getProfileEndpoint(Endpoint::OTHER), ::testing::ExitedWithCode(255),
                "Couldn't find the profile endpoint fo 2");
    EXPECT_EXIT(profile.getSelectedIeqPreset(Endpoint::HEADPHONE), ::testing::ExitedWithCode(255),
                "Couldn't find the profile endpoint fo 1");
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
}

}  // namespace
}  // namespace vessa
