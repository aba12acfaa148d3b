// The in-process path of one parameter change: setAupParam with command 1 and
// one value, until the event thread has applied it, the store has committed
// the batch, and every registered client has been called back. Reported as
// the median and 99th percentile, and as a ratio to its floor measured in the
// same run, round by round: a condition-variable round trip to a second thread
// (one hop there and back, as a change makes), and to three waiting threads.
//
// Then the same change while reader threads keep asking getAupParam for the
// IEQ preset (id 104): reads per second and the change's median, with one and
// with three readers, interleaved.
//
// A counting operator new gives the allocations (and bytes) one change makes, on
// every thread, while the change is in flight.

#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sched.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "BenchSupport.h"
#include "context/SxContextManager.h"
#include "platform/AupParamStore.h"
#include "platform/FileSystemRoot.h"
#include "protocol/PqsProtocol.h"
#include "protocol/SettingsTable.h"
#include "service/VessaManagerService.h"

namespace {

std::atomic<bool> gCounting{false};
std::atomic<uint64_t> gAllocations{0};
std::atomic<uint64_t> gAllocatedBytes{0};

}  // namespace

void* operator new(size_t size) {
    if (gCounting.load(std::memory_order_relaxed)) {
        gAllocations.fetch_add(1, std::memory_order_relaxed);
        gAllocatedBytes.fetch_add(size, std::memory_order_relaxed);
    }
    if (void* p = std::malloc(size != 0 ? size : 1)) return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, size_t) noexcept {
    std::free(p);
}

namespace {

using Clock = std::chrono::steady_clock;

// Threads take the CPU of the thread that starts them. Waking a thread on another
// CPU costs several times a wake-up on the same one, so the change path and its
// floors are measured the same way: the caller on CPU 0, every thread it hands
// work to (the event thread, the floor's threads) started from CPU 1.
// Readers, like bus threads, run wherever the system puts them (cpu -1).
void runOnCpu(int cpu) {
    const unsigned cpus = std::max(1u, std::thread::hardware_concurrency());
    cpu_set_t set;
    CPU_ZERO(&set);
    for (unsigned c = 0; c < cpus; ++c) {
        if (cpu < 0 || c == static_cast<unsigned>(cpu) % cpus) CPU_SET(c, &set);
    }
    pthread_setaffinity_np(pthread_self(), sizeof(set), &set);
}

double micros(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double, std::micro>(end - begin).count();
}

double percentile(std::vector<double> values, int percent) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, values.size() * percent / 100)];
}

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

// Threads that each answer a ping with a pong, through one mutex and two
// condition variables: the cheapest hand-off to other threads and back.
class PingPong {
  public:
    explicit PingPong(int threads) {
        runOnCpu(1);
        for (int i = 0; i < threads; ++i) {
            mThreads.emplace_back([this] {
                uint64_t seen = 0;
                std::unique_lock<std::mutex> lock(mLock);
                for (;;) {
                    mPing.wait(lock, [&] { return mStop || mPings > seen; });
                    if (mStop) return;
                    seen = mPings;
                    ++mPongs;
                    mPong.notify_one();
                }
            });
        }
        runOnCpu(0);
    }
    ~PingPong() {
        {
            std::lock_guard<std::mutex> guard(mLock);
            mStop = true;
        }
        mPing.notify_all();
        for (std::thread& t : mThreads) t.join();
    }
    // One round trip to every thread, in microseconds.
    double roundTrip() {
        auto begin = Clock::now();
        std::unique_lock<std::mutex> lock(mLock);
        ++mPings;
        uint64_t expected = mPongs + mThreads.size();
        mPing.notify_all();
        mPong.wait(lock, [&] { return mPongs >= expected; });
        return micros(begin, Clock::now());
    }

  private:
    std::mutex mLock;
    std::condition_variable mPing, mPong;
    uint64_t mPings = 0, mPongs = 0;
    bool mStop = false;
    std::vector<std::thread> mThreads;
};

// One service with three registered clients for the whole process: the context
// behind it is a process-wide singleton.
class Bench {
  public:
    static Bench& get() {
        static Bench bench;
        return bench;
    }

    // One change of `id` of profile 0, to a value other than the current one, until
    // every client has heard of it; in microseconds.
    double change(int32_t id) {
        vessa::PqsProtocol::Bytes blob =
                vessa::PqsProtocol::setParameter(0, id, {read(id) == 1 ? 0 : 1});
        std::vector<uint64_t> seen;
        for (auto& client : mClients) seen.push_back(client->count());
        auto begin = Clock::now();
        // Only the service's allocations count, not the request built above.
        gCounting = true;
        mService->setAupParam(blob.data(), blob.size());
        for (size_t i = 0; i < mClients.size(); ++i) mClients[i]->waitFor(seen[i] + 1);
        gCounting = false;
        return micros(begin, Clock::now());
    }

    // The first value of `id` of profile 0, as a profile-wide query reads it.
    int32_t read(int32_t id) {
        vessa::PqsProtocol::Bytes query =
                vessa::PqsProtocol::query(vessa::PqsProtocol::kQueryParameter, 0, id);
        int32_t value = -1;
        mService->getAupParam(query.data(), query.size(), &value, sizeof(value));
        return value;
    }

