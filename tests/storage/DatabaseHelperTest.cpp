#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <regex>
#include <sstream>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/DatabaseHelper.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

using test::fillAll;
using test::Strings;
using namespace ::testing;
constexpr const char* kTag = "DatabaseHelper";

// "table col col ..." per table, as the sqlite3 command-line tool shows the schema; a
// column whose type is not INTEGER for "_id" and TEXT otherwise carries ":TYPE".
Strings schemaOf(const test::ScopedRoot& root) {
    Strings tables;
    for (const std::string& line : root.sql(".schema")) {
        std::istringstream in(std::regex_replace(line, std::regex("[(),;]"), " "));
        std::string create, table, name, column, type;
        in >> create >> table >> name;
        while (in >> column >> type) {
            name += " " + column;
            if (type != (column == "_id" ? "INTEGER" : "TEXT")) name += ":" + type;
        }
        tables.push_back(name);
    }
    return tables;
}

std::string names(const char* leading, const ParamSet& params) {
    std::string out = leading;
    for (Parameter p : params) out += std::string(" ") + parameterName(p);
    return out;
}

class DatabaseHelperTest : public ::testing::Test {
  protected:
    void SetUp() override { db.init(); }
    test::ScopedRoot root;
    DatabaseHelper db{"zan_sqlite3.db"};
};

TEST_F(DatabaseHelperTest, CreatesTheSevenTablesUnderTheRoot) {
    ASSERT_EQ(db.getPath(), root.databasePath());
    ParamSet endpointColumns = ProfileEndpoint::kValidParams;
    endpointColumns.insert(Parameter::VIRTUAL_BASS_TYPE);
    const Strings expected = {
            "configuration _id key value",
            "ieq_presets _id custom_name preset_type ieq_frequency ieq_target",
            "geq_presets _id custom_name profile_id geq_frequency geq_gain",
            "profiles _id custom_name profile_id name is_mobility selected_geq_preset_id "
            "custom_drc_metadata mi_adaptive_virtualizer_steering_enable "
            "mi_dv_leveler_steering_enable mi_ieq_steering_enable "
            "mi_surround_compressor_steering_enable reverb_suppression_amount "
            "reverb_suppression_enable volume_modeler_enable",
            names("profile_endpoints _id custom_name profile_id endpoint selected_ieq_preset_type",
                  endpointColumns),
            names("tunings _id custom_name name endpoint is_mono is_readonly",
                  Tuning::kValidParams),
            "device_tunings _id custom_name device port tuning_id"};
    EXPECT_EQ(schemaOf(root), expected);

    db.clear();
    EXPECT_TRUE(schemaOf(root).empty());
}

// Found, with equal maps and the same dump, so ids, names, flags and types match too.
template <class Record>
void expectRead(bool found, const Record& read, const Record& written) {
    ASSERT_TRUE(found) << written.toString();
    EXPECT_TRUE(read.equals(written));
    EXPECT_EQ(read.toString(), written.toString());
}

