#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <climits>
#include <filesystem>
#include <thread>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/DatabaseHelper.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

namespace fs = std::filesystem;
using test::Strings;
using Health = DatabaseHelper::Health;
using namespace ::testing;
constexpr const char* kTag = "DatabaseHelper";

// "table col col ..." per table, its first six columns; a column whose type is not INTEGER
// for "_id" and TEXT otherwise carries ":TYPE". The parameter columns that follow are in
// the records' dump order, or the positional inserts of the round trip would fail.
Strings schemaOf(const test::ScopedRoot& root) {
    return root.sql(
            "SELECT m.name || group_concat(' ' || p.name || iif(p.type = iif(p.name = '_id', "
            "'INTEGER', 'TEXT'), '', ':' || p.type), '') FROM sqlite_master m, "
            "pragma_table_info(m.name) p WHERE p.cid < 6 GROUP BY m.rowid ORDER BY m.rowid");
}

// Found, with equal maps and the same dump, so ids, names, flags and types match too.
template <class Record>
void expectRead(bool found, const Record& read, const Record& written) {
    ASSERT_TRUE(found) << written.toString();
    EXPECT_TRUE(read.equals(written));
    EXPECT_EQ(read.toString(), written.toString());
}

Strings messages(const LogCapture& log) {
    Strings out;
    for (const auto& line : log.linesWithTag(kTag)) out.push_back(line.message);
    return out;
}

// The smallest settings database a start accepts: one profile with its three endpoints
// and its GEQ preset, each as a factory row and a user row.
void fillSmallest(DatabaseHelper& db) {
    db.init();
    Profile profile(0, "Music", false);
    profile.set(Parameter::REVERB_SUPPRESSION_AMOUNT, {3});
    GeqPreset geq(0);
    for (const char* origin : {"default", "custom"}) {
        db.insertValue(&profile, origin, 1);
        db.insertValue(&geq, origin, 1);
        for (int e = 0; e < kNumEndpoints; ++e) {
            ProfileEndpoint endpoint(0, static_cast<Endpoint>(e), PresetType::WARM);
            db.insertValue(&endpoint, origin, e + 1);
        }
    }
    db.insertConfigurationValue("signature", "1");
    db.insertConfigurationValue("version", "3.3.0");
    db.insertConfigurationValue("State", "true");
}

class AnOpenDatabase : public Test {
  protected:
    void SetUp() override { db.init(); }
    test::ScopedRoot root;
    DatabaseHelper db{Provider::kDatabaseName};
};

TEST_F(AnOpenDatabase, CreatesTheSevenTablesUnderTheRootAndClearDropsThem) {
    ASSERT_EQ(db.getPath(), root.databasePath());
    const Strings expected = {
            "configuration _id key value",
            "ieq_presets _id custom_name preset_type ieq_frequency ieq_target",
            "geq_presets _id custom_name profile_id geq_frequency geq_gain",
            "profiles _id custom_name profile_id name is_mobility selected_geq_preset_id",
            "profile_endpoints _id custom_name profile_id endpoint selected_ieq_preset_type "
            "bass_enhancer_enable",
            "tunings _id custom_name name endpoint is_mono is_readonly",
            "device_tunings _id custom_name device port tuning_id"};
    EXPECT_EQ(schemaOf(root), expected);
    db.clear();
    EXPECT_TRUE(schemaOf(root).empty());
}

// The plain round trip of every record kind is the provider tests'; these are the edges.
TEST_F(AnOpenDatabase, ReadsQuotesExtremeAndEmptyValuesAndHeaderFieldsBackAsWritten) {
    LogCapture log;
    Tuning stereo(9, "it's", Endpoint::HEADPHONE, false, true),
            readTuning("", Endpoint::OTHER, true);
    GeqPreset geq(1, 2), readGeq(0);
    Profile profile(1LL, 1, "Rock 'n' Roll=1", true), readProfile(1, "", false);
    ProfileEndpoint other(2, 1, Endpoint::OTHER, PresetType::DETAILED);
    ProfileEndpoint readOther(1, Endpoint::SPEAKER, PresetType::OFF);
    int seed = 0;
    for (ParameterValues* r :
         std::initializer_list<ParameterValues*>{&stereo, &geq, &profile, &other}) {
        test::fillAll(*r, ++seed);
    }
    profile.setSelectedGeqPreset(3);
    other.set(Parameter::VIRTUAL_BASS_TYPE, {2});  // held although not validated: kept
    other.set(Parameter::IEQ_AMOUNT, {});
    other.set(Parameter::PEAK_VALUE, {INT_MIN, 0, INT_MAX});
    db.insertValue(&stereo, "oem");
    db.insertValue(&geq, "custom", geq.getId());
    db.insertValue(&profile, "default", profile.getId());
    db.insertValue(&other, "default", other.getId());

    expectRead(db.queryTuning("it's", &readTuning), readTuning, stereo);
    expectRead(db.queryGeqValue("2", "custom", &readGeq), readGeq, geq);
    EXPECT_FALSE(db.queryGeqValue("2", "default", &readGeq));
    expectRead(db.queryProfileValue("1", "default", &readProfile), readProfile, profile);
    EXPECT_EQ(readProfile.getSelectedGeqPreset(), 3);
    expectRead(db.queryEndpointValue("1", "other", "default", &readOther), readOther, other);
    EXPECT_EQ(root.sql("SELECT virtual_bass_type FROM profile_endpoints"), Strings{"2"});
    // Only the expected miss is logged; not even a stray empty dump line.
    EXPECT_EQ(messages(log), Strings{"GeqPreset doesn't exist!"});
}