  private:
    Bench() {
        mRoot.write(vessa::SxContextManager::kDefaultTuningFile,
                    vessa::bench::readText(vessa::bench::sampleDefaultFile()));
        vessa::FileSystemRoot::set(mRoot.path());
        runOnCpu(1);
        mService = new android::VessaManagerService();
        runOnCpu(0);
        for (uint32_t uid = 0; uid < 3; ++uid) {
            mClients.push_back(new CountingClient());
            mService->registerClient(mClients.back(), 0, 1000 + uid);
        }
        for (auto& client : mClients) client->waitFor(1);
    }

    vessa::bench::TempFolder mRoot;
    android::sp<android::VessaManagerService> mService;
    std::vector<android::sp<CountingClient>> mClients;
};

// A profile-wide id (114) sends one batch; an endpoint id (107) is written to all
// three endpoints and sends one batch per port.
void BM_ChangeAgainstItsFloor(benchmark::State& state) {
    Bench& bench = Bench::get();
    vessa::AupParamStore& store = vessa::AupParamStore::getInstance();
    PingPong one(1), three(3);
    std::vector<double> changes, floor1, floor3;
    const uint64_t allocations = gAllocations, bytes = gAllocatedBytes;
    for (auto _ : state) {
        uint64_t commits = store.getCommitCount();
        changes.push_back(bench.change(static_cast<int32_t>(state.range(0))));
        if (store.getCommitCount() <= commits) state.SkipWithError("no commit");
        floor1.push_back(one.roundTrip());
        floor3.push_back(three.roundTrip());
    }
    double p50 = percentile(changes, 50);
    state.counters["p50_us"] = p50;
    state.counters["p99_us"] = percentile(changes, 99);
    state.counters["floor1_us"] = percentile(floor1, 50);
    state.counters["floor3_us"] = percentile(floor3, 50);
    state.counters["x_floor1"] = p50 / percentile(floor1, 50);
    state.counters["x_floor3"] = p50 / percentile(floor3, 50);
    const double n = static_cast<double>(state.iterations());
    state.counters["allocs_per_change"] = static_cast<double>(gAllocations - allocations) / n;
    state.counters["bytes_per_change"] = static_cast<double>(gAllocatedBytes - bytes) / n;
}
BENCHMARK(BM_ChangeAgainstItsFloor)
        ->Arg(vessa::SettingsTable::kReverbSuppression)
        ->Arg(vessa::SettingsTable::kIeqAmount)
        ->ArgName("id")
        ->Unit(benchmark::kMicrosecond)
        ->Iterations(5000);

// Rounds of 50 ms: readers run while changes of id 114 are made one after another.
struct ReadRound {
    double readsPerSecond;
    std::vector<double> changes;
};

ReadRound readBesideChanges(int readers) {
    Bench& bench = Bench::get();
    std::atomic<bool> stop{false};
    std::atomic<uint64_t> reads{0};
    std::atomic<bool> outOfRange{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < readers; ++i) {
        threads.emplace_back([&] {
            runOnCpu(-1);
            uint64_t mine = 0;
            while (!stop) {
                int32_t preset = bench.read(vessa::SettingsTable::kIeqPreset);
                if (preset < 0 || preset > 3) outOfRange = true;
                ++mine;
            }
            reads += mine;
        });
    }
    ReadRound round;
    auto begin = Clock::now();
    while (Clock::now() - begin < std::chrono::milliseconds(50)) {
        round.changes.push_back(bench.change(vessa::SettingsTable::kReverbSuppression));
    }
    stop = true;
    for (std::thread& t : threads) t.join();
    round.readsPerSecond = reads / (micros(begin, Clock::now()) / 1e6);
    if (outOfRange) round.readsPerSecond = -1;
    return round;
}

void BM_ReadsBesideChanges(benchmark::State& state) {
    std::vector<double> reads1, reads3, changes1, changes3;
    for (auto _ : state) {
        ReadRound one = readBesideChanges(1);
        ReadRound three = readBesideChanges(3);
        if (one.readsPerSecond < 0 || three.readsPerSecond < 0) {
            state.SkipWithError("a read answered outside 0..3");
        }
        reads1.push_back(one.readsPerSecond);
        reads3.push_back(three.readsPerSecond);
        changes1.insert(changes1.end(), one.changes.begin(), one.changes.end());
        changes3.insert(changes3.end(), three.changes.begin(), three.changes.end());
    }
    state.counters["reads_s_1"] = percentile(reads1, 50);
    state.counters["reads_s_3"] = percentile(reads3, 50);
    state.counters["change_us_1"] = percentile(changes1, 50);
    state.counters["change_us_3"] = percentile(changes3, 50);
    state.counters["change_x"] = percentile(changes3, 50) / percentile(changes1, 50);
}
BENCHMARK(BM_ReadsBesideChanges)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

BENCHMARK_MAIN();
