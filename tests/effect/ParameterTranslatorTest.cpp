#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "EffectTestUtil.h"
#include "effect/ParameterTranslator.h"
#include "effect/TranslatorCollection.h"
#include "model/DeviceParameters.h"
#include "model/GeqPreset.h"
#include "model/ProfileParameters.h"

namespace vessa {
namespace {

using test::batchWords;
using test::put;
using P = AupParameter;

std::vector<std::string> split(const std::string& text) {
    std::istringstream in(text);
    return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

// The codes of a batch's entries, in buffer order ("?" for an unknown id).
std::vector<std::string> entryCodes(const std::vector<int>& words) {
    std::vector<std::string> codes;
    for (size_t pos = 2; pos + 2 < words.size(); pos += 3 + words[pos + 2]) {
        codes.push_back("?");
        for (int i = 0; i < kNumAupParameters; ++i) {
            const P p = static_cast<P>(i);
            if (aupParameterId(p) == words[pos + 1]) codes.back() = aupParameterCode(p);
        }
    }
    return codes;
}

// Runs the pending translators into a fresh batch for device 0x2.
std::vector<int> translatePending(ParameterTranslator& translator) {
    SetParamCommand cmd(0x2);
    cmd.setDeviceId(0x2);
    translator.translatePending(cmd);
    return cmd.buffer();
}

TEST(TranslatorCollectionTest, MapsEachSourceToItsTranslatorAndAddsNullEntriesOnMiss) {
    ASSERT_EQ(69u, TranslatorCollection::kAllTranslators.size());
    TranslatorCollection collection;
    EXPECT_EQ(92u, collection.size());
    // No Parameter is claimed twice, so each maps to its one claimant.
    for (Translator* t : TranslatorCollection::kAllTranslators) {
        for (Parameter p : t->getSrcParams()) EXPECT_EQ(t, collection.getTranslator(p));
    }
    // Nothing reads these: each look-up answers null and adds a null entry once.
    for (int p : {10, 11, 45, 75, 45}) EXPECT_EQ(nullptr, collection.getTranslator(toParameter(p)));
    EXPECT_EQ(96u, collection.size());
}

TEST(ParameterTranslatorTest, PendingTranslatorsRunOnceInCreationOrder) {
    ParameterTranslator translator;
    DeviceParameters view(&translator);
    put(view, 23, {1});
    put(view, 26, {1});
    put(view, 91, {0});
    put(view, 24, {5});  // changed, but not reported
    for (int p : {10, 23, 91, 26, 91}) translator.onParameterChanged(toParameter(p));
    EXPECT_EQ(batchWords(0x2, {{P::GEON, {1}}, {P::DVLE, {0}}, {P::DEON, {1}}, {P::MDEE, {1}}}),
              translatePending(translator));
    EXPECT_EQ(batchWords(0x2, {}), translatePending(translator));
}

TEST(ParameterTranslatorTest, GeqPresetChangeSendsTheBandTablesOnce) {
    ParameterTranslator translator;
    ProfileParameters view(&translator);
    GeqPreset preset(1);
    preset.set(Parameter::GEQ_FREQUENCY, {32, 64, 125});
    preset.set(Parameter::GEQ_GAIN, {2, 0, -2});
    view.setGeqPreset(preset);
    EXPECT_EQ(batchWords(0x2, {{P::GEBS, {3, 32, 64, 125, 2, 0, -2}}, {P::VCBF, {32, 64, 125}}}),
              translatePending(translator));
}

TEST(ParameterTranslatorTest, BassMbdrcTuningIsResentOnlyWhenTheTuningChanges) {
    ParameterTranslator translator;
    DeviceParameters view(&translator);
    std::vector<std::unique_ptr<Tuning>> tunings;  // the view keeps pointers to them
    const auto apply = [&](int enable, const std::vector<int>& mbdrc) {
        tunings.push_back(std::make_unique<Tuning>("spk", Endpoint::SPEAKER, false));
        tunings.back()->set(Parameter::BASS_MBDRC_ENABLE, {enable});
        tunings.back()->set(Parameter::BASS_MBDRC_TUNING, mbdrc);
        view.setTuning(*tunings.back());
        return translatePending(translator);
    };
    EXPECT_EQ(batchWords(0x2, {{P::BMDE, {0}}}), apply(0, {3, 4}));
    // Enabling alone does not resend the tuning.
    EXPECT_EQ(batchWords(0x2, {{P::BMDE, {1}}}), apply(1, {3, 4}));
    EXPECT_EQ(batchWords(0x2, {{P::BMDT, {5, 6}}}), apply(1, {5, 6}));
}

// The simple translators in creation order, then the special translators'
// entries in the creation order of their classes.
const char* const kDeviceResendCodes =
        "GEON IEON IEA IEID MVBE AOON BEON BEB BECF BEW PLB DED ARDS ARON ARDE AROD ARTP RSSE "
        "NGON DSB VBOG VBSG VBHG VBBG VBCT VBHM VBHB VBMX VBRG VMB DVLA DVLC DVLE DVLI DVLO DVMC "
        "DHFM DFSA DSA DHSA SVSB VSSD CEON DPLP HPON HPTW HPAT HPAA HPAR BMDE "
        "DEON MDEE DEA AOBS ARSA ARBS RSSA IEBS DOM VBM VBON VBSF VBMF CEQT BMDT";

TEST(ParameterTranslatorTest, FullResendRunsEveryTranslatorOnceInAFixedOrder) {
    ParameterTranslator profileTranslator;
    ProfileParameters profile(&profileTranslator);
    SetParamCommand profileCmd(0x40000000);
    profileTranslator.translateAll(profileCmd);
    EXPECT_EQ(split("MDLE MIEE MSCE MAVE DVME RVSA RVSE GEBS VCBF DRCM"),
              entryCodes(profileCmd.buffer()));
    // Every valid Parameter was read, so each is now held as an empty list.
    EXPECT_EQ(ProfileParameters::kValidParams.size(), profile.values().size());

    // A fresh device view: no channel count, complex EQ, sibilance or MBDRC.
    ParameterTranslator translator;
    DeviceParameters view(&translator);
    SetParamCommand fresh(0x40000000);
    translator.translateAll(fresh);
    std::vector<std::string> expected = split(kDeviceResendCodes);
    for (const char* off : {"AOBS", "RSSA", "CEQT", "BMDT"}) {
        expected.erase(std::find(expected.begin(), expected.end(), off));
    }
    EXPECT_EQ(expected, entryCodes(fresh.buffer()));

    // With every translator active, pending changes made in another order do
    // not change the order of a resend.
    Tuning tuning("spk", Endpoint::SPEAKER, false);
    view.setTuning(tuning);
    for (Parameter p : DeviceParameters::kValidParams) put(view, toInt(p), {toInt(p)});
    for (int p : {45, 15, 57, 12}) put(view, p, {p == 45 ? 2 : 1});
    SetParamCommand first(0x40000000);
    translator.translateAll(first);
    EXPECT_EQ(split(kDeviceResendCodes), entryCodes(first.buffer()));
    for (Parameter p : {Parameter::BASS_MBDRC_TUNING, Parameter::GRAPHIC_EQUALIZER_ENABLE,
                        Parameter::DIALOG_ENHANCER_ENABLE}) {
        translator.onParameterChanged(p);
    }
    SetParamCommand second(0x40000000);
    translator.translateAll(second);
    EXPECT_EQ(first.buffer(), second.buffer());
}

}  // namespace
}  // namespace vessa
