#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "EffectTestUtil.h"
#include "effect/ParameterTranslator.h"
#include "effect/TranslatorCollection.h"
#include "effect/VirtualBassEnableTranslator.h"
#include "model/DeviceParameters.h"
#include "model/GeqPreset.h"
#include "model/ProfileParameters.h"

namespace vessa {
namespace {

using test::batchWords;
using test::entryCodes;
using test::put;

std::vector<std::string> split(const std::string& text) {
    std::vector<std::string> out;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find(' ', start);
        if (end == std::string::npos) end = text.size();
        if (end > start) out.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

// The simple translators for device-level Parameters, in creation order, then
// the special translators' entries in creation order of their classes.
const char* const kDeviceResendCodes =
        "GEON IEON IEA IEID MVBE AOON BEON BEB BECF BEW PLB DED ARDS ARON ARDE AROD ARTP RSSE "
        "NGON DSB VBOG VBSG VBHG VBBG VBCT VBHM VBHB VBMX VBRG VMB DVLA DVLC DVLE DVLI DVLO DVMC "
        "DHFM DFSA DSA DHSA SVSB VSSD CEON DPLP HPON HPTW HPAT HPAA HPAR BMDE "
        "DEON MDEE DEA AOBS ARSA ARBS RSSA IEBS DOM VBM VBON VBSF VBMF CEQT BMDT";

TEST(TranslatorCollectionTest, MapsEverySourceParameterOnceAndInsertsNullOnMiss) {
    ASSERT_EQ(69u, TranslatorCollection::kAllTranslators.size());
    TranslatorCollection collection;
    EXPECT_EQ(92u, collection.size());
    for (Translator* t : TranslatorCollection::kAllTranslators) {
        for (Parameter p : t->getSrcParams()) EXPECT_EQ(t, collection.getTranslator(p));
    }
    EXPECT_EQ(92u, collection.size());
    EXPECT_EQ(collection.getTranslator(toParameter(24)), collection.getTranslator(toParameter(25)));
    EXPECT_EQ(typeid(VirtualBassEnableTranslator),
              typeid(*collection.getTranslator(toParameter(82))));

    // Nothing reads these four; a look-up adds a null entry for each.
    size_t expectedSize = 92;
    for (int p : {10, 11, 45, 75}) {
        EXPECT_EQ(nullptr, collection.getTranslator(toParameter(p))) << p;
        EXPECT_EQ(++expectedSize, collection.size());
    }
    EXPECT_EQ(nullptr, collection.getTranslator(toParameter(45)));
    EXPECT_EQ(96u, collection.size());
}

TEST(ParameterTranslatorTest, PendingTranslatorsRunOnceInCreationOrder) {
    ParameterTranslator translator;
    DeviceParameters view(&translator);
    put(view, 23, {1});
    put(view, 26, {1});
    put(view, 91, {0});
    put(view, 24, {5});

    translator.onParameterChanged(toParameter(10));  // read by no translator
    EXPECT_TRUE(translator.getPending().empty());
    translator.onParameterChanged(toParameter(23));
    translator.onParameterChanged(toParameter(91));
    translator.onParameterChanged(toParameter(26));
    translator.onParameterChanged(toParameter(91));
    EXPECT_EQ(3u, translator.getPending().size());

    SetParamCommand cmd(0x2);
    cmd.setDeviceId(0x2);
    translator.translatePending(cmd);
    EXPECT_EQ(batchWords(0x2, {{0x2, AupParameter::GEON, {1}},
                               {0x2, AupParameter::DVLE, {0}},
                               {0x2, AupParameter::DEON, {1}},
                               {0x2, AupParameter::MDEE, {1}}}),
              cmd.buffer());
    EXPECT_TRUE(translator.getPending().empty());
    translator.translatePending(cmd);
    EXPECT_EQ(4, cmd.getEntryCount());
}

TEST(ParameterTranslatorTest, GeqPresetChangeRunsTheGeqTranslatorOnce) {
    ParameterTranslator translator;
    ProfileParameters view(&translator);
    EXPECT_EQ(&view, translator.getSource());
    EXPECT_EQ(Endpoint::OTHER, translator.getEndpoint());
    EXPECT_FALSE(translator.isMono());

    GeqPreset preset(1);
    preset.set(Parameter::GEQ_FREQUENCY, {32, 64, 125});
    preset.set(Parameter::GEQ_GAIN, {2, 0, -2});
    view.setGeqPreset(preset);
    ASSERT_EQ(1u, translator.getPending().size());

    SetParamCommand cmd(0x40000000);
    cmd.setDeviceId(0x40000000);
    translator.translatePending(cmd);
    EXPECT_EQ(batchWords(0x40000000, {{0x40000000, AupParameter::GEBS, {3, 32, 64, 125, 2, 0, -2}},
                                      {0x40000000, AupParameter::VCBF, {32, 64, 125}}}),
              cmd.buffer());
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
        SetParamCommand cmd(0x2);
        cmd.setDeviceId(0x2);
        translator.translatePending(cmd);
        return cmd.buffer();
    };
    EXPECT_EQ(batchWords(0x2, {{0x2, AupParameter::BMDE, {0}}}), apply(0, {3, 4}));
    // Enabling alone does not resend the tuning.
    EXPECT_EQ(batchWords(0x2, {{0x2, AupParameter::BMDE, {1}}}), apply(1, {3, 4}));
    EXPECT_EQ(batchWords(0x2, {{0x2, AupParameter::BMDT, {5, 6}}}), apply(1, {5, 6}));
}

TEST(ParameterTranslatorTest, FullResendOfFreshViewRunsEveryTranslatorWithEmptyLists) {
    ParameterTranslator translator;
    ProfileParameters profile(&translator);
    SetParamCommand cmd(0x40000000);
    cmd.setDeviceId(0x40000000);
    translator.translateAll(cmd);
    EXPECT_EQ(split("MDLE MIEE MSCE MAVE DVME RVSA RVSE GEBS VCBF DRCM"), entryCodes(cmd.buffer()));
    // Every valid Parameter was read, so each is now held as an empty list.
    EXPECT_EQ(ProfileParameters::kValidParams.size(), profile.values().size());
    EXPECT_TRUE(translator.getPending().empty());

    ParameterTranslator deviceTranslator;
    DeviceParameters device(&deviceTranslator);
    SetParamCommand deviceCmd(0x40000000);
    deviceCmd.setDeviceId(0x8);
    deviceTranslator.translateAll(deviceCmd);
    // No channel count: no per-channel tables; sibilance, CEQ and MBDRC are off.
    EXPECT_EQ(
            split("GEON IEON IEA IEID MVBE AOON BEON BEB BECF BEW PLB DED ARDS ARON ARDE AROD "
                  "ARTP RSSE NGON DSB VBOG VBSG VBHG VBBG VBCT VBHM VBHB VBMX VBRG VMB DVLA DVLC "
                  "DVLE DVLI DVLO DVMC DHFM DFSA DSA DHSA SVSB VSSD CEON DPLP HPON HPTW HPAT HPAA "
                  "HPAR BMDE DEON MDEE DEA ARSA ARBS IEBS DOM VBM VBON VBSF VBMF"),
            entryCodes(deviceCmd.buffer()));
    EXPECT_TRUE(device.values().at(Parameter::VIRTUALIZER_ENABLE).empty());
}

// A device view with every translator active: 2 channels, complex EQ,
// sibilance suppression and bass MBDRC on, speaker endpoint.
void fillDevice(DeviceParameters& view) {
    for (Parameter p : DeviceParameters::kValidParams) put(view, toInt(p), {toInt(p)});
    put(view, 45, {2});
    put(view, 15, {1});
    put(view, 57, {1});
    put(view, 12, {1});
}

TEST(ParameterTranslatorTest, FullResendEntryOrderIsStable) {
    ParameterTranslator translator;
    DeviceParameters view(&translator);
    Tuning tuning("spk", Endpoint::SPEAKER, false);
    view.setTuning(tuning);
    fillDevice(view);

    SetParamCommand first(0x40000000);
    first.setDeviceId(0x2);
    translator.translateAll(first);
    EXPECT_EQ(split(kDeviceResendCodes), entryCodes(first.buffer()));

    // Pending changes made in another order do not change the order of a resend.
    translator.onParameterChanged(Parameter::BASS_MBDRC_TUNING);
    translator.onParameterChanged(Parameter::GRAPHIC_EQUALIZER_ENABLE);
    translator.onParameterChanged(Parameter::DIALOG_ENHANCER_ENABLE);
    SetParamCommand second(0x40000000);
    second.setDeviceId(0x2);
    translator.translateAll(second);
    EXPECT_EQ(first.buffer(), second.buffer());
}

}  // namespace
}  // namespace vessa
