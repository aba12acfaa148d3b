#include <android/log.h>
#include <gtest/gtest.h>

#include <memory>

#include "StorageTestSupport.h"
#include "platform/LogCapture.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

using test::OutsideView;
using Strings = std::vector<std::string>;
constexpr const char* kTag = "VsaDatabaseProvider";
const Port kPorts[] = {Port::INTERNAL_SPEAKER, Port::HDMI,      Port::MIRACAST,
                       Port::HEADPHONE,        Port::BLUETOOTH, Port::USB};

// A realistic default tuning: 4 profiles x 3 endpoints, 4 IEQ and 4 GEQ presets, one
// tuning per endpoint kind, a default device per port and one extra device.
struct TuningData {
    std::vector<std::unique_ptr<IeqPreset>> ieq;
    std::vector<std::unique_ptr<GeqPreset>> geq;
    std::vector<std::unique_ptr<Profile>> profiles;
    std::vector<std::unique_ptr<ProfileEndpoint>> endpoints;  // [profile * 3 + endpoint]
    std::vector<std::unique_ptr<Tuning>> tunings;             // [endpoint]
    std::vector<std::unique_ptr<DeviceTuning>> devices;

    TuningData() {
        for (int t = 0; t < 4; ++t) ieq.push_back(std::make_unique<IeqPreset>(PresetType(t)));
        for (int id = 0; id < 4; ++id) {
            geq.push_back(std::make_unique<GeqPreset>(id));
            profiles.push_back(std::make_unique<Profile>(id, "P" + std::to_string(id), id == 3));
            for (int e = 0; e < 3; ++e) {
                endpoints.push_back(std::make_unique<ProfileEndpoint>(id, Endpoint(e),
                                                                      PresetType((id + e) % 4)));
            }
        }
        for (const char* name : {"spk", "hp", "other"}) {
            tunings.push_back(
                    std::make_unique<Tuning>(name, Endpoint(tunings.size()), tunings.empty()));
        }
        for (Port port : kPorts) {
            devices.push_back(std::make_unique<DeviceTuning>(
                    std::string("default_") + portName(port), portName(port),
                    tunings[int(endpointForPortName(portName(port)))]->getName()));
        }
        devices.push_back(std::make_unique<DeviceTuning>("sony", "bluetooth", "hp"));
        int seed = 0;
        auto fill = [&seed](auto& records) {
            for (auto& record : records) test::fillAll(*record, ++seed);
        };
        fill(ieq), fill(geq), fill(profiles), fill(endpoints), fill(tunings);
    }

    void populate(Provider& provider) const {
        provider.beginTransaction();
        provider.clear();
        provider.initDatabase();
        for (const auto& p : ieq) provider.create(p.get());
        for (const auto& p : geq) provider.create(p.get());
        for (const auto& p : profiles) provider.create(p.get());
        for (const auto& p : endpoints) provider.create(p.get());
        for (const auto& t : tunings) provider.create(t.get(), Provider::kDefaultName);
        for (const auto& d : devices) provider.create(d.get(), Provider::kDefaultName);
        for (Port port : kPorts) {
            provider.setDeviceTuning(portName(port), std::string("default_") + portName(port));
        }
        provider.setDefaultXmlSignature("1700000000");
        provider.setDefaultXmlFormatVersion("3.2.1");
        provider.commitTransaction();
    }
};

class ProviderTest : public ::testing::Test {
  protected:
    void SetUp() override {
        data.populate(provider);
        ASSERT_EQ(provider.init(), 0);
    }
    test::ScopedRoot root;
    TuningData data;
    Provider provider;
    OutsideView view{root.databasePath()};
};

TEST(ProviderInitTest, AnEmptyDatabaseHasNoProfiles) {
    test::ScopedRoot root;
    Provider provider;
    provider.initDatabase();
    LogCapture log;
    EXPECT_EQ(provider.init(), -19);
    EXPECT_TRUE(
            log.contains(ANDROID_LOG_ERROR, kTag, "init(): No profiles found from the database"));
    EXPECT_EQ(provider.getNumOfProfiles(), 0);
    EXPECT_EQ(provider.loadProfile(0), nullptr);
    EXPECT_TRUE(provider.loadProfileEndpoints(0).empty());
    EXPECT_EQ(provider.loadIeqPreset(PresetType::OFF), nullptr);
    EXPECT_EQ(provider.getSelectedProfile(), -1);
    EXPECT_FALSE(provider.isAupOn());
}

