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
#include <string>
#include <thread>
#include <vector>

#include "FakeClient.h"
#include "ServiceTestSupport.h"
#include "platform/AupParamStore.h"
#include "service/FourCC.h"
#include "service/VessaManagerService.h"

namespace android {
namespace {

using test::blob;
using test::FakeClient;
using test::query;
using namespace std::chrono_literals;

vessa::test::SampleRootEnvironment* const gEnvironment = &test::serviceRoot();

constexpr int kProfiles = 5;
constexpr int kPorts = 6;
constexpr int kIeqPresetId = 104;

class ConcurrencyTest : public ::testing::Test {
  protected:
    ConcurrencyTest() : service(new VessaManagerService()) {}

    // Runs every body on its own thread, in a loop, until the time is up;
    // returns how many rounds each made.
    static std::vector<int> runTogether(const std::vector<std::function<void(int)>>& bodies,
                                        std::chrono::milliseconds duration) {
        std::atomic<bool> stop{false};
        std::vector<int> rounds(bodies.size(), 0);
        std::vector<std::thread> threads;
        for (size_t i = 0; i < bodies.size(); ++i) {
            threads.emplace_back([&, i] {
                for (int round = 0; !stop; ++round, ++rounds[i]) bodies[i](round);
            });
        }
        std::this_thread::sleep_for(duration);
        stop = true;
        for (std::thread& t : threads) t.join();
        return rounds;
    }

    // The IEQ preset as command 1 (profile-wide) or 2 (profile and port) reads it.
    int32_t readPreset(int profile, int port) {
        std::vector<uint8_t> in = port < 0 ? query(1, kIeqPresetId, profile)
                                           : query(2, kIeqPresetId, profile << 4 | port);
        int32_t out = -100;
        EXPECT_EQ(0, service->getAupParam(in.data(), in.size(), &out, sizeof(out)));
        return out;
    }

