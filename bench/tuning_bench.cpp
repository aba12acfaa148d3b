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

#include "tuning/TuningFileParser.h"

namespace {

const std::string kDefaultFile =
        std::string(VESSA_SOURCE_DIR) + "/etc/multimedia_vessa_zan_default.xml";

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Renames every attribute `attr` of `block`: name="x" becomes name="x_<suffix>".
std::string renamed(std::string block, const std::string& attr, const std::string& suffix) {
    const std::string key = " " + attr + "=\"";
    for (size_t pos = block.find(key); pos != std::string::npos; pos = block.find(key, pos)) {
        size_t close = block.find('"', pos + key.size());
        block.insert(close, "_" + suffix);
        pos = close;
    }
    return block;
}

// The default file with its tunings replicated, under new tuning names and
// device ids, until it is at least ten times as large.
std::string tenfoldText(const std::string& text) {
    const std::string open = "    <tuning ";
    const std::string close = "</tuning>\n";
    size_t first = text.find(open);
    size_t last = text.rfind(close) + close.size();
    const std::string tunings = text.substr(first, last - first);
    std::string out = text.substr(0, last);
    for (int copy = 1; out.size() < 10 * text.size(); ++copy) {
        out += renamed(renamed(tunings, "name", "copy" + std::to_string(copy)), "id",
                       "copy" + std::to_string(copy));
    }
    return out + text.substr(last);
}

// The generated file, written once into a temporary folder removed at exit.
class TenfoldFile {
  public:
    TenfoldFile() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base ? base : "/tmp") + "/vessa-bench-XXXXXX";
        if (mkdtemp(pattern.data()) == nullptr) return;
        mDir = pattern;
        mPath = mDir + "/tenfold.xml";
        std::ofstream(mPath, std::ios::binary) << tenfoldText(readText(kDefaultFile));
    }
    ~TenfoldFile() {
        if (mDir.empty()) return;
        unlink(mPath.c_str());
        rmdir(mDir.c_str());
    }
    const std::string& path() const { return mPath; }

  private:
    std::string mDir;
    std::string mPath;
};

const std::string& tenfoldFile() {
    static TenfoldFile sFile;
    return sFile.path();
}

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
    parseWithTuningFileParser(state, tenfoldFile());
}
void BM_Libxml2ReadDefaultFile(benchmark::State& state) {
    readWithLibxml2(state, kDefaultFile);
}
void BM_Libxml2ReadTenfoldFile(benchmark::State& state) {
    readWithLibxml2(state, tenfoldFile());
}

BENCHMARK(BM_ParseDefaultFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ParseTenfoldFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2ReadDefaultFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Libxml2ReadTenfoldFile)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
