#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <stdexcept>

#include "SampleRoot.h"
#include "effect/AupController.h"
#include "effect/AupParameter.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

namespace fs = std::filesystem;
using Entries = std::vector<AupParamCache>;
using Values = std::vector<int>;
using namespace ::testing;
constexpr const char* kTag = "SxContextManager";
constexpr const char* kProviderTag = "VsaDatabaseProvider";
constexpr const char* kUpdated = "Tuning XML file has been updated";

AupParamStore& store = AupParamStore::getInstance();

// The committed values of one code of one device; {-999} when it was never sent.
std::vector<int32_t> committed(uint32_t device, const std::string& code) {
    for (const AupParamCache& e : store.storedParams(true)) {
        if (e.getDevice() == device && unpackParameterCode(e.getParameterId()) == code) {
            return e.getValues();
        }
    }
    return {-999};
}

// One process life: the manager, and an effect's controller observing its context.
struct Life {
    Life() : effect(0, android::String16("test")), controller(2, effect) {
        if (context == nullptr) throw std::runtime_error("the start left no context");
        context->registerObserver(&controller);
    }
    ~Life() { context->unregisterObserver(&controller); }
    SxContextManager manager;
    SxContext* context = manager.getSxContext();
    AupEffect effect;
    AupController controller;
};

// The sample default tuning file before the first start, and an empty effect store.
class AFreshRoot : public Test {
  protected:
    AFreshRoot() { store.reset(); }
    test::SampleRoot root;
    LogCapture log;
};

// The whole state goes out once, for every device the controller drives.
TEST_F(AFreshRoot, StoresTheDefaultFileOnFirstStartAndSendsTheWholeStateInOneCommit) {
    Life life;
    EXPECT_TRUE(log.contains(kTag, kUpdated));
    EXPECT_TRUE(log.contains(kTag, "OEM Tuning XML doesn't exist!"));
    EXPECT_EQ(5, life.context->getNumOfProfiles());
    EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
    EXPECT_TRUE(life.context->getAupOn());
    EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
    EXPECT_EQ(1u, store.getCommitCount());
    std::set<uint32_t> devices;
    for (const AupParamCache& e : store.storedParams(true)) devices.insert(e.getDevice());
    EXPECT_THAT(devices, IsSupersetOf(AupController::kControlledDevices));
    EXPECT_EQ(life.context->getProfileEndpoint(0, Endpoint::SPEAKER)
                      ->valuesOf(Parameter::DIALOG_ENHANCER_ENABLE),
              committed(kDeviceOutSpeaker, "DEON"));
    EXPECT_EQ(life.context->getProfile(0)->valuesOf(Parameter::VOLUME_MODELER_ENABLE),
              committed(kDeviceOutDefault, "DVME"));
}

// That the saved choices are kept while the file is unchanged is followed through the
// daemon's restart in the end-to-end tests.
TEST_F(AFreshRoot, StartsFromTheDatabaseAloneWhileTheFileIsUnchangedAndRefillsItOnAChange) {
    Entries first;
    {
        Life life;
        first = store.storedParams(true);
    }
    store.reset();
    log.clear();
    {
        Life life;
        EXPECT_FALSE(log.contains(kTag, kUpdated));
        EXPECT_EQ(first, store.storedParams(true));
        life.context->setSelectedProfile(1);
        ASSERT_TRUE(life.context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
        life.context->save();
    }
    root.touchDefault(10);
    Life life;  // the saved choices are dropped with the refill
    EXPECT_TRUE(log.contains(kTag, kUpdated));
    EXPECT_EQ(0, life.context->getSelectedProfile()->getProfileId());
    EXPECT_EQ("default_bluetooth", life.context->getSelectedTuningDevice(Port::BLUETOOTH));
}

TEST(AnEmptyRoot, StartsNoContext) {
    test::TempDir empty;
    FileSystemRoot::set(empty.path());
    LogCapture log;
    SxContextManager manager;
    EXPECT_EQ(nullptr, manager.getSxContext());
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag, "Default XML Tuning file doesn't exist!!"));
    EXPECT_EQ(-19, manager.loadOemTuning());
    FileSystemRoot::set("/");
}

class AStartedLife : public AFreshRoot {
  protected:
    Life life;
    SxContext* context = life.context;
};