TEST_F(AnOpenDatabase, ReadsTheSwitchAsOffOnlyWhenItIsMissingEmptyOrFalse) {
    EXPECT_FALSE(db.queryAupStatus("State"));
    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    db.insertConfigurationValue("State", "");
    db.insertConfigurationValue("Profile", "");
    EXPECT_EQ(root.sql("SELECT _id || key FROM configuration"), (Strings{"1State", "2Profile"}));
    EXPECT_EQ(db.querySelectedProfile("Profile"), "-1");
    // The update calls differ by name only: each writes the key it is given.
    for (auto [text, on] : {std::pair{"", false}, {"false", false}, {"0", true}, {"x'y", true}}) {
        db.updateSelectedProfile("State", text);
        EXPECT_EQ(on, db.queryAupStatus("State")) << text;
    }
    db.updateTuningDevice("Profile", "3");
    EXPECT_EQ(db.querySelectedProfile("Profile"), "3");
    db.insertConfigurationValue("usb", "x'); DROP TABLE tunings; --");  // a quote stays data
    EXPECT_EQ(db.queryConfigurationValue("usb"), "x'); DROP TABLE tunings; --");
}

TEST_F(AnOpenDatabase, LogsABrokenDumpLineAndClearsOemDeviceTuningsOnly) {
    LogCapture log;
    db.executeInsertCommand(TableType::DEVICE_TUNINGS, "oem", "id=-1\ndevice=d\nbroken\ntuning=t",
                            0);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "invalid string value"));
    DeviceTuning factory("default_usb", "usb", "t");
    db.insertValue(&factory, "default");
    EXPECT_EQ(root.sql("SELECT device || '|' || port || '|' || tuning_id FROM device_tunings"),
              (Strings{"d||t", "default_usb|usb|t"}));
    db.clearOemDeviceTunings();
    EXPECT_EQ(root.sql("SELECT device FROM device_tunings"), Strings{"default_usb"});
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Delete existing device tuning with SQL [DELETE from device_tunings "
                             "WHERE custom_name = 'oem']"));
}

TEST(AnUnopenableDatabase, MakesEveryOperationALoggedNoOpAndLeavesAProviderWithoutProfiles) {
    test::ScopedRoot root;
    fs::create_directories(root.databasePath());  // a directory where the file should be
    LogCapture log;
    DatabaseHelper db(Provider::kDatabaseName);
    EXPECT_FALSE(db.isOpen());
    db.init();
    db.beginTransaction();
    Profile profile(0, "P", false);
    db.insertValue(&profile, "default", 0);
    db.updateProfileValue(&profile, "custom");
    EXPECT_FALSE(db.queryProfileValue("0", "default", &profile));
    db.insertConfigurationValue("State", "true");
    db.updateAupStatus("State", true);
    EXPECT_FALSE(db.queryAupStatus("State"));
    db.clear();
    EXPECT_FALSE(db.commitTransaction());  // a save without a connection is not reported done
    for (const char* message :
         {"the db is not open...", "the database is not connected", "db is not connected"}) {
        EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, message)) << message;
    }
    Provider provider;
    EXPECT_EQ(provider.init(), -19);
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "VsaDatabaseProvider",
                             "init(): No profiles found from the database"));
    EXPECT_EQ(provider.loadProfile(0), nullptr);
    EXPECT_EQ(std::make_pair(provider.getSelectedProfile(), provider.isAupOn()),
              std::make_pair(-1, false));
    EXPECT_TRUE(fs::is_directory(root.databasePath()));
}

class AFilledDatabase : public AnOpenDatabase {
  protected:
    void SetUp() override {
        fillSmallest(db);
        changed.set(Parameter::REVERB_SUPPRESSION_AMOUNT, {7});
    }
    bool saveChanged() {
        db.beginTransaction();
        db.updateProfileValue(&changed, "custom");
        return db.commitTransaction();
    }
    Profile changed{0, "Music", false};
};

