// Start-up of the audio context from the tuning files. Cold: the default file
// changed, so it is parsed, the database refilled, the context loaded and the
// whole state sent to the effect. Warm: the file is unchanged, so the context
// comes from the database alone, then the whole state is sent.

#include <benchmark/benchmark.h>
#include <utime.h>

#include <memory>

#include "BenchSupport.h"
#include "context/SxContextManager.h"
#include "effect/AupController.h"
#include "effect/AupEffect.h"
#include "platform/FileSystemRoot.h"

namespace {

using vessa::bench::TempFolder;

// One process life: the manager builds the context and a controller brings
// the effect to the full state.
void startOnce(benchmark::State& state) {
    vessa::SxContextManager manager;
    vessa::SxContext* context = manager.getSxContext();
    if (context == nullptr) {
        state.SkipWithError("no context");
        return;
    }
    vessa::AupEffect effect(0, android::String16("bench"));
    vessa::AupController controller(2, effect);
    context->registerObserver(&controller);
    context->unregisterObserver(&controller);
}

void start(benchmark::State& state, bool tenfold, bool cold) {
    TempFolder root;
    std::string text = vessa::bench::readText(vessa::bench::sampleDefaultFile());
    if (tenfold) text = vessa::bench::tenfoldText(text);
    std::string path = root.write(vessa::SxContextManager::kDefaultTuningFile, text);
    vessa::FileSystemRoot::set(root.path());
    startOnce(state);  // the first fill, outside the measurement
    time_t mtime = time(nullptr);
    for (auto _ : state) {
        if (cold) {
            state.PauseTiming();
            struct utimbuf times = {mtime, ++mtime};
            utime(path.c_str(), &times);
            state.ResumeTiming();
        }
        startOnce(state);
    }
    state.counters["kB"] = static_cast<double>(text.size()) / 1024.0;
    vessa::FileSystemRoot::set("/");
}

// One full save of the sample's state (every profile's user copy, the selected
// profile, the switch and the port selections), as an ordinary client's departure
// makes.
void BM_FullSaveSample(benchmark::State& state) {
    TempFolder root;
    root.write(vessa::SxContextManager::kDefaultTuningFile,
               vessa::bench::readText(vessa::bench::sampleDefaultFile()));
    vessa::FileSystemRoot::set(root.path());
    {
        vessa::SxContextManager manager;
        vessa::SxContext* context = manager.getSxContext();
        if (context == nullptr) {
            state.SkipWithError("no context");
        } else {
            for (auto _ : state) context->save();
        }
    }
    vessa::FileSystemRoot::set("/");
}

void BM_ColdStartSample(benchmark::State& state) {
    start(state, false, true);
}
void BM_WarmStartSample(benchmark::State& state) {
    start(state, false, false);
}
void BM_ColdStartTenfold(benchmark::State& state) {
    start(state, true, true);
}
void BM_WarmStartTenfold(benchmark::State& state) {
    start(state, true, false);
}

BENCHMARK(BM_FullSaveSample)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColdStartSample)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WarmStartSample)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColdStartTenfold)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WarmStartTenfold)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
