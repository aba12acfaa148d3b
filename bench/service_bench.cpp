// The in-process path of one parameter change: setAupParam with command 1 and
// one value, until the event thread has applied it, the store has committed
// the batch, and every registered client has been called back. Reports the
// median and the 99th percentile of that latency.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "BenchSupport.h"
#include "context/SxContextManager.h"
#include "platform/AupParamStore.h"
#include "platform/FileSystemRoot.h"
#include "service/VessaManagerService.h"

namespace {

class CountingClient : public android::IPqsCallbacks {
public:
    bool onAupParamUpdate(const uint8_t*, size_t) override {
        std::lock_guard<std::mutex> guard(mLock);
        ++mCount;
        mChanged.notify_all();
        return true;
    }
    bool linkToDeath(const android::sp<android::PqsDeathRecipient>&, uint64_t) override {
        return true;
    }
    bool unlinkToDeath(const android::sp<android::PqsDeathRecipient>&) override { return true; }

    uint64_t count() {
        std::lock_guard<std::mutex> guard(mLock);
        return mCount;
    }
    void waitFor(uint64_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        mChanged.wait(guard, [&] { return mCount >= count; });
    }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    uint64_t mCount = 0;
};

void BM_SetAupParamRoundTrip(benchmark::State& state) {
    // One root for the process: the singleton context lives as long.
    static vessa::bench::TempFolder root;
    root.write(vessa::SxContextManager::kDefaultTuningFile,
               vessa::bench::readText(vessa::bench::sampleDefaultFile()));
    vessa::FileSystemRoot::set(root.path());

    android::sp<android::VessaManagerService> service = new android::VessaManagerService();
    std::vector<android::sp<CountingClient>> clients;
    for (uint32_t uid = 0; uid < static_cast<uint32_t>(state.range(0)); ++uid) {
        clients.push_back(new CountingClient());
        service->registerClient(clients.back(), 0, 1000 + uid);
    }
    for (auto& client : clients) client->waitFor(1);

    vessa::AupParamStore& store = vessa::AupParamStore::getInstance();
    // Profile 0 and the id under test, with values alternating so every
    // change is real. A profile-wide id (114) sends one batch; an endpoint id
    // (107) is written to all three endpoints and sends one batch per port.
    int32_t blob[5] = {1 << 24, 0, 0, static_cast<int32_t>(state.range(1)), 0};
    std::vector<double> micros;
    micros.reserve(100000);
    for (auto _ : state) {
        blob[4] = blob[4] == 1 ? 0 : 1;
        uint64_t commits = store.getCommitCount();
        std::vector<uint64_t> seen;
        for (auto& client : clients) seen.push_back(client->count());
        auto begin = std::chrono::steady_clock::now();
        service->setAupParam(blob, sizeof(blob));
        for (size_t i = 0; i < clients.size(); ++i) clients[i]->waitFor(seen[i] + 1);
        auto end = std::chrono::steady_clock::now();
        if (store.getCommitCount() <= commits) state.SkipWithError("no commit");
        micros.push_back(std::chrono::duration<double, std::micro>(end - begin).count());
    }
    std::sort(micros.begin(), micros.end());
    if (!micros.empty()) {
        state.counters["p50_us"] = micros[micros.size() / 2];
        state.counters["p99_us"] = micros[std::min(micros.size() - 1, micros.size() * 99 / 100)];
    }
    for (size_t i = 0; i < clients.size(); ++i) service->unregisterClient(clients[i], 0, 1000 + i);
    service.clear();
}

// The service reaches its context through a process-wide singleton, which
// the first run creates under its root and the last run releases.
BENCHMARK(BM_SetAupParamRoundTrip)
        ->ArgsProduct({{3}, {114, 107}})
        ->ArgNames({"clients", "id"})
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(5000);

}  // namespace

BENCHMARK_MAIN();
