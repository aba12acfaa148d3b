// Many clients at once: readers, posted changes, tuning reloads, registrations
// and dumps run together for a bounded time, and every answer must be one the
// state can give. Built and run under ThreadSanitizer as well.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "FakeClient.h"
#include "ServiceTestSupport.h"
#include "platform/AupParamStore.h"
#include "protocol/SettingsTable.h"
#include "service/VessaManagerService.h"

namespace android {
namespace {

using namespace test;
using namespace std::chrono_literals;
using vessa::SettingsTable;

vessa::test::SampleRootEnvironment* const gEnvironment = &test::serviceRoot();

constexpr int kProfiles = 5;
constexpr int kPorts = 6;
constexpr int kPreset = SettingsTable::kIeqPreset;
constexpr int kReverb = SettingsTable::kReverbSuppression;

class ConcurrentClients : public AFreshService {};

TEST_F(ConcurrentClients, InitialiseTheManagerOnceWhenTheyRegisterAtOnce) {
    vessa::AupParamStore& store = vessa::AupParamStore::getInstance();
    for (int attempt = 0; attempt < 10; ++attempt) {
        service = new VessaManagerService();
        sp<FakeClient> a = new FakeClient(), b = new FakeClient();
        std::atomic<int> ready{0};
        auto registerOne = [&](const sp<FakeClient>& client, uint32_t uid) {
            ++ready;
            while (ready < 2) {
            }
            service->registerClient(client, 0, uid);
        };
        std::thread first(registerOne, a, 10), second(registerOne, b, 20);
        first.join();
        second.join();
        ASSERT_TRUE(a->waitForUpdates(1) && b->waitForUpdates(1));
        // One controller observes the context: a change of the selected profile is
        // one batch for the effect.
        uint64_t commits = store.getCommitCount();
        int32_t profile = askWord(PqsProtocol::kQuerySelectedProfile);
        int32_t current = askWord(PqsProtocol::kQueryParameter, profile, kReverb);
        Bytes change = PqsProtocol::setParameter(profile, kReverb, {current == 0 ? 1 : 0});
        size_t seen = a->updateCount();
        service->setAupParam(change.data(), change.size());
        ASSERT_TRUE(a->waitForUpdate(change, seen));
        EXPECT_EQ(commits + 1, store.getCommitCount()) << "attempt " << attempt;
        service->unregisterClient(a, 0, 10);
        service->unregisterClient(b, 0, 20);
    }
}

TEST_F(ConcurrentClients, AlwaysGetAnswersInRangeWhileEveryKindOfRequestRuns) {
    sp<FakeClient> ui = new FakeClient();
    registerAndSettle(ui, 0, 100);
    gEnvironment->root->installOem(gEnvironment->root->sampleOem());
    service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 0);

    // With the OEM file merged, every reload lists the same devices.
    std::map<int, std::set<std::string>> devices;
    std::map<int, int> lengths;
    for (int port = 0; port < kPorts; ++port) {
        lengths[port] = service->getAvailableTuningDevicesLen(port);
        std::string names(static_cast<size_t>(lengths[port]), '\0');
        service->getAvailableTuningDevices(port, names.data(), lengths[port]);
        std::istringstream words(names);
        for (std::string name; words >> name;) devices[port].insert(name);
        ASSERT_FALSE(devices[port].empty()) << port;
    }
    std::vector<std::string> names;
    for (int id = 0; id < kProfiles; ++id) names.push_back(service->getProfileName(id));

