#include "EffectTestUtil.h"
#include "effect/AupController.h"

namespace vessa::test {
namespace {

using Codes = std::vector<std::string>;
constexpr Port kSpeaker = Port::INTERNAL_SPEAKER;

// The views twice over: one copy always takes a changed record whole, the other
// is told the one Parameter that changed. Every step must send the same batch.
class TwoContexts : public ::testing::Test {
  protected:
    struct Side {
        explicit Side(AupEffect& effect) : controller(2, effect) {}
        AupController controller;
        AupContext* context = controller.getContext();
    };

    void SetUp() override {
        mEndpoint.set(P::DIALOG_ENHANCER_AMOUNT, {3});
        mEndpoint.set(P::VOLUME_LEVELER_ENABLE, {1});
        mEndpoint.set(P::VIRTUALIZER_ENABLE, {1});
        setTuning(mStereo);
        for (Side* side : {&mWhole, &mOne}) side->context->setProfileEndpoint(kSpeaker, mEndpoint);
        sameBatch();
    }

    // The codes of the batch both sides send now; a failure when they differ.
    Codes sameBatch() {
        std::vector<AupParamCache> whole = send(mWhole);
        EXPECT_EQ(whole, send(mOne));
        Codes codes;
        for (const AupParamCache& entry : whole) {
            codes.push_back(unpackParameterCode(entry.getParameterId()));
        }
        return codes;
    }
    std::vector<AupParamCache> send(Side& side) {
        const uint64_t commits = mStore.getCommitCount();
        side.controller.sendParameters(kDeviceOutDefault);
        if (mStore.getCommitCount() == commits) return {};
        return mStore.lastCommit();
    }
    void setTuning(Tuning& tuning) {
        for (Side* side : {&mWhole, &mOne}) side->context->setTuning(kSpeaker, tuning);
    }
    Codes changeEndpoint(P p, const V& values) {
        mEndpoint.set(p, values);
        mWhole.context->setProfileEndpoint(kSpeaker, mEndpoint);
        mOne.context->updateProfileEndpoint(kSpeaker, mEndpoint, p);
        return sameBatch();
    }

    AupParamStore& mStore = AupParamStore::getInstance();
    AupEffect mEffect{0, android::String16("ignored")};
    Side mWhole{mEffect}, mOne{mEffect};
    ProfileEndpoint mEndpoint{0, Endpoint::SPEAKER, PresetType::OFF};
    Tuning mStereo{"stereo", Endpoint::SPEAKER, false};
};

TEST_F(TwoContexts, SendWhatAPortMissedWhileItsTuningWasOnAnotherEndpoint) {
    Tuning headphone("hp", Endpoint::HEADPHONE, false);
    setTuning(headphone);
    mEndpoint.set(P::DIALOG_ENHANCER_AMOUNT, {7});  // no port on the speaker endpoint hears it
    setTuning(mStereo);
    EXPECT_EQ(Codes({"DVLE", "DEA"}), changeEndpoint(P::VOLUME_LEVELER_ENABLE, {0}));
    EXPECT_EQ(Codes({"DEA"}), changeEndpoint(P::DIALOG_ENHANCER_AMOUNT, {9}));
    // Selecting an IEQ preset switches the IEQ: a change the endpoint record holds
    // under another Parameter than the one announced.
    mEndpoint.set(P::IEQ_ENABLE, {1});
    mWhole.context->setProfileEndpoint(kSpeaker, mEndpoint);
    mOne.context->updateProfileEndpoint(kSpeaker, mEndpoint, P::IEQ_ID);
    EXPECT_EQ(Codes({"IEON"}), sameBatch());
}

// The output mode writes the virtualizer switch of a mono speaker back into the
// view; a whole merge takes the record's value again and so resends the mode.
TEST_F(TwoContexts, ResendTheOutputModeOfAMonoSpeakerWithEachEndpointChange) {
    Tuning mono("mono", Endpoint::SPEAKER, true);
    setTuning(mono);
    EXPECT_EQ(Codes({"DOM"}), changeEndpoint(P::VIRTUALIZER_ENABLE, {2}));
    EXPECT_EQ(Codes({"DEA", "DOM"}), changeEndpoint(P::DIALOG_ENHANCER_AMOUNT, {4}));
}

TEST_F(TwoContexts, TakeAProfileOrPresetTheViewsDoNotHoldYetWhole) {
    Profile profile(1, "movie", false);
    profile.set(P::REVERB_SUPPRESSION_AMOUNT, {5});
    for (int enable : {1, 0}) {
        profile.set(P::REVERB_SUPPRESSION_ENABLE, {enable});
        mWhole.context->setProfile(profile);
        mOne.context->updateProfile(profile, P::REVERB_SUPPRESSION_ENABLE);
        EXPECT_EQ(enable ? Codes({"RVSA", "RVSE"}) : Codes({"RVSE"}), sameBatch());
    }
    GeqPreset preset(1, 1);
    preset.set(P::GEQ_FREQUENCY, {32, 64});
    for (int gain : {1, 2}) {
        preset.set(P::GEQ_GAIN, {gain, gain});
        mWhole.context->setGeqPreset(preset);
        mOne.context->updateGeqPreset(preset, P::GEQ_GAIN);
        EXPECT_EQ(Codes({"GEBS", "VCBF"}), sameBatch());
    }
}

}  // namespace
}  // namespace vessa::test
