// vessa-tune check against its floor: the service's own parser reading the same
// file. Both run in every iteration, one after the other, so that the ratio is
// taken under the same conditions; the sample file and one ten times its size.

#include <benchmark/benchmark.h>

#include <chrono>
#include <string>

#include "BenchSupport.h"
#include "TuningChecker.h"
#include "tuning/TuningFileParser.h"

namespace {

using Clock = std::chrono::steady_clock;

const std::string& kDefaultFile = vessa::bench::sampleDefaultFile();

void checkAgainstParser(benchmark::State& state, const std::string& path) {
    vessa::TuningChecker checker(VESSA_SCHEMA_SOURCE);
    double parseSeconds = 0;
    double checkSeconds = 0;
    size_t findings = 0;
    for (auto _ : state) {
        Clock::time_point start = Clock::now();
        {
            vessa::TuningFileParser parser;
            if (parser.setTuningFile(path) != 0) {
                state.SkipWithError("parse failed");
                return;
            }
        }
        vessa::bench::settleFreedMemory();
        Clock::time_point parsed = Clock::now();
        findings = checker.check(path).size();
        vessa::bench::settleFreedMemory();
        Clock::time_point checked = Clock::now();
        parseSeconds += std::chrono::duration<double>(parsed - start).count();
        checkSeconds += std::chrono::duration<double>(checked - parsed).count();
        state.SetIterationTime(std::chrono::duration<double>(checked - parsed).count());
    }
    state.counters["parse_ms"] = 1000 * parseSeconds / static_cast<double>(state.iterations());
    state.counters["check_ms"] = 1000 * checkSeconds / static_cast<double>(state.iterations());
    state.counters["ratio"] = checkSeconds / parseSeconds;
    state.counters["findings"] = static_cast<double>(findings);
}

void BM_CheckSample(benchmark::State& state) {
    checkAgainstParser(state, kDefaultFile);
}
void BM_CheckTenfold(benchmark::State& state) {
    checkAgainstParser(state, vessa::bench::tenfoldSampleFile());
}

BENCHMARK(BM_CheckSample)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CheckTenfold)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