    sp<VessaManagerService> service;
};

TEST_F(ConcurrencyTest, FirstRegistrationsAtOnceInitialiseTheManagerOnce) {
    vessa::AupParamStore& store = vessa::AupParamStore::getInstance();
    for (int attempt = 0; attempt < 10; ++attempt) {
        sp<VessaManagerService> fresh = new VessaManagerService();
        sp<FakeClient> a = new FakeClient(), b = new FakeClient();
        std::atomic<int> ready{0};
        auto registerOne = [&](const sp<FakeClient>& client, uint32_t uid) {
            ++ready;
            while (ready < 2) {
            }
            fresh->registerClient(client, 0, uid);
        };
        std::thread first(registerOne, a, 10), second(registerOne, b, 20);
        first.join();
        second.join();
        ASSERT_TRUE(a->waitForUpdates(1) && b->waitForUpdates(1));
        // One controller observes the context: a profile-wide change is one batch.
        uint64_t commits = store.getCommitCount();
        std::vector<uint8_t> in = query(1, 114, 0);
        int32_t current = -1;
        fresh->getAupParam(in.data(), in.size(), &current, sizeof(current));
        std::vector<uint8_t> change = blob({1 << 24, 0, 0, 114, current == 0 ? 1 : 0});
        size_t seen = a->updateCount();
        fresh->setAupParam(change.data(), change.size());
        ASSERT_TRUE(a->waitForUpdate(change, seen));
        EXPECT_EQ(commits + 1, store.getCommitCount()) << "attempt " << attempt;
        fresh->unregisterClient(a, 0, 10);
        fresh->unregisterClient(b, 0, 20);
    }
}

TEST_F(ConcurrencyTest, EveryAnswerIsInRangeWhileAllKindsOfRequestsRunTogether) {
    sp<FakeClient> ui = new FakeClient();
    service->registerClient(ui, 0, 100);
    ASSERT_TRUE(ui->waitForUpdates(1));
    gEnvironment->root->installOem(gEnvironment->root->sampleOem());
    service->setIntParam(fourCC("RLTF"), 0);

    // With the OEM file merged, every reload lists the same devices.
    std::map<int, std::set<std::string>> devices;
    std::map<int, int> lengths;
    for (int port = 0; port < kPorts; ++port) {
        lengths[port] = service->getAvailableTuningDevicesLen(port);
        std::string names(static_cast<size_t>(lengths[port]), '\0');
        service->getAvailableTuningDevices(port, names.data(), lengths[port]);
        for (size_t at = 0, end; (end = names.find(' ', at)) != std::string::npos; at = end + 1) {
            devices[port].insert(names.substr(at, end - at));
        }
        ASSERT_FALSE(devices[port].empty()) << port;
    }
    std::vector<std::string> names;
    for (int id = 0; id < kProfiles; ++id) names.push_back(service->getProfileName(id));

    auto reader = [&](int round) {
        int profile = round % kProfiles;
        int32_t preset = readPreset(profile, round % 2 == 0 ? -1 : round % 7);
        EXPECT_TRUE(preset >= 0 && preset <= 3) << preset;
        int port = round % kPorts;
        EXPECT_EQ(1u, devices[port].count(service->getSelectedTuningDevice(port)));
        EXPECT_EQ(lengths[port], service->getAvailableTuningDevicesLen(port));
        EXPECT_EQ(names[profile], service->getProfileName(profile));
        int64_t dialog = service->getIntParam(fourCC("DEAM"));
        EXPECT_TRUE(dialog >= -1 && dialog <= 16) << dialog;
        int64_t leveler = service->getIntParam(fourCC("DVLA"));
        EXPECT_TRUE(leveler >= 0 && leveler <= 10) << leveler;
        EXPECT_EQ(3003000, service->getIntParam(fourCC("DTFV")));
    };
    auto writer = [&](int round) {
        int profile = round % kProfiles;
        std::vector<std::vector<uint8_t>> blobs = {
                blob({1 << 24, 0, profile, kIeqPresetId, round % 4}),
                blob({2 << 24, 0, profile, round % kPorts, kIeqPresetId, (round + 1) % 4}),
                blob({2 << 24, 0, profile, round % kPorts, kIeqPresetId}),
                blob({1 << 24, 0, profile, 107, round % 17}),
                blob({10 << 24, 0, profile}),
                blob({0 << 24, 0, round % 2}),
                blob({12 << 24, 0, (profile + 1) % kProfiles})};
        const std::vector<uint8_t>& blob = blobs[round % blobs.size()];
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
        service->setIntParam(fourCC("RLTF"), 0);
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
        int fds[2];
        ASSERT_EQ(0, pipe(fds));
        service->dump(fds[1], {});
        close(fds[1]);
        std::string text(4096, '\0');
        ssize_t n = read(fds[0], text.data(), text.size());
        close(fds[0]);
        text.resize(n > 0 ? static_cast<size_t>(n) : 0);
        EXPECT_EQ(0u, text.find("VessaManagerService Information dump:\nZAN Status : ")) << text;
        EXPECT_EQ(6, std::count(text.begin(), text.end(), '\n')) << text;
    };
    std::vector<int> rounds =
            runTogether({reader, reader, writer, reloader, registrar, dumper}, 2s);
    for (size_t i = 0; i < rounds.size(); ++i) EXPECT_GT(rounds[i], 0) << "thread " << i;

    // The queue drains, and the last change is the state.
    std::vector<uint8_t> last = blob({10 << 24, 2, 2});
    size_t seen = ui->updateCount();
    service->setAupParam(last.data(), last.size());
    ASSERT_TRUE(ui->waitForUpdate(last, seen, 30s));
    EXPECT_EQ(0, service->getIntParam(fourCC("APMO")));
    std::vector<uint8_t> selected = {0, 0, 0, 10};
    int32_t profile = -1;
    service->getAupParam(selected.data(), selected.size(), &profile, sizeof(profile));
    EXPECT_EQ(2, profile);
    service->unregisterClient(ui, 0, 100);
}

}  // namespace
}  // namespace android