TEST_F(ProviderTest, PopulatesInOneTransactionAndLoadsBothCopies) {
    provider.beginTransaction();
    provider.create(data.profiles[0].get());
    EXPECT_EQ(view.run("SELECT * FROM profiles"), SQLITE_BUSY);
    provider.clear();
    provider.commitTransaction();
    data.populate(provider);
    EXPECT_EQ(view.column(
                      "SELECT COUNT(*) FROM ieq_presets UNION ALL SELECT COUNT(*) FROM "
                      "geq_presets UNION ALL SELECT COUNT(*) FROM profile_endpoints UNION ALL "
                      "SELECT COUNT(*) FROM tunings UNION ALL SELECT COUNT(*) FROM device_tunings"),
              (Strings{"4", "8", "24", "3", "7"}));
    EXPECT_EQ(view.column("SELECT _id || custom_name FROM profiles WHERE profile_id='2'"),
              (Strings{"5default", "6custom"}));

    ASSERT_EQ(provider.init(), 0);
    ASSERT_EQ(provider.getNumOfProfiles(), 4);
    for (int id = 0; id < 4; ++id) {
        SCOPED_TRACE(id);
        Profile* def = provider.loadDefaultProfile(id);
        Profile* custom = provider.loadProfile(id);
        ASSERT_TRUE(def && custom && def != custom);
        EXPECT_TRUE(def->equals(*data.profiles[id]) && custom->equals(*data.profiles[id]));
        EXPECT_EQ(custom->getName(), "P" + std::to_string(id));
        EXPECT_EQ(custom->isMobility(), id == 3);
        EXPECT_EQ(custom->getId(), 2 * id + 2);
        ProfileEndpointSet endpoints = provider.loadProfileEndpoints(id);
        ProfileEndpointSet defaults = provider.loadDefaultProfileEndpoints(id);
        ASSERT_EQ(endpoints.size(), 3u);
        int e = 0;
        for (ProfileEndpoint* endpoint : endpoints) {
            EXPECT_TRUE(endpoint->equals(*data.endpoints[id * 3 + e++]));
            EXPECT_EQ(defaults.count(endpoint), 0u);
        }
        for (ProfileEndpoint* endpoint : defaults) {
            EXPECT_TRUE(endpoint->equals(*data.endpoints[id * 3 + int(endpoint->getEndpoint())]));
        }
        EXPECT_TRUE(provider.loadProfileEndpoint(id, Endpoint::OTHER)
                            ->equals(*data.endpoints[id * 3 + 2]));
        GeqPreset* geq = provider.loadGeqPreset(id);
        EXPECT_TRUE(geq->equals(*data.geq[id]));
        EXPECT_NE(geq, provider.loadDefaultGeqPreset(id));
    }
    for (int t = 0; t < 4; ++t)
        EXPECT_TRUE(provider.loadIeqPreset(PresetType(t))->equals(*data.ieq[t]));
    EXPECT_EQ(provider.loadProfile(4), nullptr);
}

TEST_F(ProviderTest, ConfigurationStartsAtProfileZeroWithProcessingOn) {
    EXPECT_EQ(provider.getSelectedProfile(), 0);
    EXPECT_TRUE(provider.isAupOn());
    EXPECT_EQ(provider.getDefaultXmlSignature(), "1700000000");
    EXPECT_EQ(provider.getDefaultXmlFormatVersion(), "3.2.1");
    provider.setAupOn(false);
    provider.setSelectedProfile(2);
    provider.updateDeviceTuning("bluetooth", "sony");
    Provider reopened;
    EXPECT_FALSE(reopened.isAupOn());
    EXPECT_EQ(reopened.getSelectedProfile(), 2);
    EXPECT_EQ(reopened.getDeviceTuning("bluetooth"), "sony");
    EXPECT_EQ(reopened.getDeviceTuning("usb"), "default_usb");
}

