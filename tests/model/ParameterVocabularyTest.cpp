#include <cstring>

#include "ModelTestSupport.h"

namespace vessa::test {
namespace {

std::vector<int> numbers(const ParamSet& set) {
    std::vector<int> out;
    for (P p : set) out.push_back(toInt(p));
    return out;
}

// Most names are pinned by the database columns named after them. The
// virtual-bass mix names are the one place where the numbered list is not
// a strict byte sort ("mix_freq_" sorts before "mix_frequency").
TEST(TheParameterNames, RiseAlphabeticallyWithTheirValues) {
    for (int i = 0; i + 1 < kNumParameters; ++i) {
        if (i == toInt(P::VIRTUAL_BASS_MIX_FREQUENCY)) continue;
        EXPECT_LT(std::strcmp(parameterName(toParameter(i)), parameterName(toParameter(i + 1))), 0)
                << "between " << i << " and " << i + 1;
    }
    EXPECT_STREQ("audio_optimizer_enable", parameterName(P::AUDIO_OPTIMIZER_ENABLE));
    EXPECT_STREQ("virtual_bass_mix_frequency", parameterName(P::VIRTUAL_BASS_MIX_FREQUENCY));
    EXPECT_STREQ("virtual_bass_mix_freq_low", parameterName(P::VIRTUAL_BASS_MIX_FREQ_LOW));
    EXPECT_STREQ("", parameterName(toParameter(kNumParameters)));
}

TEST(TheParameterNames, ReadBackToTheirValuesAndNothingElseDoes) {
    for (int i = 0; i < kNumParameters; ++i) {
        P back = P::AUDIO_OPTIMIZER_ENABLE;
        ASSERT_TRUE(parameterFromName(parameterName(toParameter(i)), &back));
        EXPECT_EQ(i, toInt(back));
    }
    P untouched = P::OUTPUT_CHANNELS;
    EXPECT_FALSE(parameterFromName("virtual-bass-type", &untouched));
    EXPECT_EQ(P::OUTPUT_CHANNELS, untouched);
}

// Each parameter belongs to exactly one of the two views; the device view's
// three stored sources are disjoint and hold all of it but virtual_bass_type,
// which no stored record accepts (validated writes check these sets).
// (The profile and preset sets are pinned by the database schema's columns.)
TEST(TheValidSets, PartitionTheVocabularyBetweenTheTwoViewsAndTheirSources) {
    EXPECT_EQ((std::vector<int>{8,  14, 21, 22, 23, 26, 27, 28, 29, 30, 31, 32, 34,
                                35, 43, 47, 65, 66, 69, 83, 86, 88, 89, 91, 92, 93}),
              numbers(ProfileEndpoint::kValidParams));
    EXPECT_EQ((std::vector<int>{36, 37, 38}), numbers(IeqPreset::kValidParams));
    EXPECT_EQ((std::vector<int>{20, 24, 25, 39, 40, 41, 42, 63, 64, 95}),
              numbers(ProfileParameters::kValidParams));
    for (int i = 0; i < kNumParameters; ++i) {
        const P p = toParameter(i);
        const bool device = DeviceParameters::kValidParams.count(p);
        EXPECT_NE(device, ProfileParameters::kValidParams.count(p) == 1) << i;
        EXPECT_EQ(Profile::kValidParams.count(p) + GeqPreset::kValidParams.count(p),
                  ProfileParameters::kValidParams.count(p))
                << i;
        const size_t holders = Tuning::kValidParams.count(p) +
                               ProfileEndpoint::kValidParams.count(p) +
                               IeqPreset::kValidParams.count(p);
        EXPECT_EQ(device && p != P::VIRTUAL_BASS_TYPE ? 1u : 0u, holders) << i;
    }
}

// Bluetooth and USB outputs are tuned as headphones, HDMI and Miracast as "other".
TEST(TheOutputNames, GroupIntoTheThreeEndpoints) {
    const std::pair<const char*, Endpoint> groups[] = {{"internal_speaker", Endpoint::SPEAKER},
                                                       {"headphone", Endpoint::HEADPHONE},
                                                       {"bluetooth", Endpoint::HEADPHONE},
                                                       {"usb", Endpoint::HEADPHONE},
                                                       {"hdmi", Endpoint::OTHER},
                                                       {"miracast", Endpoint::OTHER},
                                                       {"other", Endpoint::OTHER}};
    for (const auto& [name, endpoint] : groups) EXPECT_EQ(endpoint, endpointForPortName(name));
    EXPECT_STREQ("usb", portName(Port::USB));
    EXPECT_STREQ("", portName(static_cast<Port>(kNumPortNames)));
    EXPECT_EQ(0u, Tuning::kEndpNameToEndpoint.count("internal_speaker")) << "not an endpoint name";
}

TEST(ThePresetTypeNames, AreReadExactlyAndCaseSensitively) {
    PresetType type = PresetType::DETAILED;
    EXPECT_TRUE(presetTypeFromName("balanced", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
    EXPECT_FALSE(presetTypeFromName("Warm", &type));
    EXPECT_FALSE(presetTypeFromName("", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
}

}  // namespace
}  // namespace vessa::test
