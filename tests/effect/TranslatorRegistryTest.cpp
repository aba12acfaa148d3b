#include <algorithm>
#include <iterator>
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

using ADeviceTranslator = DeviceTranslatorTest;

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
