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
// They read back to their values, and nothing else does.
TEST(TheParameterNames, RiseAlphabeticallyWithTheirValuesAndReadBackToThem) {
    for (int i = 0; i + 1 < kNumParameters; ++i) {
        if (i == toInt(P::VIRTUAL_BASS_MIX_FREQUENCY)) continue;
        EXPECT_LT(std::strcmp(parameterName(toParameter(i)), parameterName(toParameter(i + 1))), 0)
                << "between " << i << " and " << i + 1;
    }
    EXPECT_STREQ("audio_optimizer_enable", parameterName(P::AUDIO_OPTIMIZER_ENABLE));
    EXPECT_STREQ("virtual_bass_mix_frequency", parameterName(P::VIRTUAL_BASS_MIX_FREQUENCY));
    EXPECT_STREQ("virtual_bass_mix_freq_low", parameterName(P::VIRTUAL_BASS_MIX_FREQ_LOW));
    EXPECT_STREQ("", parameterName(toParameter(kNumParameters)));
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

// Bluetooth and USB outputs are tuned as headphones, HDMI and Miracast as "other". Only
// the three endpoint names are read back into a tuning.
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
    Tuning tuning(2L, "hp", Endpoint::HEADPHONE, false, false);
    tuning.setEndpoint("internal_speaker");
    EXPECT_EQ(Endpoint::HEADPHONE, tuning.getEndpoint());
    tuning.setEndpoint("other");
    EXPECT_EQ(Endpoint::OTHER, tuning.getEndpoint());
}

TEST(ThePresetTypeNames, AreReadExactlyAndCaseSensitively) {
    PresetType type = PresetType::DETAILED;
    EXPECT_TRUE(presetTypeFromName("balanced", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
    EXPECT_FALSE(presetTypeFromName("Warm", &type));
    EXPECT_FALSE(presetTypeFromName("", &type));
    EXPECT_EQ(PresetType::BALANCED, type);
}

// A clean record, as read from the database. A parameter outside the valid set is
// ignored; an absent one gets an empty entry, kept even when nothing changed. An
// unchecked write of its own values survives.
TEST(AStoredProfile, ReportsAValidatedWriteAsAChangeOnlyWhenValidAndTheListDiffers) {
    Profile profile(5LL, 1, "Music", false);
    EXPECT_FALSE(profile.checkAndUpdate(P::IEQ_AMOUNT, {3}));
    EXPECT_TRUE(profile.values().empty());
    EXPECT_FALSE(profile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {}));
    EXPECT_EQ("volume_modeler_enable=\n", profile.valuesToString());
    EXPECT_FALSE(profile.isDirty());
    EXPECT_TRUE(profile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_TRUE(profile.isDirty());
    EXPECT_FALSE(profile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_TRUE(profile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1, 0})) << "a longer list";
    profile.set(P::VOLUME_MODELER_ENABLE, profile.valuesOf(P::VOLUME_MODELER_ENABLE));
    EXPECT_EQ((V{1, 0}), profile.values().at(P::VOLUME_MODELER_ENABLE));
}

// Maps alone decide, with the keys of the kind: ids, names and flags do not count.
TEST(TwoRecords, AreEqualWhenTheirMapsAndKeysAre) {
    Tuning a(1L, "a", Endpoint::SPEAKER, false, false), b("b", Endpoint::HEADPHONE, true);
    a.set(P::OUTPUT_CHANNELS, {2});
    b.set(P::OUTPUT_CHANNELS, {2});
    EXPECT_TRUE(a.equals(b));
    b.set(P::ORIENTATION, {0});
    EXPECT_FALSE(a.equals(b));
    EXPECT_FALSE(GeqPreset(0).equals(GeqPreset(1)));
    Profile p1(0, "Music", false), p2(0, "Movie", true);
    p2.setSelectedGeqPreset(3);
    EXPECT_TRUE(p1.equals(p2));
    EXPECT_FALSE(p1.equals(Profile(1, "Music", false)));
    ProfileEndpoint e1(0, Endpoint::SPEAKER, PresetType::WARM);
    EXPECT_TRUE(e1.equals(ProfileEndpoint(0, Endpoint::SPEAKER, PresetType::WARM)));
    EXPECT_FALSE(e1.equals(ProfileEndpoint(0, Endpoint::SPEAKER, PresetType::OFF)));
    EXPECT_FALSE(e1.equals(ProfileEndpoint(0, Endpoint::HEADPHONE, PresetType::WARM)));
    EXPECT_FALSE(e1.equals(ProfileEndpoint(1, Endpoint::SPEAKER, PresetType::WARM)));
}

// Stored tuning and endpoint ids are read as 32 bits; a new profile uses its own
// GEQ preset; an IEQ preset holds its type as ieq_id, which no dump shows. (The
// device tuning's dump is checked where the database reads it back.)
TEST(EveryRecordKind, DumpsItsHeaderLinesThenItsValuesInParameterOrder) {
    Tuning tuning(2147483648L, "hp", Endpoint::OTHER, false, true);
    tuning.set(P::OUTPUT_MIX_MATRIX, {1, 0, 0, 1});
    tuning.set(P::AUDIO_OPTIMIZER_ENABLE, {1});
    tuning.set(P::BASS_MBDRC_TUNING, {});
    IeqPreset ieq(4LL, PresetType::WARM);
    ieq.set(P::IEQ_FREQUENCY, {100, 200});
    GeqPreset geq(9LL, 3);
    geq.set(P::GEQ_FREQUENCY, {32});
    Profile profile(2, "Game", true);
    profile.set(P::REVERB_SUPPRESSION_ENABLE, {0});
    ProfileEndpoint endpoint(4294967295L, 1, Endpoint::OTHER, PresetType::DETAILED);
    endpoint.set(P::IEQ_ENABLE, {1});
    endpoint.set(P::IEQ_AMOUNT, {10});
    const std::pair<std::string, std::string> dumps[] = {
            {tuning.toString(),
             "id=-2147483648\nname=hp\nendpoint=other\nmono=false\nreadonly=true\n"
             "audio_optimizer_enable=1,\nbass_mbdrc_tuning=\noutput_mix_matrix=1,0,0,1,\n"},
            {ieq.toString(), "id=4\ntype=warm\nieq_frequency=100,200,\n"},
            {geq.toString(), "id=9\nprofileId=3\ngeq_frequency=32,\n"},
            {profile.toString(),
             "id=-1\nprofileId=2\nname=Game\nmobility=true\nselectedGeqPreset=2\n"
             "reverb_suppression_enable=0,\n"},
            {endpoint.toString(),
             "id=-1\nprofileId=1\nendpoint=other\nselectedIeqPreset=detailed\n"
             "ieq_amount=10,\nieq_enable=1,\n"}};
    for (const auto& [dump, expected] : dumps) EXPECT_EQ(expected, dump);
    EXPECT_EQ(V{3}, ieq.values().at(P::IEQ_ID));
}

}  // namespace
}  // namespace vessa::test