// A save that fails halfway: the DELETE of the user row works, its INSERT does not.
TEST_F(AFilledDatabase, RollsTheWholeSaveBackWhenOneStatementFailsAndSavesOnceItIsGone) {
    db.execSQL(
            "CREATE TRIGGER full BEFORE INSERT ON profiles WHEN NEW.custom_name = 'custom' "
            "BEGIN SELECT RAISE(FAIL, 'no room'); END");
    LogCapture log;
    db.beginTransaction();
    db.updateAupStatus("State", false);
    EXPECT_FALSE(saveChanged());         // nested: only the outer pair reaches the database
    db.updateAupStatus("State", false);  // skipped: the transaction failed already
    EXPECT_FALSE(db.commitTransaction());
    EXPECT_EQ(root.sql("SELECT custom_name, reverb_suppression_amount FROM profiles"),
              (Strings{"default|3", "custom|3"}));
    EXPECT_TRUE(db.queryAupStatus("State"));
    EXPECT_EQ("no room", db.getSaveError());
    // The failed statement and the rollback; the skipped statement is not even tried.
    EXPECT_THAT(messages(log),
                ElementsAre(StartsWith("failed to exec SQL: INSERT INTO profiles VALUES(2,"),
                            "Settings not saved to " + root.databasePath() +
                                    ": no room; the previous copy stays"));
    // The error is forgotten with the next save that works.
    db.execSQL("DROP TRIGGER full");
    EXPECT_TRUE(saveChanged());
    EXPECT_EQ("", db.getSaveError());
    EXPECT_EQ(root.sql("SELECT reverb_suppression_amount FROM profiles"), (Strings{"3", "7"}));
}

TEST_F(AFilledDatabase, RefusesToUpdateAFactoryRowAndSaysSo) {
    ProfileEndpoint endpoint(0, Endpoint::HEADPHONE, PresetType::OFF);
    GeqPreset geq(0);
    geq.set(Parameter::GEQ_GAIN, {1, 2, 3});
    LogCapture log;
    for (const char* origin : {"default", "custom"}) {
        db.updateProfileValue(&changed, origin);
        db.updateProfileEndpointValue(&endpoint, origin);
        db.updateGeqValue(&geq, origin);
    }
    // One refusal per update path, none for the user copies.
    const auto refusal =
            AllOf(Field(&LogCapture::Line::priority, ANDROID_LOG_ERROR),
                  Field(&LogCapture::Line::message,
                        MatchesRegex("the default value can't be updated, [1-9][0-9]*")));
    EXPECT_THAT(log.linesWithTag(kTag), ElementsAre(refusal, refusal, refusal));
    EXPECT_EQ(root.sql("SELECT custom_name || reverb_suppression_amount FROM profiles UNION ALL "
                       "SELECT selected_ieq_preset_type FROM profile_endpoints WHERE "
                       "endpoint='headphone' UNION ALL SELECT ifnull(geq_gain, '') FROM "
                       "geq_presets"),
              (Strings{"default3", "custom7", "warm", "off", "", "1,2,3"}));
}

TEST_F(AFilledDatabase, WaitsForAnotherConnectionsLockInsteadOfGivingUp) {
    sqlite3* other = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(root.databasePath().c_str(), &other));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr));
    std::thread release([other] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
    });
    db.beginTransaction();
    db.updateAupStatus("State", false);
    EXPECT_TRUE(db.commitTransaction()) << db.getSaveError();
    release.join();
    sqlite3_close(other);
    EXPECT_FALSE(db.queryAupStatus("State"));
}

TEST_F(AFilledDatabase, RestoresAMissingUserRowFromItsFactoryRowOnce) {
    db.execSQL("DELETE FROM profile_endpoints WHERE custom_name='custom' AND endpoint='other'");
    db.execSQL("DELETE FROM geq_presets WHERE custom_name='custom'");
    std::string reason;
    ASSERT_EQ(Health::kUsable, db.checkHealth(&reason)) << reason;
    LogCapture log;
    EXPECT_EQ(2, db.restoreMissingCustomRows());
    EXPECT_EQ(0, db.restoreMissingCustomRows());
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag,
                             "Restored 1 missing user rows of geq_presets from their factory "
                             "rows"));
    EXPECT_EQ(root.sql("SELECT _id, profile_id, endpoint, selected_ieq_preset_type FROM "
                       "profile_endpoints WHERE custom_name='custom' ORDER BY _id"),
              (Strings{"1|0|speaker|warm", "2|0|headphone|warm", "3|0|other|warm"}));
}

// A new file is filled by the start. The damage a start meets (not a database, cut short,
// a directory, tables, rows or settings missing) is judged in the start's recovery tests,
// which read the reason in its log line; a filled file is usable above even with user rows
// missing.
TEST(ASettingsFile, IsUsableWithNoTableAtAll) {
    test::ScopedRoot root;
    std::string reason;
    EXPECT_EQ(Health::kUsable, DatabaseHelper(Provider::kDatabaseName).checkHealth(&reason));
    EXPECT_EQ("", reason);
}

}  // namespace
}  // namespace vessa
