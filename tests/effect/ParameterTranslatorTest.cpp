#include <memory>

#include "EffectTestUtil.h"

namespace vessa::test {
namespace {

using ADeviceTranslator = DeviceTranslatorTest;

TEST_F(ADeviceTranslator, RunsEachPendingTranslatorOnceInCreationOrder) {
    mView.set(P::DIALOG_ENHANCER_ENABLE, {1});
    mView.set(P::GRAPHIC_EQUALIZER_ENABLE, {1});
    mView.set(P::VOLUME_LEVELER_ENABLE, {0, 5});  // a simple translator sends a list whole
    mView.set(P::DIALOG_ENHANCER_AMOUNT, {5});    // changed, but not reported
    // The first is read by no translator.
    for (P p : {P::BASS_EXTRACTION_CUTOFF_FREQUENCY, P::DIALOG_ENHANCER_ENABLE,
                P::VOLUME_LEVELER_ENABLE, P::GRAPHIC_EQUALIZER_ENABLE, P::VOLUME_LEVELER_ENABLE}) {
        mTranslator.onParameterChanged(p);
    }
    EXPECT_EQ(batchWords(kDevice,
                         {{A::GEON, {1}}, {A::DVLE, {0, 5}}, {A::DEON, {1}}, {A::MDEE, {1}}}),
              translate(mTranslator));
    EXPECT_EQ(batchWords(kDevice, {}), translate(mTranslator)) << "the pending set is cleared";
}

TEST_F(ADeviceTranslator, ResendsTheBassMbdrcTuningOnlyWhenTheTuningChanges) {
    std::vector<std::unique_ptr<Tuning>> tunings;  // the view keeps pointers to them
    const auto apply = [&](int enable, const V& mbdrc) {
        tunings.push_back(std::make_unique<Tuning>("spk", Endpoint::SPEAKER, false));
        tunings.back()->set(P::BASS_MBDRC_ENABLE, {enable});
        tunings.back()->set(P::BASS_MBDRC_TUNING, mbdrc);
        mView.setTuning(*tunings.back());
        return translate(mTranslator);
    };
    EXPECT_EQ(batchWords(kDevice, {{A::BMDE, {0}}}), apply(0, {3, 4}));
    EXPECT_EQ(batchWords(kDevice, {{A::BMDE, {1}}}), apply(1, {3, 4})) << "enabling alone";
    EXPECT_EQ(batchWords(kDevice, {{A::BMDT, {5, 6}}}), apply(1, {5, 6}));
}

// Both band parameters change, yet each translator reading them runs once.
TEST(AProfileTranslator, SendsTheGeqBandTablesOnceForAPresetChange) {
    ParameterTranslator translator;
    ProfileParameters view(&translator);
    GeqPreset preset(1);
    preset.set(P::GEQ_FREQUENCY, {32, 64, 125});
    preset.set(P::GEQ_GAIN, {2, 0, -2});
    view.setGeqPreset(preset);
    EXPECT_EQ(
            batchWords(kDevice, {{A::GEBS, {3, 32, 64, 125, 2, 0, -2}}, {A::VCBF, {32, 64, 125}}}),
            translate(translator));
}

}  // namespace
}  // namespace vessa::test
