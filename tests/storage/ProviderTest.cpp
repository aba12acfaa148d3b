#include <android/log.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/DatabaseHelper.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

using test::Strings;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
constexpr const char* kTag = "VsaDatabaseProvider";
const char* const kTuningNames[] = {"spk", "hp", "other"};  // by endpoint
const Port kPorts[] = {Port::INTERNAL_SPEAKER, Port::HDMI,      Port::MIRACAST,
                       Port::HEADPHONE,        Port::BLUETOOTH, Port::USB};

// A default tuning stored as the loader stores it: 3 profiles x 3 endpoints, 4 IEQ and
// 3 GEQ presets, one tuning per endpoint kind, a default device per port and "sony".
class AStoredDefaultTuning : public ::testing::Test {
  protected:
    void SetUp() override {
        provider.beginTransaction();
        provider.initDatabase();
        int seed = 0;
        auto add = [&seed](auto& records, auto... args) {
            records.emplace_back(args...);
            test::fillAll(records.back(), ++seed);
            return &records.back();
        };
        for (int t = 0; t < 4; ++t) provider.create(add(ieq, PresetType(t)));
        for (int id = 0; id < 3; ++id) {
            provider.create(add(geq, id));
            provider.create(add(profiles, id, "P" + std::to_string(id), id == 2));
            for (int e = 0; e < 3; ++e) {
                provider.create(add(endpoints, id, Endpoint(e), PresetType((id + e) % 4)));
            }
        }
        for (int e = 0; e < 3; ++e) {
            provider.create(add(tunings, kTuningNames[e], Endpoint(e), e == 0),
                            Provider::kDefaultName);
        }
        for (Port port : kPorts) {
            const std::string name = portName(port), device = "default_" + name;
            DeviceTuning record(device, name, kTuningNames[int(endpointForPortName(name))]);
            provider.create(&record, Provider::kDefaultName);
            provider.setDeviceTuning(name, device);
        }
        DeviceTuning sony("sony", "bluetooth", "hp");
        provider.create(&sony, Provider::kDefaultName);
        provider.setDefaultXmlSignature("1700000000");
        provider.setDefaultXmlFormatVersion("3.2.1");
        EXPECT_THAT(root.sql("SELECT COUNT(*) FROM profiles"),
                    ElementsAre(HasSubstr("database is locked")));  // one exclusive transaction
        provider.commitTransaction();
        ASSERT_EQ(provider.init(), 0);
    }

    // Changes the user copies of profile 1's records and saves them.
    void saveChangesToProfileOne() {
        profile = provider.loadProfile(1);
        profile->setName("Mine");
        profile->set(Parameter::REVERB_SUPPRESSION_AMOUNT, {99});
        speaker = provider.loadProfileEndpoint(1, Endpoint::SPEAKER);
        speaker->setSelectedIeqPreset(PresetType::WARM);
        geqPreset = provider.loadGeqPreset(1);
        geqPreset->set(Parameter::GEQ_GAIN, {0, 0});
        provider.save(profile);
        provider.save(speaker);
        provider.save(geqPreset);
    }

    test::ScopedRoot root;
    Provider provider;
    std::vector<IeqPreset> ieq;
    std::vector<GeqPreset> geq;
    std::vector<Profile> profiles;
    std::vector<ProfileEndpoint> endpoints;  // [profile * 3 + endpoint]
    std::vector<Tuning> tunings;             // [endpoint]
    Profile* profile = nullptr;
    ProfileEndpoint* speaker = nullptr;
    GeqPreset* geqPreset = nullptr;
};

TEST_F(AStoredDefaultTuning, LoadsBothCopiesAsSeparateEqualRecords) {
    ASSERT_EQ(provider.getNumOfProfiles(), 3);
    for (int id = 0; id < 3; ++id) {
        SCOPED_TRACE(id);
        Profile* def = provider.loadDefaultProfile(id);
        Profile* custom = provider.loadProfile(id);
        ASSERT_TRUE(def && custom && def != custom);
        EXPECT_TRUE(def->equals(profiles[id]) && custom->equals(profiles[id]));
        EXPECT_EQ(std::make_tuple(custom->getName(), custom->isMobility(), custom->getId()),
                  std::make_tuple("P" + std::to_string(id), id == 2, int64_t(2 * id + 2)));
        ProfileEndpointSet defaults = provider.loadDefaultProfileEndpoints(id);
        ProfileEndpointSet customs = provider.loadProfileEndpoints(id);
        EXPECT_EQ(std::make_pair(defaults.size(), customs.size()), std::make_pair(3ul, 3ul));
        for (ProfileEndpoint* e : customs) EXPECT_EQ(defaults.count(e), 0u);
        for (const ProfileEndpointSet& copies : {defaults, customs}) {
            for (ProfileEndpoint* e : copies) {
                EXPECT_TRUE(e->equals(endpoints[id * 3 + int(e->getEndpoint())]));
            }
        }
        EXPECT_TRUE(provider.loadGeqPreset(id)->equals(geq[id]));
        EXPECT_NE(provider.loadGeqPreset(id), provider.loadDefaultGeqPreset(id));
    }
    for (int t = 0; t < 4; ++t) EXPECT_TRUE(provider.loadIeqPreset(PresetType(t))->equals(ieq[t]));
    EXPECT_EQ(provider.loadProfile(3), nullptr);
}

