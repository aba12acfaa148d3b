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

TEST_F(ADeviceView, IsAnOtherEndpointSourceFromTheStart) {
    EXPECT_EQ(&mView, mObserver.lastSource);
    EXPECT_EQ(Events{"source other"}, mObserver.take());
    EXPECT_EQ(-1, mView.getId());
}

// The same tuning again is announced again, but changes nothing.
TEST_F(ADeviceView, ReportsATuningsChangesInParameterOrderAfterItsSource) {
    mObserver.take();
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

}  // namespace
}  // namespace vessa::test