TEST_F(DatabaseHelperTest, EveryRecordKindRoundTrips) {
    LogCapture log;
    Tuning mono(1, "spk", Endpoint::SPEAKER, true, true), t1("", Endpoint::OTHER, false);
    Tuning stereo(9, "it's", Endpoint::HEADPHONE, false, false), t2("", Endpoint::OTHER, true);
    IeqPreset off(1, PresetType::OFF), warm(2, PresetType::WARM), readWarm(PresetType::WARM);
    GeqPreset geq(1, 2), readGeq(0);
    Profile profile(1LL, 1, "Rock 'n' Roll=1", true), readProfile(1, "", false);
    ProfileEndpoint speaker(1, 1, Endpoint::SPEAKER, PresetType::BALANCED);
    ProfileEndpoint other(2, 1, Endpoint::OTHER, PresetType::DETAILED);
    ProfileEndpoint read1(1, Endpoint::SPEAKER, PresetType::OFF), read2(read1);
    int seed = 0;
    for (ParameterValues* r : std::initializer_list<ParameterValues*>{
                 &mono, &stereo, &off, &warm, &geq, &profile, &speaker, &other}) {
        fillAll(*r, ++seed);
    }
    profile.setSelectedGeqPreset(3);
    other.set(Parameter::VIRTUAL_BASS_TYPE, {2});  // held although not validated: kept
    other.set(Parameter::IEQ_AMOUNT, {});
    other.set(Parameter::PEAK_VALUE, {INT_MIN, 0, INT_MAX});
    db.insertValue(&mono, "default");
    db.insertValue(&stereo, "oem");
    db.insertValue(&off, "default");
    db.insertValue(&warm, "default");
    db.insertValue(&geq, "custom", geq.getId());
    db.insertValue(&profile, "default", profile.getId());
    db.insertValue(&speaker, "default", speaker.getId());
    db.insertValue(&other, "default", other.getId());

    expectRead(db.queryTuning("spk", &t1), t1, mono);
    expectRead(db.queryTuning("it's", &t2), t2, stereo);
    expectRead(db.queryIeqValue("warm", "default", &readWarm), readWarm, warm);
    expectRead(db.queryGeqValue("2", "custom", &readGeq), readGeq, geq);
    EXPECT_FALSE(db.queryGeqValue("2", "default", &readGeq));
    expectRead(db.queryProfileValue("1", "default", &readProfile), readProfile, profile);
    EXPECT_EQ(readProfile.getSelectedGeqPreset(), 3);
    expectRead(db.queryEndpointValue("1", "speaker", "default", &read1), read1, speaker);
    expectRead(db.queryEndpointValue("1", "other", "default", &read2), read2, other);
    EXPECT_EQ(root.sql("SELECT virtual_bass_type FROM profile_endpoints"),
              (Strings{"<null>", "2"}));

    DeviceTuning d1("default_headphone", "headphone", "hp"), d2(40, "o'neil", "headphone", "hp");
    DeviceTuning d3("default_usb", "usb", "hp");
    for (DeviceTuning* d : {&d1, &d2, &d3}) db.insertValue(d, "default");
    DeviceTuningSet found;
    db.queryDeviceTunings("headphone", found);
    Strings read;
    for (DeviceTuning* d : found) {
        read.push_back(d->toString());
        delete d;
    }
    EXPECT_EQ(read, (Strings{"id=1\ndevice=default_headphone\nport=headphone\ntuning=hp",
                             "id=40\ndevice=o'neil\nport=headphone\ntuning=hp"}));
    Strings logged;  // only the expected miss; not even a stray empty dump line
    for (const auto& l : log.linesWithTag(kTag)) logged.push_back(l.message);
    EXPECT_EQ(logged, Strings{"GeqPreset doesn't exist!"});
}

TEST_F(DatabaseHelperTest, FlagsAndQuotesReadBackAsWritten) {
    Tuning tuning("t", Endpoint::SPEAKER, true), read("", Endpoint::SPEAKER, false);
    db.insertValue(&tuning, "default");
    EXPECT_EQ(root.sql("SELECT is_mono || is_readonly FROM tunings"), Strings{"truetrue"});
    // Digits read back too.
    db.execSQL("UPDATE tunings SET is_mono='0', is_readonly='1'");
    ASSERT_TRUE(db.queryTuning("t", &read));
    EXPECT_EQ(std::make_pair(read.isMono(), read.isReadonly()), std::make_pair(false, true));
    db.execSQL("UPDATE tunings SET is_mono='2', is_readonly='false'");
    ASSERT_TRUE(db.queryTuning("t", &read));
    EXPECT_EQ(std::make_pair(read.isMono(), read.isReadonly()), std::make_pair(true, false));

    // A quote stays data: the statement around it is not altered.
    db.insertConfigurationValue("usb", "x'); DROP TABLE tunings; --");
    EXPECT_EQ(db.queryConfigurationValue("usb"), "x'); DROP TABLE tunings; --");
    EXPECT_EQ(root.sql("SELECT COUNT(*) FROM tunings"), Strings{"1"});
}

TEST_F(DatabaseHelperTest, RowIdsAndConfigurationRules) {
    GeqPreset a(0), b(1);
    db.insertValue(&a, "default", 0);
    db.insertValue(&b, "default", -1);
    db.insertValue(&b, "default", 17);
    db.insertValue(&a, "custom", 0);
    EXPECT_EQ(root.sql("SELECT _id FROM geq_presets"), (Strings{"1", "2", "17", "4"}));

    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    EXPECT_FALSE(db.queryAupStatus("State"));
    db.insertConfigurationValue("State", "false");
    db.insertConfigurationValue("Profile", "");
    EXPECT_EQ(root.sql("SELECT _id || key FROM configuration"), (Strings{"1State", "2Profile"}));
    EXPECT_FALSE(db.queryAupStatus("State"));
    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    db.updateAupStatus("State", true);
    EXPECT_TRUE(db.queryAupStatus("State"));
    db.updateSelectedProfile("State", "0");
    EXPECT_TRUE(db.queryAupStatus("State"));
    db.updateTuningDevice("Profile", "3");
    EXPECT_EQ(db.querySelectedProfile("Profile"), "3");
}