// A start reads each table once: the newest row of a record wins, as a query of that
// record alone would have it, and a key the queries would not match ("01") is passed.
// Only the first load is served from that pass; later ones read the database again.
TEST_F(AStoredDefaultTuning, StartsEachRecordFromItsNewestRowAndReadsItAgainOnTheNextLoad) {
    DatabaseHelper db(Provider::kDatabaseName);
    db.execSQL(
            "INSERT INTO profiles (_id, custom_name, profile_id, name) "
            "VALUES (90, 'custom', '1', 'Newer'), (91, 'custom', '01', 'Padded')");
    db.execSQL(
            "DELETE FROM profile_endpoints WHERE custom_name='custom' AND profile_id='0' "
            "AND endpoint='speaker'");
    LogCapture log;
    Provider fresh;
    ASSERT_EQ(fresh.init(), 0);
    EXPECT_EQ(fresh.loadProfile(1)->getName(), "Newer");
    EXPECT_EQ(fresh.loadDefaultProfile(1)->getName(), "P1");
    EXPECT_FALSE(log.contains(ANDROID_LOG_ERROR, "DatabaseHelper", "Profile doesn't exist!"));
    // The record without a row is read (and reported) by its load, the others kept.
    for (ProfileEndpoint* e : fresh.loadProfileEndpoints(0)) {
        if (e->getEndpoint() != Endpoint::SPEAKER)
            EXPECT_TRUE(e->equals(endpoints[int(e->getEndpoint())]));
    }
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "DatabaseHelper", "Endpoint doesn't exist!"));
    db.execSQL("UPDATE profiles SET name='Later' WHERE _id=90");
    EXPECT_EQ(fresh.loadProfile(1)->getName(), "Later");
    // A save inside the start's read transaction ends it, commits, and reads go on.
    fresh.beginRead();
    EXPECT_EQ(fresh.getSelectedProfile(), 0);
    fresh.beginTransaction();
    fresh.setSelectedProfile(2);
    EXPECT_TRUE(fresh.commitTransaction());
    EXPECT_EQ(fresh.getSelectedProfile(), 2);
    fresh.endRead();
    EXPECT_EQ(root.sql("SELECT value FROM configuration WHERE key='Profile'"), (Strings{"2"}));
}

TEST_F(AStoredDefaultTuning, KeepsSavedChangesForTheNextProviderAndResetsInPlaceWithoutSaving) {
    provider.setAupOn(false);
    provider.setSelectedProfile(2);
    provider.updateDeviceTuning("bluetooth", "sony");
    saveChangesToProfileOne();
    Provider reopened;
    ASSERT_EQ(reopened.init(), 0);
    EXPECT_TRUE(reopened.loadProfile(1)->equals(*profile));
    EXPECT_FALSE(reopened.loadDefaultProfile(1)->equals(*profile));
    EXPECT_EQ(reopened.loadProfileEndpoint(1, Endpoint::SPEAKER)->getSelectedIeqPreset(),
              PresetType::WARM);
    EXPECT_TRUE(reopened.loadGeqPreset(1)->equals(*geqPreset));
    EXPECT_FALSE(reopened.isAupOn());
    EXPECT_EQ(reopened.getSelectedProfile(), 2);
    EXPECT_EQ(reopened.getDeviceTuning("bluetooth") + reopened.getDeviceTuning("usb"),
              "sonydefault_usb");
    // A reset puts the factory copy into the record in place, but saves nothing.
    EXPECT_EQ(provider.reset(profile), profile);
    EXPECT_TRUE(profile->equals(profiles[1]));
    EXPECT_EQ(profile->getName(), "P1");
    EXPECT_EQ(provider.reset(speaker)->getSelectedIeqPreset(), PresetType::DETAILED);
    EXPECT_TRUE(provider.reset(geqPreset)->equals(geq[1]));
    EXPECT_EQ(root.sql("SELECT name FROM profiles WHERE profile_id='1'"), (Strings{"P1", "Mine"}));
}

TEST_F(AStoredDefaultTuning, SharesOneTuningAmongTheDevicesNamingItAndWarnsOfAnUnknownOne) {
    for (Port port : kPorts) provider.loadDeviceTuningsForPort(port);
    LogCapture log;
    EXPECT_EQ(provider.loadTuningForDevice("nobody"), nullptr);
    EXPECT_EQ(log.lines().size(), 1u);
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag,
                             "Cannot find device with name nobody in mDeviceTunings"));
    Tuning* hp = provider.loadTuningForDevice("default_headphone");
    ASSERT_NE(hp, nullptr);
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Load tuning[hp] from cache device[default_headphone], and put it in "
                             "cached mTunings"));
    EXPECT_TRUE(hp->equals(tunings[1]));
    EXPECT_EQ(std::make_tuple(hp->getId(), hp->getName(), hp->getEndpoint(), hp->isMono()),
              std::make_tuple(int64_t{2}, std::string("hp"), Endpoint::HEADPHONE, false));
    EXPECT_EQ(provider.loadTuningForDevice("sony"), hp);
    EXPECT_EQ(provider.loadTuningForDevice("default_usb"), hp);
    EXPECT_EQ(log.count(kTag, "Found existing tuning[hp] from cache device[sony]"), 1u);
    EXPECT_TRUE(provider.loadTuningForDevice("default_internal_speaker")->isMono());
}

}  // namespace
}  // namespace vessa