// A tuning change goes to that port's device only.
TEST_F(AStartedLife, SendsOnlyWhatAProfileOrTuningChangeAltersDeviceByDeviceProfileWideLast) {
    const size_t whole = store.storedParams(true).size();
    context->setSelectedProfile(1);
    EXPECT_EQ(2u, store.getCommitCount());
    const Entries batch = store.lastCommit();
    ASSERT_FALSE(batch.empty());
    EXPECT_LT(batch.size(), whole / 2);
    EXPECT_EQ(kDeviceOutDefault, batch.back().getDevice());
    std::vector<uint32_t> devices;
    for (const AupParamCache& entry : batch) {
        devices.push_back(entry.getDevice());
        // Tuning-only codes do not move when the profile changes.
        EXPECT_THAT((std::vector<std::string>{"AOBS", "ARBS", "VBSF", "DFSA", "DVMC", "AOON"}),
                    Not(Contains(unpackParameterCode(entry.getParameterId()))));
    }
    EXPECT_TRUE(std::is_sorted(devices.begin(), devices.end()));
    EXPECT_EQ(context->getProfileEndpoint(1, Endpoint::HEADPHONE)
                      ->valuesOf(Parameter::VOLUME_LEVELER_AMOUNT),
              committed(kDeviceOutBluetoothA2dp, "DVLA"));
    ASSERT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_earbuds_b", false));
    std::set<uint32_t> tuned;
    for (const AupParamCache& entry : store.lastCommit()) tuned.insert(entry.getDevice());
    EXPECT_EQ(std::set<uint32_t>{kDeviceOutBluetoothA2dp}, tuned);
}

// A file of another format version is refused whole; one that fits adds its devices but
// those the default file has.
TEST_F(AStartedLife, AddsTheOemDevicesExceptThoseTheDefaultFileHasFromAFileOfItsVersion) {
    std::string other = root.sampleOem();
    const size_t at = other.find("major=\"3\" minor=\"3\"");
    ASSERT_NE(std::string::npos, at) << "sample OEM file format version changed";
    root.installOem(other.replace(at, 19, "major=\"3\" minor=\"2\""));
    EXPECT_EQ(-22, life.manager.loadOemTuning());
    EXPECT_TRUE(log.contains(kTag,
                             "OEM tuning format V=3.2.0 is not consistent with current V=3.3.0, "
                             "abort loading OEM tuning XML."));
    EXPECT_FALSE(context->setSelectedTuning(Port::BLUETOOTH, "bt_neckband_x1", false));
    // The OEM tuning also claims a device of the default file.
    std::string colliding = root.sampleOem();
    const std::string neckband = "<device_id id=\"bt_neckband_x1\" endpoint_port=\"bluetooth\"/>";
    const size_t device = colliding.find(neckband);
    ASSERT_NE(std::string::npos, device) << "sample OEM file changed";
    colliding.insert(device + neckband.size(),
                     "\n        <device_id id=\"bt_earbuds_a\" endpoint_port=\"bluetooth\"/>");
    root.installOem(colliding);
    EXPECT_EQ(0, life.manager.loadOemTuning());
    const std::vector<std::string> devices = context->getAvailableTuningDevice(Port::BLUETOOTH);
    EXPECT_EQ(1, std::count(devices.begin(), devices.end(), "bt_neckband_x1"));
    EXPECT_EQ(1, std::count(devices.begin(), devices.end(), "bt_earbuds_a"));
    EXPECT_TRUE(log.contains(kTag,
                             "Found OEM device ID [bt_earbuds_a] already exists in the default "
                             "tuning XML, drop it."));
    EXPECT_TRUE(context->setSelectedTuning(Port::BLUETOOTH, "bt_neckband_x1", false));
}

// A start that finds the settings database damaged or locked.

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
            {"ALTER TABLE device_tunings ADD COLUMN extra TEXT", nullptr,
             "table device_tunings has other columns"},
            {"DROP TABLE ieq_presets", nullptr, "table ieq_presets is missing"},
            {"DELETE FROM profiles", nullptr, "it holds no profile"},
            {"DELETE FROM configuration WHERE key='signature'", nullptr,
             "its configuration is incomplete"},
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
        c.sql ? void(DatabaseHelper(Provider::kDatabaseName).execSQL(c.sql)) : c.damage();
        const bool readable = c.sql != nullptr;
        LogCapture log;
        SxContextManager manager;
        SxContext* context = manager.getSxContext();
        ASSERT_NE(nullptr, context);
        EXPECT_EQ(5, context->getNumOfProfiles());
        const std::vector<std::string> aside = takeAside(path);
        ASSERT_EQ(1u, aside.size());
        EXPECT_TRUE(
                log.contains(kProviderTag, "Settings database " + path + " cannot be used (" +
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
    EXPECT_EQ(1u, log.count(kProviderTag,
                            path + " is locked (database is locked); trying again later"));
}

}  // namespace
}  // namespace vessa
