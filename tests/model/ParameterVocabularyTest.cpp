#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "model/DeviceParameters.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Parameter.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/ProfileParameters.h"
#include "model/Tuning.h"
#include "model/Vocabulary.h"

namespace vessa {
namespace {

std::vector<int> numbers(const ParamSet& set) {
    std::vector<int> out;
    for (Parameter p : set) out.push_back(toInt(p));
    return out;
}

TEST(ParameterVocabularyTest, ValuesFollowTheAlphabeticalNameTable) {
    // The virtual-bass mix names are the one place where the numbered list is
    // not a strict byte sort ("mix_freq_" sorts before "mix_frequency").
    for (int i = 0; i + 1 < kNumParameters; ++i) {
        if (i == 72) continue;
        EXPECT_LT(std::strcmp(parameterName(toParameter(i)), parameterName(toParameter(i + 1))), 0)
                << "between " << i << " and " << i + 1;
    }
    EXPECT_STREQ("audio_optimizer_enable", parameterName(toParameter(0)));
    EXPECT_STREQ("virtual_bass_mix_frequency", parameterName(toParameter(72)));
    EXPECT_STREQ("virtual_bass_mix_freq_low", parameterName(toParameter(74)));
    EXPECT_STREQ("volume_modeler_enable", parameterName(toParameter(95)));
    EXPECT_STREQ("", parameterName(toParameter(96)));

    for (int i = 0; i < kNumParameters; ++i) {
        Parameter back = Parameter::AUDIO_OPTIMIZER_ENABLE;
        ASSERT_TRUE(parameterFromName(parameterName(toParameter(i)), &back));
        EXPECT_EQ(i, toInt(back));
    }
    Parameter untouched = Parameter::OUTPUT_CHANNELS;
    EXPECT_FALSE(parameterFromName("virtual-bass-type", &untouched));
    EXPECT_EQ(Parameter::OUTPUT_CHANNELS, untouched);
}

TEST(ParameterVocabularyTest, ValidSetsPartitionTheVocabulary) {
    EXPECT_EQ(56u, Tuning::kValidParams.size());
    EXPECT_EQ(26u, ProfileEndpoint::kValidParams.size());
    EXPECT_EQ((std::vector<int>{36, 37, 38}), numbers(IeqPreset::kValidParams));
    EXPECT_EQ((std::vector<int>{24, 25}), numbers(GeqPreset::kValidParams));
    EXPECT_EQ((std::vector<int>{20, 39, 40, 41, 42, 63, 64, 95}), numbers(Profile::kValidParams));
    EXPECT_EQ((std::vector<int>{20, 24, 25, 39, 40, 41, 42, 63, 64, 95}),
              numbers(ProfileParameters::kValidParams));
    EXPECT_EQ(86u, DeviceParameters::kValidParams.size());

    // Every parameter is in exactly one of the two views; the device view's
    // three stored sources are disjoint and cover all of it but 82.
    for (int i = 0; i < kNumParameters; ++i) {
        Parameter p = toParameter(i);
        EXPECT_NE(ProfileParameters::kValidParams.count(p), DeviceParameters::kValidParams.count(p))
                << i;
        int holders = Tuning::kValidParams.count(p) + ProfileEndpoint::kValidParams.count(p) +
                      IeqPreset::kValidParams.count(p);
        if (DeviceParameters::kValidParams.count(p)) {
            EXPECT_EQ(i == 82 ? 0 : 1, holders) << i;
        }
    }
    EXPECT_EQ((std::vector<int>{8,  14, 21, 22, 23, 26, 27, 28, 29, 30, 31, 32, 34,
                                35, 43, 47, 65, 66, 69, 83, 86, 88, 89, 91, 92, 93}),
              numbers(ProfileEndpoint::kValidParams));
}

TEST(ParameterVocabularyTest, VirtualBassTypeIsOnlyAcceptedByTheDeviceView) {
    const std::vector<int> v = {2};
    Tuning tuning("t", Endpoint::SPEAKER, false);
    ProfileEndpoint endpoint(0, Endpoint::SPEAKER, PresetType::OFF);
    Profile profile(0, "p", false);
    IeqPreset ieq(PresetType::WARM);
    GeqPreset geq(0);
    for (ParameterValues* record :
         std::vector<ParameterValues*>{&tuning, &endpoint, &profile, &ieq, &geq}) {
        EXPECT_FALSE(record->checkAndUpdate(Parameter::VIRTUAL_BASS_TYPE, v));
        EXPECT_EQ(0u, record->values().count(Parameter::VIRTUAL_BASS_TYPE));
    }
    DeviceParameters view(nullptr);
    EXPECT_TRUE(view.checkAndUpdate(Parameter::VIRTUAL_BASS_TYPE, v));
}

TEST(ParameterVocabularyTest, NamesAndOutputTables) {
    EXPECT_STREQ("usb", portName(Port::USB));
    EXPECT_STREQ("", portName(static_cast<Port>(7)));

    EXPECT_EQ(Endpoint::SPEAKER, endpointForPortName("internal_speaker"));
    for (const char* name : {"headphone", "bluetooth", "usb"}) {
        EXPECT_EQ(Endpoint::HEADPHONE, endpointForPortName(name)) << name;
    }
    for (const char* name : {"hdmi", "miracast", "other"}) {
        EXPECT_EQ(Endpoint::OTHER, endpointForPortName(name)) << name;
    }
    EXPECT_EQ(0u, Tuning::kEndpNameToEndpoint.count("internal_speaker"));

    PresetType type = PresetType::DETAILED;
    EXPECT_TRUE(presetTypeFromName("balanced", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
    EXPECT_FALSE(presetTypeFromName("Warm", &type));
    EXPECT_FALSE(presetTypeFromName("", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
}

}  // namespace
}  // namespace vessa
