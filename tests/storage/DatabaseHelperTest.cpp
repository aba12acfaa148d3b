#include <android/log.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/DatabaseHelper.h"

namespace vessa {
namespace {

using test::fillAll;
using test::OutsideView;
using Strings = std::vector<std::string>;
constexpr const char* kTag = "DatabaseHelper";

// "table col col ..." per table, as the sqlite3 command-line tool shows the schema; a
// column whose type is not INTEGER for "_id" and TEXT otherwise carries ":TYPE".
Strings schemaOf(const std::string& file) {
    Strings tables;
    FILE* pipe = popen(("sqlite3 '" + file + "' .schema").c_str(), "r");
    char buffer[8192];
    while (pipe != nullptr && fgets(buffer, sizeof(buffer), pipe) != nullptr) {
        std::string line(buffer), create, table, name, column, type;
        for (char& c : line) {
            if (c == '(' || c == ')' || c == ',' || c == ';') c = ' ';
        }
        std::istringstream in(line);
        in >> create >> table >> name;
        while (in >> column >> type) {
            name += " " + column;
            if (type != (column == "_id" ? "INTEGER" : "TEXT")) name += ":" + type;
        }
        tables.push_back(name);
    }
    if (pipe != nullptr) pclose(pipe);
    return tables;
}

std::string names(const char* leading, const ParamSet& params) {
    std::string out = leading;
    for (Parameter p : params) out += std::string(" ") + parameterName(p);
    return out;
}

bool loggedRefusal(const LogCapture& log) {
    const std::string prefix = "the default value can't be updated, ";
    for (const LogCapture::Line& l : log.linesWithTag(kTag)) {
        if (l.priority == ANDROID_LOG_ERROR && l.message.rfind(prefix, 0) == 0 &&
            std::stoi(l.message.substr(prefix.size())) > 0) {
            return true;
        }
    }
    return false;
}

class DatabaseHelperTest : public ::testing::Test {
  protected:
    void SetUp() override { db.init(); }
    test::ScopedRoot root;
    DatabaseHelper db{"zan_sqlite3.db"};
    OutsideView view{root.databasePath()};
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
    EXPECT_EQ(schemaOf(root.databasePath()), expected);

