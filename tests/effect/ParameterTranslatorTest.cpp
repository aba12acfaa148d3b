#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>

#include "EffectTestUtil.h"
#include "effect/TranslatorCollection.h"

namespace vessa::test {
namespace {

std::vector<std::string> split(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// The simple translators in creation order, then the special translators'
// entries in the creation order of their classes.
const std::vector<std::string> kDeviceResend = split(
        "GEON IEON IEA IEID MVBE AOON BEON BEB BECF BEW PLB DED ARDS ARON ARDE AROD ARTP RSSE "
        "NGON DSB VBOG VBSG VBHG VBBG VBCT VBHM VBHB VBMX VBRG VMB DVLA DVLC DVLE DVLI DVLO DVMC "
        "DHFM DFSA DSA DHSA SVSB VSSD CEON DPLP HPON HPTW HPAT HPAA HPAR BMDE "
        "DEON MDEE DEA AOBS ARSA ARBS RSSA IEBS DOM VBM VBON VBSF VBMF CEQT BMDT");

TEST(TheTranslatorRegistry, MapsEachSourceToItsOneTranslator) {
    ASSERT_EQ(69u, TranslatorCollection::kAllTranslators.size());
    TranslatorCollection collection;
    EXPECT_EQ(92u, collection.size());
    for (Translator* t : TranslatorCollection::kAllTranslators) {
        for (P p : t->getSrcParams()) EXPECT_EQ(t, collection.getTranslator(p));
    }
}

TEST(AProfileTranslator, ResendsEveryProfileCodeInCreationOrder) {
    ParameterTranslator translator;
    ProfileParameters profile(&translator);
    EXPECT_EQ(split("MDLE MIEE MSCE MAVE DVME RVSA RVSE GEBS VCBF DRCM"),
              entryCodes(translate(translator, true)));
    // Every valid Parameter was read, so each is now held as an empty list.
    EXPECT_EQ(ProfileParameters::kValidParams.size(), profile.values().size());
}

// A device view that reports its changes to its own translator.
class ADeviceTranslator : public ::testing::Test {
  protected:
    ParameterTranslator mTranslator;
    DeviceParameters mView{&mTranslator};
};

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

// A fresh view has no channel count, complex EQ, sibilance or MBDRC.
TEST_F(ADeviceTranslator, ResendsAllButTheOptionalTablesOfAFreshView) {
    std::vector<std::string> expected = kDeviceResend;
    for (const char* off : {"AOBS", "RSSA", "CEQT", "BMDT"}) {
        expected.erase(std::find(expected.begin(), expected.end(), off));
    }
    EXPECT_EQ(expected, entryCodes(translate(mTranslator, true)));
}

TEST_F(ADeviceTranslator, ResendsEveryCodeInCreationOrderWhateverIsPending) {
    Tuning tuning("spk", Endpoint::SPEAKER, false);
    mView.setTuning(tuning);
    for (P p : DeviceParameters::kValidParams) mView.set(p, {toInt(p)});
    mView.set(P::OUTPUT_CHANNELS, {2});
    mView.set(P::COMPLEX_EQUALIZER_ENABLE, {1});
    mView.set(P::REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {1});
    mView.set(P::BASS_MBDRC_ENABLE, {1});
    const V first = translate(mTranslator, true);
    EXPECT_EQ(kDeviceResend, entryCodes(first));
    for (P p : {P::BASS_MBDRC_TUNING, P::GRAPHIC_EQUALIZER_ENABLE, P::DIALOG_ENHANCER_ENABLE}) {
        mTranslator.onParameterChanged(p);
    }
    EXPECT_EQ(first, translate(mTranslator, true));
}

}  // namespace
}  // namespace vessa::test
