#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/DeviceParameters.h"
#include "model/ProfileParameters.h"

namespace vessa {
namespace {

// Records every call as text so that the order of calls can be compared whole.
class RecordingObserver : public ParamChangeObserver {
public:
    void setSource(ParameterValues* source, Endpoint endpoint, bool mono) override {
        lastSource = source;
        events.push_back("source " + std::string(endpointName(endpoint)) + (mono ? " mono" : ""));
    }
    void onParameterChanged(Parameter p) override { events.push_back(parameterName(p)); }

    ParameterValues* lastSource = nullptr;
    std::vector<std::string> events;
};

TEST(ParameterViewsTest, DeviceViewReportsChangesInParameterOrderAfterTheSource) {
    RecordingObserver observer;
    DeviceParameters view(&observer);
    EXPECT_EQ(&view, observer.lastSource);
    EXPECT_EQ((std::vector<std::string>{"source other"}), observer.events);
    EXPECT_EQ(-1, view.getId());

    Tuning speaker("spk", Endpoint::SPEAKER, true);
    speaker.set(Parameter::VIRTUALIZER_FRONT_SPEAKER_ANGLE, {10});
    speaker.set(Parameter::AUDIO_OPTIMIZER_ENABLE, {1});
    speaker.set(Parameter::OUTPUT_CHANNELS, {2});
    observer.events.clear();
    view.setTuning(speaker);
    EXPECT_EQ((std::vector<std::string>{"source speaker mono", "audio_optimizer_enable",
                                        "output_channels", "virtualizer_front_speaker_angle"}),
              observer.events);
    EXPECT_EQ(&speaker, view.getTuning());

    // The same tuning again: announced again, but nothing changed.
    observer.events.clear();
    view.setTuning(speaker);
    EXPECT_EQ((std::vector<std::string>{"source speaker mono"}), observer.events);

    // A new tuning without output_channels keeps the old value in the view.
    Tuning other("hp", Endpoint::HEADPHONE, false);
    other.set(Parameter::AUDIO_OPTIMIZER_ENABLE, {0});
    other.set(Parameter::VIRTUALIZER_FRONT_SPEAKER_ANGLE, {10});
    observer.events.clear();
    view.setTuning(other);
    EXPECT_EQ((std::vector<std::string>{"source headphone", "audio_optimizer_enable"}),
              observer.events);
    EXPECT_EQ((std::vector<int>{2}), view.values().at(Parameter::OUTPUT_CHANNELS));
    EXPECT_TRUE(view.isDirty());
}

TEST(ParameterViewsTest, DeviceViewMergesEndpointAndPresetButNotProfile) {
    RecordingObserver observer;
    DeviceParameters view(&observer);

    Profile profile(0, "Music", false);
    profile.set(Parameter::VOLUME_MODELER_ENABLE, {1});
    observer.events.clear();
    view.setProfile(profile);
    EXPECT_TRUE(observer.events.empty());
    EXPECT_EQ(&profile, view.getProfile());
    EXPECT_TRUE(view.values().empty());

    ProfileEndpoint endpoint(0, Endpoint::SPEAKER, PresetType::WARM);
    endpoint.set(Parameter::IEQ_ENABLE, {1});
    endpoint.set(Parameter::IEQ_AMOUNT, {10});
    // Not valid for an endpoint, but set() does not check: the view takes it.
    endpoint.set(Parameter::VIRTUAL_BASS_TYPE, {2});
    view.setProfileEndpoint(endpoint);
    IeqPreset preset(PresetType::WARM);
    preset.set(Parameter::IEQ_TARGET, {1, 2});
    view.setIeqPreset(preset);
    EXPECT_EQ((std::vector<std::string>{"ieq_amount", "ieq_enable", "virtual_bass_type", "ieq_id",
                                        "ieq_target"}),
              observer.events);

    // An unchanged amount is not reported; a changed enable is.
    endpoint.set(Parameter::IEQ_ENABLE, {0});
    observer.events.clear();
    view.setProfileEndpoint(endpoint);
    EXPECT_EQ((std::vector<std::string>{"ieq_enable"}), observer.events);
}

TEST(ParameterViewsTest, ProfileViewTakesOnlyProfileLevelParameters) {
    RecordingObserver observer;
    ProfileParameters view(&observer);
    EXPECT_EQ(&view, observer.lastSource);
    EXPECT_EQ(-1, view.getId());

    Profile profile(0, "Music", false);
    profile.set(Parameter::VOLUME_MODELER_ENABLE, {1});
    profile.set(Parameter::CUSTOM_DRC_METADATA, {0});
    profile.set(Parameter::IEQ_AMOUNT, {3});  // device-level: ignored by this view
    GeqPreset geq(0);
    geq.set(Parameter::GEQ_GAIN, {0, 1});
    geq.set(Parameter::GEQ_FREQUENCY, {32, 64});
    observer.events.clear();
    view.setProfile(profile);
    view.setGeqPreset(geq);
    EXPECT_EQ((std::vector<std::string>{"custom_drc_metadata", "volume_modeler_enable",
                                        "geq_frequency", "geq_gain"}),
              observer.events);
    EXPECT_EQ(0u, view.values().count(Parameter::IEQ_AMOUNT));
    EXPECT_EQ(&profile, view.getProfile());
    EXPECT_EQ(&geq, view.getGeqPreset());
}

}  // namespace
}  // namespace vessa
