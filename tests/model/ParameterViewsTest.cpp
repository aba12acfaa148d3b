#include "ModelTestSupport.h"

namespace vessa::test {
namespace {

class ADeviceView : public ::testing::Test {
  protected:
    ADeviceView() {
        mSpeaker.set(P::VIRTUALIZER_FRONT_SPEAKER_ANGLE, {10});
        mSpeaker.set(P::AUDIO_OPTIMIZER_ENABLE, {1});
        mSpeaker.set(P::OUTPUT_CHANNELS, {2});
    }

    RecordingObserver mObserver;
    DeviceParameters mView{&mObserver};
    Tuning mSpeaker{"spk", Endpoint::SPEAKER, true};
};

// The same tuning again is announced again, but changes nothing.
TEST_F(ADeviceView, StartsAsAnOtherEndpointSourceAndReportsATuningsChangesAfterItsSource) {
    EXPECT_EQ(&mView, mObserver.lastSource);
    EXPECT_EQ(Events{"source other"}, mObserver.take());
    EXPECT_EQ(-1, mView.getId());
    mView.setTuning(mSpeaker);
    EXPECT_EQ((Events{"source speaker mono", "audio_optimizer_enable", "output_channels",
                      "virtualizer_front_speaker_angle"}),
              mObserver.take());
    EXPECT_EQ(&mSpeaker, mView.getTuning());
    mView.setTuning(mSpeaker);
    EXPECT_EQ(Events{"source speaker mono"}, mObserver.take());
}

TEST_F(ADeviceView, KeepsTheValueOfAParameterTheNewTuningLacks) {
    mView.setTuning(mSpeaker);
    Tuning headphone("hp", Endpoint::HEADPHONE, false);
    headphone.set(P::AUDIO_OPTIMIZER_ENABLE, {0});
    headphone.set(P::VIRTUALIZER_FRONT_SPEAKER_ANGLE, {10});
    mObserver.take();
    mView.setTuning(headphone);
    EXPECT_EQ((Events{"source headphone", "audio_optimizer_enable"}), mObserver.take());
    EXPECT_EQ(V{2}, mView.values().at(P::OUTPUT_CHANNELS));
}

TEST_F(ADeviceView, MergesTheEndpointAndThePresetReportingOnlyRealChanges) {
    ProfileEndpoint endpoint(0, Endpoint::SPEAKER, PresetType::WARM);
    endpoint.set(P::IEQ_ENABLE, {1});
    endpoint.set(P::IEQ_AMOUNT, {10});
    endpoint.set(P::VIRTUAL_BASS_TYPE, {2});  // not valid for an endpoint, yet held: merged
    IeqPreset preset(PresetType::WARM);
    preset.set(P::IEQ_TARGET, {1, 2});
    mObserver.take();
    mView.setProfileEndpoint(endpoint);
    mView.setIeqPreset(preset);
    EXPECT_EQ((Events{"ieq_amount", "ieq_enable", "virtual_bass_type", "ieq_id", "ieq_target"}),
              mObserver.take());
    endpoint.set(P::IEQ_ENABLE, {0});
    mView.setProfileEndpoint(endpoint);
    EXPECT_EQ(Events{"ieq_enable"}, mObserver.take()) << "the amount did not change";
}

TEST(AProfileView, ReportsOnlyTheProfileLevelParametersOfItsProfileAndPreset) {
    RecordingObserver observer;
    ProfileParameters view(&observer);
    EXPECT_EQ(&view, observer.lastSource);
    EXPECT_EQ(-1, view.getId());
    Profile profile(0, "Music", false);
    profile.set(P::VOLUME_MODELER_ENABLE, {1});
    profile.set(P::CUSTOM_DRC_METADATA, {0});
    profile.set(P::IEQ_AMOUNT, {3});  // device-level: ignored by this view
    GeqPreset geq(0);
    geq.set(P::GEQ_GAIN, {0, 1});
    geq.set(P::GEQ_FREQUENCY, {32, 64});
    observer.take();
    view.setProfile(profile);
    view.setGeqPreset(geq);
    EXPECT_EQ((Events{"custom_drc_metadata", "volume_modeler_enable", "geq_frequency", "geq_gain"}),
              observer.take());
    EXPECT_EQ(0u, view.values().count(P::IEQ_AMOUNT));
    EXPECT_EQ(&profile, view.getProfile());
    EXPECT_EQ(&geq, view.getGeqPreset());
}

}  // namespace
}  // namespace vessa::test
