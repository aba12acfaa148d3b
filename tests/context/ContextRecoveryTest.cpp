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
using test::SampleRoot;

const std::string kDatabase = "/data/vendor/vessa/zan_sqlite3.db";

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

TEST(ContextRecoveryTest, ADamagedDatabaseIsSetAsideAndRebuiltWithWhatCanBeRead) {
    SampleRoot root;
    const std::string path = root.dir.path() + kDatabase;
    {
        SxContextManager manager;
        SxContext* context = manager.getSxContext();
        ASSERT_NE(nullptr, context);
        std::vector<int> amount = {12};
        context->setProfileParameter(2, Endpoint::SPEAKER, Parameter::DIALOG_ENHANCER_AMOUNT,
                                     amount);
        context->setAupOn(false);
        context->setSelectedProfile(3);
        ASSERT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
        context->save();
    }
    fs::copy_file(path, path + ".good");
    using Damage = std::function<void()>;
    const struct {
        const char* name;
        Damage damage;
        bool readable;
    } cases[] = {
            {"a factory row missing",
             [&] {
                 exec(path, "DELETE FROM profile_endpoints WHERE custom_name='default' AND _id=1");
             },
             true},
            {"a table of one column",
             [&] {
                 exec(path, "DROP TABLE device_tunings; CREATE TABLE device_tunings (_id INTEGER)");
             },
             true},
            {"cut in half", [&] { fs::resize_file(path, fs::file_size(path) / 2); }, false},
            {"random bytes", [&] { std::ofstream(path) << std::string(9000, '#'); }, false},
            {"a directory", [&] { fs::remove(path), fs::create_directory(path); }, false},
    };
    for (const auto& c : cases) {
        fs::remove_all(path);
        fs::copy_file(path + ".good", path);
        c.damage();
        LogCapture log;
        SxContextManager manager;
        SxContext* context = manager.getSxContext();
        ASSERT_NE(nullptr, context) << c.name;
        EXPECT_EQ(5, context->getNumOfProfiles()) << c.name;
        std::vector<std::string> aside = takeAside(path);
        ASSERT_EQ(1u, aside.size()) << c.name;
        bool named = false;
        for (const auto& line : log.linesWithTag("VsaDatabaseProvider")) {
            named |= line.message.find(path + " cannot be used") != std::string::npos &&
                     line.message.find("moved aside as " + aside[0]) != std::string::npos;
        }
        EXPECT_TRUE(named) << c.name;
        if (!c.readable) continue;
        EXPECT_FALSE(context->getAupOn()) << c.name;
        EXPECT_EQ(3, context->getSelectedProfile()->getProfileId()) << c.name;
        EXPECT_EQ(std::vector<int>{12},
                  context->getProfileParameter(2, Endpoint::SPEAKER,
                                               Parameter::DIALOG_ENHANCER_AMOUNT))
                << c.name;
        EXPECT_EQ("bt_earbuds_b", context->getSelectedTuningDevice(Port::BLUETOOTH)) << c.name;
    }
}

TEST(ContextRecoveryTest, ALockHeldAtStartIsWaitedForAndTheNextStartTriesAgain) {
    SampleRoot root;
    { SxContextManager first; }
    sqlite3* holder = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open((root.dir.path() + kDatabase).c_str(), &holder));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(holder, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr));
    LogCapture log;
    SxContextManager manager;  // waits out the busy timeout
    EXPECT_EQ(nullptr, manager.getSxContext());
    sqlite3_exec(holder, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(holder);
    SxContext* context = manager.startContext();
    ASSERT_NE(nullptr, context);
    EXPECT_EQ(5, context->getNumOfProfiles());
    EXPECT_EQ(1u, log.count("VsaDatabaseProvider",
                            root.dir.path() + kDatabase +
                                    " is locked (database is locked); trying again later"));
}

}  // namespace
}  // namespace vessa
