// What the database layer does when things go wrong: a statement that fails in the
// middle of a save, another connection holding the lock, and a file that is not the
// settings database it should be.

#include <android/log.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <thread>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/DatabaseHelper.h"

namespace vessa {
namespace {

using test::Strings;
using Health = DatabaseHelper::Health;
constexpr const char* kTag = "DatabaseHelper";

class DatabaseFaultTest : public ::testing::Test {
  protected:
    // The smallest settings database a start accepts: one profile with its three
    // endpoints and its GEQ preset, each as a factory row and a user row.
    void fill(DatabaseHelper& db) {
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

    test::ScopedRoot root;
};

TEST_F(DatabaseFaultTest, AFailedStatementRollsTheWholeSaveBack) {
    DatabaseHelper db("zan_sqlite3.db");
    fill(db);
    db.execSQL(
            "CREATE TRIGGER full BEFORE INSERT ON profiles WHEN NEW.custom_name = 'custom' "
            "BEGIN SELECT RAISE(FAIL, 'no room'); END");
    Profile changed(0, "Music", false);
    changed.set(Parameter::REVERB_SUPPRESSION_AMOUNT, {7});
    LogCapture log;
    db.beginTransaction();
    db.updateAupStatus("State", false);
    db.beginTransaction();                      // nested: only the outer pair reaches the database
    db.updateProfileValue(&changed, "custom");  // the DELETE works, the INSERT fails
    EXPECT_FALSE(db.commitTransaction());
    db.updateAupStatus("State", false);  // skipped: the transaction failed already
    EXPECT_FALSE(db.commitTransaction());
    EXPECT_EQ(root.sql("SELECT custom_name, reverb_suppression_amount FROM profiles"),
              (Strings{"default|3", "custom|3"}));
    EXPECT_TRUE(db.queryAupStatus("State"));
    EXPECT_EQ("no room", db.getSaveError());
    EXPECT_TRUE(log.contains(
            ANDROID_LOG_ERROR, kTag,
            "Settings not saved to " + root.databasePath() + ": no room; the previous copy stays"));

    db.execSQL("DROP TRIGGER full");
    db.beginTransaction();
    db.updateProfileValue(&changed, "custom");
    EXPECT_TRUE(db.commitTransaction());
    EXPECT_EQ("", db.getSaveError());
    EXPECT_EQ(root.sql("SELECT reverb_suppression_amount FROM profiles WHERE "
                       "custom_name='custom'"),
              Strings{"7"});
}

TEST_F(DatabaseFaultTest, ABusyDatabaseIsWaitedForNotGivenUpOn) {
    DatabaseHelper db("zan_sqlite3.db");
    fill(db);
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

TEST_F(DatabaseFaultTest, TheStartCheckTellsAUsableFileFromADamagedOne) {
    using Damage = std::function<void(const std::string& path)>;
    auto sql = [](const char* statements) {
        return [statements](const std::string& path) {
            DatabaseHelper db(std::filesystem::path(path).filename());
            for (const char* s = statements; *s != '\0'; s += strlen(s) + 1) db.execSQL(s);
        };
    };
    auto bytes = [](std::string text) {
        return [text](const std::string& path) { std::ofstream(path, std::ios::binary) << text; };
    };
    struct Case {
        const char* name;
        bool filled;
        Damage damage;
        Health health;
        const char* reason;
    };
    const std::vector<Case> cases = {
            {"new", false, nullptr, Health::kUsable, ""},
            {"empty file", false, bytes(""), Health::kUsable, ""},
            {"filled", true, nullptr, Health::kUsable, ""},
            {"random bytes", false, bytes(std::string(8192, '\x5a')), Health::kDamaged,
             "file is not a database"},
            {"cut in half", true,
             [](const std::string& path) {
                 std::filesystem::resize_file(path, std::filesystem::file_size(path) / 2);
             },
             Health::kDamaged, "database disk image is malformed"},
            {"a directory", false,
             [](const std::string& p) { std::filesystem::create_directory(p); }, Health::kDamaged,
             "it is a directory"},
            {"unrelated schema", false, sql("CREATE TABLE notes (text TEXT)\0"), Health::kDamaged,
             "table configuration is missing"},
            {"one column", true, sql("DROP TABLE profiles\0CREATE TABLE profiles (_id INTEGER)\0"),
             Health::kDamaged, "table profiles has other columns"},
            {"no factory row", true,
             sql("DELETE FROM profile_endpoints WHERE custom_name='default' AND _id=2\0"),
             Health::kDamaged, "a user row of profile_endpoints has no factory row"},
            {"no profile", true, sql("DELETE FROM profiles\0"), Health::kDamaged,
             "it holds no profile"},
            {"no signature", true, sql("DELETE FROM configuration WHERE key='signature'\0"),
             Health::kDamaged, "its configuration is incomplete"},
    };
    for (const Case& c : cases) {
        const std::string path = root.databasePath();
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        if (c.filled) {
            DatabaseHelper db("zan_sqlite3.db");
            fill(db);
        }
        if (c.damage) c.damage(path);
        DatabaseHelper db("zan_sqlite3.db");
        std::string reason;
        EXPECT_EQ(c.health, db.checkHealth(&reason)) << c.name << ": " << reason;
        EXPECT_EQ(c.reason, reason) << c.name;
    }
}

TEST_F(DatabaseFaultTest, AMissingUserRowComesBackFromItsFactoryRow) {
    DatabaseHelper db("zan_sqlite3.db");
    fill(db);
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

}  // namespace
}  // namespace vessa