TEST_F(ProviderTest, SaveWritesTheUserCopyAndResetRestoresTheFactoryCopy) {
    Profile* profile = provider.loadProfile(1);
    profile->setName("Mine");
    profile->set(Parameter::REVERB_SUPPRESSION_AMOUNT, {99});
    ProfileEndpoint* speaker = *provider.loadProfileEndpoints(1).begin();
    speaker->setSelectedIeqPreset(PresetType::WARM);
    GeqPreset* geq = provider.loadGeqPreset(1);
    geq->set(Parameter::GEQ_GAIN, {0, 0});
    provider.save(profile);
    provider.save(speaker);
    provider.save(geq);
    EXPECT_EQ(view.column("SELECT custom_name || name FROM profiles WHERE profile_id='1'"),
              (Strings{"defaultP1", "customMine"}));
    {
        Provider reopened;
        ASSERT_EQ(reopened.init(), 0);
        EXPECT_TRUE(reopened.loadProfile(1)->equals(*profile));
        EXPECT_FALSE(reopened.loadDefaultProfile(1)->equals(*profile));
        EXPECT_EQ(reopened.loadProfileEndpoint(1, Endpoint::SPEAKER)->getSelectedIeqPreset(),
                  PresetType::WARM);
        EXPECT_TRUE(reopened.loadGeqPreset(1)->equals(*geq));
    }
    EXPECT_EQ(provider.reset(profile), profile);
    EXPECT_TRUE(profile->equals(*data.profiles[1]));
    EXPECT_EQ(profile->getName(), "P1");
    EXPECT_EQ(provider.reset(speaker)->getSelectedIeqPreset(), PresetType::DETAILED);
    EXPECT_TRUE(provider.reset(geq)->equals(*data.geq[1]));
    EXPECT_EQ(view.count("profiles", " WHERE name='Mine'"), 1);  // a reset is not a save
    provider.create(static_cast<Profile*>(nullptr));
    EXPECT_EQ(view.count("profiles"), 8);
}

TEST_F(ProviderTest, DevicesNamingOneTuningShareIt) {
    for (Port port : kPorts) provider.loadDeviceTuningsForPort(port);
    Strings devices;
    for (DeviceTuning* d : provider.loadDeviceTuningsForPort(Port::BLUETOOTH))
        devices.push_back(d->getDevice());
    EXPECT_EQ(devices, (Strings{"default_bluetooth", "sony"}));

    LogCapture log;
    Tuning* hp = provider.loadTuningForDevice("default_headphone");
    ASSERT_NE(hp, nullptr);
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Load tuning[hp] from cache device[default_headphone], and put it in "
                             "cached mTunings"));
    EXPECT_TRUE(hp->equals(*data.tunings[1]));
    EXPECT_EQ(std::make_tuple(hp->getId(), hp->getName(), hp->getEndpoint(), hp->isMono()),
              std::make_tuple(int64_t{2}, std::string("hp"), Endpoint::HEADPHONE, false));
    EXPECT_EQ(provider.loadTuningForDevice("sony"), hp);
    EXPECT_EQ(provider.loadTuningForDevice("default_usb"), hp);
    EXPECT_EQ(log.count(kTag, "Found existing tuning[hp] from cache device[sony]"), 1u);
    EXPECT_TRUE(provider.loadTuningForDevice("default_internal_speaker")->isMono());

    log.clear();
    EXPECT_EQ(provider.loadTuningForDevice("nobody"), nullptr);
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, kTag,
                             "Cannot find device with name nobody in mDeviceTunings"));
    EXPECT_EQ(log.lines().size(), 1u);
}

TEST_F(ProviderTest, OemDeviceTuningsAppearAfterTheCacheIsReloaded) {
    provider.loadDeviceTuningsForPort(Port::USB);
    DeviceTuning oem("usb_dac", "usb", "other");
    provider.create(&oem, Provider::kOemName);
    EXPECT_EQ(provider.loadTuningForDevice("usb_dac"), nullptr);  // the cached port is stale
    LogCapture log;
    provider.reloadCachedDeviceTunings();
    EXPECT_TRUE(log.contains(ANDROID_LOG_DEBUG, kTag,
                             "Clear cached device tuning Port[usb]:Device[default_usb]"));
    EXPECT_EQ(provider.loadDeviceTuningsForPort(Port::USB).size(), 2u);
    ASSERT_NE(provider.loadTuningForDevice("usb_dac"), nullptr);
    EXPECT_TRUE(provider.loadTuningForDevice("usb_dac")->equals(*data.tunings[2]));
    provider.clearOemDeviceTunings();
    EXPECT_EQ(view.count("device_tunings", " WHERE custom_name='oem'"), 0);
}

}  // namespace
}  // namespace vessa
