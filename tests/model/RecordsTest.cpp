#include <gtest/gtest.h>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace vessa {
namespace {

TEST(ParameterValuesTest, WritesAndDirtyTracking) {
    Profile profile(5LL, 1, "Music", false);
    ASSERT_FALSE(profile.isDirty());

    // Outside the valid set: nothing at all happens.
    EXPECT_FALSE(profile.checkAndUpdate(Parameter::IEQ_AMOUNT, {3}));
    EXPECT_TRUE(profile.values().empty());
    EXPECT_FALSE(profile.isDirty());

    // An empty list for an absent parameter leaves an empty entry but no dirt.
    EXPECT_FALSE(profile.checkAndUpdate(Parameter::VOLUME_MODELER_ENABLE, {}));
    ASSERT_EQ(1u, profile.values().count(Parameter::VOLUME_MODELER_ENABLE));
    EXPECT_FALSE(profile.isDirty());
    EXPECT_EQ("volume_modeler_enable=\n", profile.valuesToString());

    EXPECT_TRUE(profile.checkAndUpdate(Parameter::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_TRUE(profile.isDirty());
    profile.setDirty(false);
    EXPECT_FALSE(profile.checkAndUpdate(Parameter::VOLUME_MODELER_ENABLE, {1}));
    EXPECT_FALSE(profile.isDirty());
    // A longer list with the same prefix is a change.
    EXPECT_TRUE(profile.checkAndUpdate(Parameter::VOLUME_MODELER_ENABLE, {1, 0}));

    // set() marks dirty even when nothing changes, and even when it is given
    // the stored vector itself.
    profile.setDirty(false);
    profile.set(Parameter::VOLUME_MODELER_ENABLE, profile.valuesOf(Parameter::VOLUME_MODELER_ENABLE));
    EXPECT_TRUE(profile.isDirty());
    EXPECT_EQ((std::vector<int>{1, 0}), profile.values().at(Parameter::VOLUME_MODELER_ENABLE));
}

TEST(ParameterValuesTest, EqualsComparesMapsOnly) {
    Tuning a(1L, "a", Endpoint::SPEAKER, false, false);
    Tuning b("b", Endpoint::HEADPHONE, true);
    a.set(Parameter::OUTPUT_CHANNELS, {2});
    b.set(Parameter::OUTPUT_CHANNELS, {2});
    EXPECT_TRUE(a.equals(b));
    b.set(Parameter::ORIENTATION, {0});
    EXPECT_FALSE(a.equals(b));
    a.set(Parameter::ORIENTATION, {1});
    EXPECT_FALSE(a.equals(b));  // same keys, different value
    a.set(Parameter::ORIENTATION, {0, 0});
    EXPECT_FALSE(a.equals(b));  // same keys, different length

    GeqPreset g1(0), g2(1);
    g1.set(Parameter::GEQ_GAIN, {1, 2});
    g2.set(Parameter::GEQ_GAIN, {1, 2});
    EXPECT_FALSE(g1.equals(g2));
    EXPECT_TRUE(g1.equals(g1));

    Profile p1(0, "Music", false), p2(0, "Movie", true);
    p2.setSelectedGeqPreset(3);
    EXPECT_TRUE(p1.equals(p2));
    Profile p3(1, "Music", false);
    EXPECT_FALSE(p1.equals(p3));

    ProfileEndpoint e1(0, Endpoint::SPEAKER, PresetType::WARM);
    ProfileEndpoint e2(0, Endpoint::SPEAKER, PresetType::OFF);
    EXPECT_FALSE(e1.equals(e2));
    e2.setSelectedIeqPreset(PresetType::WARM);
    EXPECT_TRUE(e1.equals(e2));
    ProfileEndpoint e3(0, Endpoint::HEADPHONE, PresetType::WARM);
    EXPECT_FALSE(e1.equals(e3));
}

TEST(RecordsTest, TuningConstructorsAndDump) {
    Tuning fromFile("spk", Endpoint::SPEAKER, true);
    EXPECT_EQ(-1, fromFile.getId());
    EXPECT_TRUE(fromFile.isDirty());
    EXPECT_TRUE(fromFile.isReadonly());
    EXPECT_EQ("id=-1\nname=spk\nendpoint=speaker\nmono=true\nreadonly=true\n",
              fromFile.toString());

    Tuning fromDb(2147483648L, "hp", Endpoint::HEADPHONE, false, false);
    EXPECT_EQ(-2147483648LL, fromDb.getId());
    EXPECT_FALSE(fromDb.isDirty());
    EXPECT_FALSE(fromDb.isReadonly());

    fromDb.setEndpoint("internal_speaker");
    EXPECT_EQ(Endpoint::HEADPHONE, fromDb.getEndpoint());
    fromDb.setEndpoint("other");
    EXPECT_EQ(Endpoint::OTHER, fromDb.getEndpoint());
    fromDb.setMono(true);
    EXPECT_FALSE(fromDb.isDirty());

    fromDb.set(Parameter::OUTPUT_MIX_MATRIX, {1, 0, 0, 1});
    fromDb.set(Parameter::AUDIO_OPTIMIZER_ENABLE, {1});
    fromDb.set(Parameter::BASS_MBDRC_TUNING, {});
    EXPECT_EQ("id=-2147483648\nname=hp\nendpoint=other\nmono=true\nreadonly=false\n"
              "audio_optimizer_enable=1,\nbass_mbdrc_tuning=\noutput_mix_matrix=1,0,0,1,\n",
              fromDb.toString());

    DeviceTuning fresh("default_usb", "usb", "usb_tuning");
    DeviceTuning stored(7, "dac", "usb", "usb_tuning");
    EXPECT_EQ(-1, fresh.getId());
    EXPECT_TRUE(fresh.isDirty());
    EXPECT_TRUE(stored.isDirty());
    stored.setDirty(false);
    EXPECT_FALSE(stored.isDirty());
    EXPECT_EQ("id=7\ndevice=dac\nport=usb\ntuning=usb_tuning", stored.toString());
}

TEST(RecordsTest, PresetsConstructorsAndDump) {
    IeqPreset fresh(PresetType::BALANCED);
    EXPECT_EQ(-1, fresh.getId());
    EXPECT_TRUE(fresh.isDirty());
    EXPECT_EQ((std::vector<int>{2}), fresh.values().at(Parameter::IEQ_ID));
    EXPECT_EQ("", fresh.valuesToString());

    IeqPreset stored(4LL, PresetType::WARM);
    EXPECT_EQ(4, stored.getId());
    EXPECT_TRUE(stored.isDirty());  // the ieq_id write marks even a stored preset
    stored.set(Parameter::IEQ_FREQUENCY, {100, 200});
    stored.set(Parameter::IEQ_TARGET, {-3});
    EXPECT_EQ("id=4\ntype=warm\nieq_frequency=100,200,\nieq_target=-3,\n", stored.toString());

    GeqPreset geq(3);
    EXPECT_TRUE(geq.isDirty());
    GeqPreset storedGeq(9LL, 3);
    EXPECT_FALSE(storedGeq.isDirty());
    storedGeq.set(Parameter::GEQ_FREQUENCY, {32});
    EXPECT_EQ("id=9\nprofileId=3\ngeq_frequency=32,\n", storedGeq.toString());
}

TEST(RecordsTest, ProfilesConstructorsSettersAndDump) {
    Profile fresh(2, "Game", true);
    EXPECT_EQ(-1, fresh.getId());
    EXPECT_TRUE(fresh.isDirty());
    EXPECT_EQ(2, fresh.getSelectedGeqPreset());

    Profile stored(11LL, 1, "Movie", false);
    EXPECT_FALSE(stored.isDirty());
    EXPECT_EQ(1, stored.getSelectedGeqPreset());
    stored.setMobility(true);
    EXPECT_FALSE(stored.isDirty());
    stored.setName("Movie");
    EXPECT_TRUE(stored.isDirty());
    stored.setDirty(false);
    stored.setSelectedGeqPreset(1);
    EXPECT_TRUE(stored.isDirty());
    stored.set(Parameter::REVERB_SUPPRESSION_ENABLE, {0});
    EXPECT_EQ("id=11\nprofileId=1\nname=Movie\nmobility=true\nselectedGeqPreset=1\n"
              "reverb_suppression_enable=0,\n",
              stored.toString());

    ProfileEndpoint endpoint(-5L, 1, Endpoint::OTHER, PresetType::DETAILED);
    EXPECT_EQ(-5, endpoint.getId());
    EXPECT_FALSE(endpoint.isDirty());
    endpoint.setSelectedIeqPreset(PresetType::DETAILED);
    EXPECT_TRUE(endpoint.isDirty());
    endpoint.set(Parameter::IEQ_ENABLE, {1});
    endpoint.set(Parameter::IEQ_AMOUNT, {10});
    EXPECT_EQ("id=-5\nprofileId=1\nendpoint=other\nselectedIeqPreset=detailed\n"
              "ieq_amount=10,\nieq_enable=1,\n",
              endpoint.toString());
    ProfileEndpoint wide(4294967295L, 0, Endpoint::SPEAKER, PresetType::OFF);
    EXPECT_EQ(-1, wide.getId());
    EXPECT_TRUE(ProfileEndpoint(0, Endpoint::SPEAKER, PresetType::OFF).isDirty());
}

}  // namespace
}  // namespace vessa