    auto reader = [&](int round) {
        int profile = round % kProfiles;
        int32_t preset = ask(
                round % 2 == 0 ? PqsProtocol::query(PqsProtocol::kQueryParameter, profile, kPreset)
                               : PqsProtocol::portQuery(profile, round % 7, kPreset))[0];
        EXPECT_TRUE(preset >= 0 && preset <= 3) << preset;
        int port = round % kPorts;
        EXPECT_EQ(1u, devices[port].count(service->getSelectedTuningDevice(port)));
        EXPECT_EQ(lengths[port], service->getAvailableTuningDevicesLen(port));
        EXPECT_EQ(names[profile], service->getProfileName(profile));
        int64_t dialog = intParam(IntCode::DIALOG_ENHANCER_AMOUNT);
        EXPECT_TRUE(dialog >= -1 && dialog <= 16) << dialog;
        int64_t leveler = intParam(IntCode::VOLUME_LEVELER_AMOUNT);
        EXPECT_TRUE(leveler >= 0 && leveler <= 10) << leveler;
        EXPECT_EQ(3003000, intParam(IntCode::FORMAT_VERSION));
    };
    auto writer = [&](int round) {
        int profile = round % kProfiles;
        std::vector<Bytes> blobs = {
                PqsProtocol::setParameter(profile, kPreset, {round % 4}),
                PqsProtocol::setPortParameter(profile, round % kPorts, kPreset, {(round + 1) % 4}),
                PqsProtocol::setPortParameter(profile, round % kPorts, kPreset, {}),
                PqsProtocol::setParameter(profile, SettingsTable::kIeqAmount, {round % 17}),
                PqsProtocol::selectProfile(profile),
                PqsProtocol::onOff(round % 2 != 0),
                PqsProtocol::resetProfile((profile + 1) % kProfiles)};
        const Bytes& blob = blobs[round % blobs.size()];
        EXPECT_EQ(0, service->setAupParam(blob.data(), blob.size()));
        int port = round % kPorts;
        const std::string& device =
                *std::next(devices[port].begin(), round % static_cast<int>(devices[port].size()));
        size_t seen = ui->updateCount();
        service->setSelectedTuningDevice(port, device.data(), static_cast<int>(device.size()));
        // As a client waiting for its echo: the event thread keeps up.
        ui->waitForUpdates(seen + 2);
    };
    auto reloader = [&](int) {
        service->setIntParam(static_cast<uint32_t>(IntCode::RELOAD_TUNING), 0);
        std::this_thread::sleep_for(2ms);
    };
    auto registrar = [&](int round) {
        sp<FakeClient> client = new FakeClient();
        int type = round % 3 == 0 ? 0 : round % 3 == 1 ? 2 : 7;
        uint32_t uid = 2000 + static_cast<uint32_t>(round % 50);
        service->registerClient(client, type, uid);
        client->waitForUpdates(1);
        service->unregisterClient(client, type, uid);  // an ordinary one saves everything
    };
    auto dumper = [&](int) {
        std::string text = dumpText();
        EXPECT_EQ(0u, text.find("VessaManagerService Information dump:\nZAN Status : ")) << text;
        EXPECT_EQ(6, std::count(text.begin(), text.end(), '\n')) << text;
    };
    // Every body on its own thread, in a loop, for two seconds.
    const std::vector<std::function<void(int)>> bodies = {reader,   reader,    writer,
                                                          reloader, registrar, dumper};
    std::atomic<bool> stop{false};
    std::vector<int> rounds(bodies.size(), 0);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < bodies.size(); ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; !stop; ++round, ++rounds[i]) bodies[i](round);
        });
    }
    std::this_thread::sleep_for(2s);
    stop = true;
    for (std::thread& t : threads) t.join();
    for (size_t i = 0; i < rounds.size(); ++i) EXPECT_GT(rounds[i], 0) << "thread " << i;

    // The queue drains, and the last change is the state.
    Bytes last = PqsProtocol::selectProfile(2);
    PqsProtocol::writeAnswer(last.data(), last.size(), 2);
    size_t seen = ui->updateCount();
    service->setAupParam(last.data(), last.size());
    ASSERT_TRUE(ui->waitForUpdate(last, seen, 30s));
    EXPECT_EQ(0, intParam(IntCode::MOBILITY_PROFILE));
    EXPECT_EQ(2, askWord(PqsProtocol::kQuerySelectedProfile));
    service->unregisterClient(ui, 0, 100);
}

}  // namespace
}  // namespace android
