// Parsing the tuning files: the sample default file, and a generated file ten
// times its size (the sample's tunings replicated under new names). The bare
// libxml2 read of the same files is measured beside them as the floor.

#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "BenchSupport.h"
#include "tuning/TuningFileParser.h"

namespace {

using vessa::bench::readText;

const std::string& kDefaultFile = vessa::bench::sampleDefaultFile();

void parseWithTuningFileParser(benchmark::State& state, const std::string& path) {
    const int64_t bytes = static_cast<int64_t>(readText(path).size());
    size_t tunings = 0;
    for (auto _ : state) {
        vessa::TuningFileParser parser;
        if (parser.setTuningFile(path) != 0) {
            state.SkipWithError("parse failed");
            return;
        }
        tunings = parser.getDeviceData()->getTunings().size();
        benchmark::DoNotOptimize(tunings);
    }
    state.SetBytesProcessed(state.iterations() * bytes);
    state.counters["tunings"] = static_cast<double>(tunings);
    state.counters["kB"] = static_cast<double>(bytes) / 1024.0;
}

// What any reader of the file pays: libxml2 building and freeing the tree.
void readWithLibxml2(benchmark::State& state, const std::string& path) {
    const int64_t bytes = static_cast<int64_t>(readText(path).size());
    for (auto _ : state) {
        xmlDocPtr doc = xmlReadFile(path.c_str(), nullptr, 0);
        if (doc == nullptr) {
            state.SkipWithError("read failed");
            return;
        }
        xmlFreeDoc(doc);
        xmlCleanupParser();
    }
    state.SetBytesProcessed(state.iterations() * bytes);
}

void BM_ParseDefaultFile(benchmark::State& state) {
    parseWithTuningFileParser(state, kDefaultFile);
}
void BM_ParseTenfoldFile(benchmark::State& state) {
    parseWithTuningFileParser(state, vessa::bench::tenfoldSampleFile());
}
void BM_Libxml2ReadDefaultFile(benchmark::State& state) {
    readWithLibxml2(state, kDefaultFile);
}
void BM_Libxml2ReadTenfoldFile(benchmark::State& state) {
    readWithLibxml2(state, vessa::bench::tenfoldSampleFile());
}

BENCHMARK(BM_ParseDefaultFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseTenfoldFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2ReadDefaultFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2ReadTenfoldFile)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
