// A start that finds the settings database damaged or locked.

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "SampleRoot.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

namespace fs = std::filesystem;
using Values = std::vector<int>;
constexpr const char* kTag = "VsaDatabaseProvider";

void exec(const std::string& path, const char* sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

// The files a start set aside, removed as they are counted.
std::vector<std::string> takeAside(const std::string& database) {
    std::vector<std::string> aside;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(database).parent_path())) {
        if (entry.path().filename().string().rfind("zan_sqlite3.db.damaged-", 0) == 0) {
            aside.push_back(entry.path().string());
            fs::remove_all(entry.path());
        }
    }
    return aside;
}

// The sample root after a life that changed the user's settings and saved them.
class ASavedDatabase : public ::testing::Test {
  protected:
    void SetUp() override {
        SxContextManager manager;
        SxContext* context = manager.getSxContext();
        ASSERT_NE(nullptr, context);
        Values amount = {12};
        context->setProfileParameter(2, Endpoint::SPEAKER, Parameter::DIALOG_ENHANCER_AMOUNT,
                                     amount);
        context->setAupOn(false);
        context->setSelectedProfile(3);
        ASSERT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
        context->save();
    }

    test::SampleRoot root;
    const std::string path = root.dir.path() + "/data/vendor/vessa/zan_sqlite3.db";
};

TEST_F(ASavedDatabase, IsSetAsideWhenDamagedAndRebuiltWithTheSettingsItStillYields) {
    fs::copy_file(path, path + ".good");
    const struct {
        const char* sql;  // a damage the user's settings can still be read through
        std::function<void()> damage;
        const char* reason;
    } cases[] = {
            {"DELETE FROM profile_endpoints WHERE custom_name='default' AND _id=1", nullptr,
             "a user row of profile_endpoints has no factory row"},
            {"DROP TABLE device_tunings; CREATE TABLE device_tunings (_id INTEGER)", nullptr,
             "table device_tunings has other columns"},
            {nullptr, [&] { fs::resize_file(path, fs::file_size(path) / 2); },
             "database disk image is malformed"},
            {nullptr, [&] { std::ofstream(path) << std::string(9000, '#'); },
             "file is not a database"},
            {nullptr, [&] { fs::remove(path), fs::create_directory(path); }, "it is a directory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        fs::remove_all(path);
        fs::copy_file(path + ".good", path);
        c.sql ? exec(path, c.sql) : c.damage();
        const bool readable = c.sql != nullptr;
        LogCapture log;
        SxContextManager manager;
        SxContext* context = manager.getSxContext();
        ASSERT_NE(nullptr, context);
        EXPECT_EQ(5, context->getNumOfProfiles());
        const std::vector<std::string> aside = takeAside(path);
        ASSERT_EQ(1u, aside.size());
        EXPECT_TRUE(log.contains(kTag, "Settings database " + path + " cannot be used (" +
                                               c.reason + "): moved aside as " + aside[0] +
                                               ", rebuilding it from the tuning files with the "
                                               "user's settings that can be read"));
        // What could be read is carried over; the rest starts from the tuning file.
        EXPECT_EQ(readable ? 3 : 0, context->getSelectedProfile()->getProfileId());
        EXPECT_NE(readable, context->getAupOn());
        EXPECT_EQ(readable,
                  Values{12} == context->getProfileParameter(2, Endpoint::SPEAKER,
                                                             Parameter::DIALOG_ENHANCER_AMOUNT));
        EXPECT_EQ(readable ? "bt_earbuds_b" : "default_bluetooth",
                  context->getSelectedTuningDevice(Port::BLUETOOTH));
    }
}

TEST_F(ASavedDatabase, IsWaitedForWhenLockedAtStartAndTriedAgainAtTheNextStart) {
    sqlite3* holder = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &holder));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr));
    LogCapture log;
    SxContextManager manager;  // waits out the busy timeout
    EXPECT_EQ(nullptr, manager.getSxContext());
    sqlite3_exec(holder, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(holder);
    SxContext* context = manager.startContext();
    ASSERT_NE(nullptr, context);
    EXPECT_EQ(3, context->getSelectedProfile()->getProfileId());  // neither set aside nor refilled
    EXPECT_EQ(1u, log.count(kTag, path + " is locked (database is locked); trying again later"));
}

}  // namespace
}  // namespace vessa