    db.insertConfigurationValue("signature", "1");
    db.clear();
    EXPECT_TRUE(schemaOf(root.databasePath()).empty());
    db.init();
    EXPECT_EQ(db.queryConfigurationValue("signature"), "");
}

// Equal maps and the same dump, so ids, names, flags and types match too.
template <class Record>
void expectSame(const Record& read, const Record& written) {
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

    ASSERT_TRUE(db.queryTuning("spk", &t1) && db.queryTuning("it's", &t2));
    expectSame(t1, mono);
    expectSame(t2, stereo);
    ASSERT_TRUE(db.queryIeqValue("warm", "default", &readWarm));
    expectSame(readWarm, warm);
    ASSERT_TRUE(db.queryGeqValue("2", "custom", &readGeq));
    expectSame(readGeq, geq);
    EXPECT_FALSE(db.queryGeqValue("2", "default", &readGeq));
    ASSERT_TRUE(db.queryProfileValue("1", "default", &readProfile));
    expectSame(readProfile, profile);
    EXPECT_EQ(readProfile.getSelectedGeqPreset(), 3);
    ASSERT_TRUE(db.queryEndpointValue("1", "speaker", "default", &read1));
    ASSERT_TRUE(db.queryEndpointValue("1", "other", "default", &read2));
    expectSame(read1, speaker);
    expectSame(read2, other);
    EXPECT_EQ(view.column("SELECT virtual_bass_type FROM profile_endpoints"),
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

TEST_F(DatabaseHelperTest, FlagsReadBackFromTextOrDigits) {
    Tuning tuning("t", Endpoint::SPEAKER, true), read("", Endpoint::SPEAKER, false);
    db.insertValue(&tuning, "default");
    EXPECT_EQ(view.column("SELECT is_mono || is_readonly FROM tunings"), Strings{"truetrue"});
    db.execSQL("UPDATE tunings SET is_mono='0', is_readonly='1'");
    ASSERT_TRUE(db.queryTuning("t", &read));
    EXPECT_EQ(std::make_pair(read.isMono(), read.isReadonly()), std::make_pair(false, true));
    db.execSQL("UPDATE tunings SET is_mono='2', is_readonly='false'");
    ASSERT_TRUE(db.queryTuning("t", &read));
    EXPECT_EQ(std::make_pair(read.isMono(), read.isReadonly()), std::make_pair(true, false));

    Strings names;
    Profile profile(0, "Rock 'n' Roll", false);
    db.insertValue(&profile, "default", 0);
    db.queryProfileNames(names, "default");
    EXPECT_EQ(names, Strings{"Rock 'n' Roll"});
    db.insertConfigurationValue("usb", "x'); DROP TABLE tunings; --");
    EXPECT_EQ(db.queryConfigurationValue("usb"), "x'); DROP TABLE tunings; --");
    EXPECT_EQ(view.count("tunings"), 1);
}

TEST_F(DatabaseHelperTest, RowIdsAndConfigurationRules) {
    GeqPreset a(0), b(1);
    db.insertValue(&a, "default", 0);
    db.insertValue(&b, "default", -1);
    db.insertValue(&b, "default", 17);
    db.insertValue(&a, "custom", 0);
    EXPECT_EQ(view.column("SELECT _id FROM geq_presets"), (Strings{"1", "2", "17", "4"}));

    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    EXPECT_FALSE(db.queryAupStatus("State"));
    db.insertConfigurationValue("State", "false");
    db.insertConfigurationValue("Profile", "");
    EXPECT_EQ(view.column("SELECT _id || key FROM configuration"), (Strings{"1State", "2Profile"}));
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
    db.updateProfileValue(&profile, "default");
    EXPECT_TRUE(loggedRefusal(log));
    log.clear();
    db.updateProfileEndpointValue(&endpoint, "default");
    EXPECT_TRUE(loggedRefusal(log));
    log.clear();
    db.updateGeqValue(&geq, "default");
    EXPECT_TRUE(loggedRefusal(log));
    EXPECT_EQ(view.column("SELECT name FROM profiles"), (Strings{"Music", "Music"}));
    EXPECT_EQ(view.count("profile_endpoints", " WHERE selected_ieq_preset_type='warm'"), 2);
    EXPECT_EQ(view.count("geq_presets", " WHERE geq_gain IS NULL"), 2);

    log.clear();
    db.updateProfileValue(&profile, "custom");
    db.updateProfileEndpointValue(&endpoint, "custom");
    db.updateGeqValue(&geq, "custom");
    EXPECT_FALSE(loggedRefusal(log));
    EXPECT_EQ(view.column("SELECT custom_name || name FROM profiles ORDER BY _id"),
              (Strings{"defaultMusic", "customChanged"}));
    EXPECT_EQ(view.column("SELECT custom_name FROM profile_endpoints WHERE "
                          "selected_ieq_preset_type='off'"),
              Strings{"custom"});
    EXPECT_EQ(view.column("SELECT custom_name FROM geq_presets WHERE geq_gain='1,2,3'"),
              Strings{"custom"});
}

TEST_F(DatabaseHelperTest, FailuresAreLoggedAndChangeNothing) {
    LogCapture log;
    Profile profile(0, "Keep", true);
    EXPECT_FALSE(db.queryProfileValue("0", "default", &profile));
    EXPECT_EQ(profile.getName(), "Keep");
    Tuning tuning("x", Endpoint::SPEAKER, false);
    EXPECT_FALSE(db.queryTuning("x", &tuning));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Profile doesn't exist!"));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Tuning doesn't exist!"));
    db.execSQL("COMMIT");
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "failed to exec SQL: COMMIT"));
    db.execSQL("SELEKT 1");
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag, "failed to prepare SQL : SELEKT 1"));
    EXPECT_EQ(db.getRowCount("nowhere"), -1);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag,
                             "failed to prepare SQL: SELECT COUNT(*) FROM nowhere"));
    db.executeInsertCommand(TableType::DEVICE_TUNINGS, "oem", "id=-1\ndevice=d\nbroken\ntuning=t",
                            0);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "invalid string value"));
    EXPECT_EQ(view.column("SELECT device || '|' || port || '|' || tuning_id FROM device_tunings"),
              Strings{"d||t"});

    db.clearOemDeviceTunings();
    EXPECT_EQ(view.count("device_tunings"), 0);
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Delete existing device tuning with SQL [DELETE from device_tunings "
                             "WHERE custom_name = 'oem']"));
}

TEST_F(DatabaseHelperTest, TransactionsHoldTheWritesUntilCommit) {
    db.beginTransaction();
    db.insertConfigurationValue("signature", "1");
    EXPECT_EQ(view.run("SELECT * FROM configuration"), SQLITE_BUSY);  // exclusive
    db.commitTransaction();
    EXPECT_EQ(view.count("configuration"), 1);
    {
        DatabaseHelper second("zan_sqlite3.db");
        second.beginTransaction();
        second.insertConfigurationValue("version", "3.2.1");
    }  // closed without a commit: rolled back
    EXPECT_EQ(view.column("SELECT key FROM configuration"), Strings{"signature"});
}

TEST(DatabaseHelperClosedTest, EveryOperationIsALoggedNoOp) {
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
    EXPECT_TRUE(std::filesystem::is_directory(root.databasePath()));
}

}  // namespace
}  // namespace vessa
