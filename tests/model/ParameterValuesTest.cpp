#include "ModelTestSupport.h"

namespace vessa::test {
namespace {

// A clean record, as read from the database.
class AStoredProfile : public ::testing::Test {
  protected:
    Profile mProfile{5LL, 1, "Music", false};
};

TEST_F(AStoredProfile, IgnoresAValidatedWriteOutsideItsValidSet) {
    EXPECT_FALSE(mProfile.checkAndUpdate(P::IEQ_AMOUNT, {3}));
    EXPECT_TRUE(mProfile.values().empty());
    EXPECT_FALSE(mProfile.isDirty());
}

// An absent parameter gets an empty entry, kept even when nothing changed.
TEST_F(AStoredProfile, ReportsAValidatedWriteAsAChangeOnlyWhenTheListDiffers) {
    EXPECT_FALSE(mProfile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {}));
    EXPECT_EQ("volume_modeler_enable=\n", mProfile.valuesToString());
    EXPECT_FALSE(mProfile.isDirty());
    EXPECT_TRUE(mProfile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_TRUE(mProfile.isDirty());
    EXPECT_FALSE(mProfile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_TRUE(mProfile.checkAndUpdate(P::VOLUME_MODELER_ENABLE, {1, 0})) << "a longer list";
}

TEST_F(AStoredProfile, SurvivesAnUncheckedWriteOfItsOwnValues) {
    mProfile.set(P::VOLUME_MODELER_ENABLE, {1, 0});
    mProfile.set(P::VOLUME_MODELER_ENABLE, mProfile.valuesOf(P::VOLUME_MODELER_ENABLE));
    EXPECT_EQ((V{1, 0}), mProfile.values().at(P::VOLUME_MODELER_ENABLE));
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

// Only the three endpoint names are read back.
TEST(ATuning, IgnoresAnEndpointTextThatNamesNoEndpoint) {
    Tuning tuning(2L, "hp", Endpoint::HEADPHONE, false, false);
    tuning.setEndpoint("internal_speaker");
    EXPECT_EQ(Endpoint::HEADPHONE, tuning.getEndpoint());
    tuning.setEndpoint("other");
    EXPECT_EQ(Endpoint::OTHER, tuning.getEndpoint());
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