TEST_F(DatabaseHelperTest, DefaultRowsAreNeverUpdated) {
    Profile profile(0, "Music", false);
    ProfileEndpoint endpoint(0, Endpoint::HEADPHONE, PresetType::WARM);
    GeqPreset geq(0);
    for (const char* origin : {"default", "custom"}) {
        db.insertValue(&profile, origin, 0);
        db.insertValue(&endpoint, origin, 0);
        db.insertValue(&geq, origin, 0);
    }
    profile.setName("Changed");
    endpoint.setSelectedIeqPreset(PresetType::OFF);
    geq.set(Parameter::GEQ_GAIN, {1, 2, 3});
    LogCapture log;
    for (const char* origin : {"default", "custom"}) {
        db.updateProfileValue(&profile, origin);
        db.updateProfileEndpointValue(&endpoint, origin);
        db.updateGeqValue(&geq, origin);
    }
    // One refusal per update path, none for the user copies.
    const auto refusal =
            AllOf(Field(&LogCapture::Line::priority, ANDROID_LOG_ERROR),
                  Field(&LogCapture::Line::message,
                        MatchesRegex("the default value can't be updated, [1-9][0-9]*")));
    EXPECT_THAT(log.linesWithTag(kTag), ElementsAre(refusal, refusal, refusal));
    EXPECT_EQ(root.sql("SELECT custom_name || name FROM profiles ORDER BY _id"),
              (Strings{"defaultMusic", "customChanged"}));
    EXPECT_EQ(root.sql("SELECT custom_name || selected_ieq_preset_type FROM profile_endpoints "
                       "ORDER BY _id"),
              (Strings{"defaultwarm", "customoff"}));
    EXPECT_EQ(root.sql("SELECT custom_name || ifnull(geq_gain, '') FROM geq_presets ORDER BY _id"),
              (Strings{"default", "custom1,2,3"}));
}

TEST_F(DatabaseHelperTest, BrokenDumpLinesAndOemRowsAreLoggedWhenDropped) {
    LogCapture log;
    db.executeInsertCommand(TableType::DEVICE_TUNINGS, "oem", "id=-1\ndevice=d\nbroken\ntuning=t",
                            0);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "invalid string value"));
    EXPECT_EQ(root.sql("SELECT device || '|' || port || '|' || tuning_id FROM device_tunings"),
              Strings{"d||t"});
    db.clearOemDeviceTunings();
    EXPECT_EQ(root.sql("SELECT COUNT(*) FROM device_tunings"), Strings{"0"});
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Delete existing device tuning with SQL [DELETE from device_tunings "
                             "WHERE custom_name = 'oem']"));
}

TEST(ClosedDatabaseTest, EveryOperationIsALoggedNoOp) {
    test::ScopedRoot root;
    std::filesystem::create_directories(root.databasePath());  // a directory cannot be opened
    LogCapture log;
    DatabaseHelper db("zan_sqlite3.db");
    EXPECT_FALSE(db.isOpen());
    db.init();
    db.beginTransaction();
    Profile profile(0, "P", false);
    db.insertValue(&profile, "default", 0);
    db.updateProfileValue(&profile, "custom");
    EXPECT_FALSE(db.queryProfileValue("0", "default", &profile));
    DeviceTuningSet devices;
    db.queryDeviceTunings("usb", devices);
    EXPECT_TRUE(devices.empty());
    db.insertConfigurationValue("State", "true");
    db.updateAupStatus("State", true);
    EXPECT_FALSE(db.queryAupStatus("State"));
    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    db.clearOemTunings();
    db.clear();
    db.commitTransaction();
    for (const char* message :
         {"the db is not open...", "the database is not connected", "db is not connected"}) {
        EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, message)) << message;
    }
    // The provider over it finds no profile and answers neutrally.
    Provider provider;
    EXPECT_EQ(provider.init(), -19);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "VsaDatabaseProvider",
                             "init(): No profiles found from the database"));
    EXPECT_EQ(provider.loadProfile(0), nullptr);
    EXPECT_EQ(std::make_pair(provider.getSelectedProfile(), provider.isAupOn()),
              std::make_pair(-1, false));
    EXPECT_TRUE(std::filesystem::is_directory(root.databasePath()));
}

}  // namespace
}  // namespace vessa
