// Start-up against its floors, at 1x, 4x and 10x the sample file, with the data
// directory in RAM (/dev/shm when there is one). Each iteration measures the start
// and its floor one after the other, so the ratio is taken under the same load.
//   warm: the database is there and the file unchanged; floor: opening the same
//         database and reading every row of every table.
//   cold: the file changed; floor: libxml2 reading the file, plus SQLite inserting
//         the same rows into a fresh database in one transaction.
// A start is what a process life does: the manager builds the context and a
// controller brings the effect to the full state.
// Then the resident memory after a start, each in a fresh child process.

#include <android/log.h>
#include <benchmark/benchmark.h>
#include <libxml/parser.h>
#include <sqlite3.h>
#include <unistd.h>
#include <utime.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "context/SxContextManager.h"
#include "effect/AupController.h"
#include "effect/AupEffect.h"
#include "platform/FileSystemRoot.h"

namespace {

using Clock = std::chrono::steady_clock;
using vessa::bench::TempFolder;

double seconds(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double>(end - begin).count();
}

void startOnce() {
    vessa::SxContextManager manager;
    vessa::SxContext* context = manager.getSxContext();
    if (context == nullptr) return;
    vessa::AupEffect effect(0, android::String16("bench"));
    vessa::AupController controller(2, effect);
    context->registerObserver(&controller);
    context->unregisterObserver(&controller);
}

// A device root in RAM holding the scaled default file.
class Root {
  public:
    explicit Root(size_t factor) {
        if (access("/dev/shm", W_OK) == 0) setenv("TMPDIR", "/dev/shm", 1);
        mFolder = std::make_unique<TempFolder>();
        std::string text = vessa::bench::readText(vessa::bench::sampleDefaultFile());
        if (factor > 1) text = vessa::bench::scaledText(text, factor);
        mFile = mFolder->write(vessa::SxContextManager::kDefaultTuningFile, text);
        mDatabase = mFolder->path() + "/data/vendor/vessa/zan_sqlite3.db";
        vessa::FileSystemRoot::set(mFolder->path());
        startOnce();  // the first fill, outside any measurement
    }
    ~Root() { vessa::FileSystemRoot::set("/"); }
    // A new modification time: the next start refills the database.
    void touch() {
        struct utimbuf times = {mTime, ++mTime};
        utime(mFile.c_str(), &times);
    }
    const std::string& file() const { return mFile; }
    const std::string& database() const { return mDatabase; }
    const std::string& folder() const { return mFolder->path(); }

  private:
    std::unique_ptr<TempFolder> mFolder;
    std::string mFile, mDatabase;
    time_t mTime = time(nullptr);
};

struct Table {
    std::string create;
    std::string insert;
    std::vector<std::vector<std::string>> rows;
};

// Every table of a database with its rows, to be inserted again by the cold floor.
std::vector<Table> readTables(const std::string& path) {
    std::vector<Table> tables;
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    sqlite3_stmt* list = nullptr;
    sqlite3_prepare_v2(db, "SELECT name, sql FROM sqlite_master WHERE type='table'", -1, &list,
                       nullptr);
    while (sqlite3_step(list) == SQLITE_ROW) {
        Table table;
        const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(list, 0));
        table.create = reinterpret_cast<const char*>(sqlite3_column_text(list, 1));
        sqlite3_stmt* rows = nullptr;
        sqlite3_prepare_v2(db, ("SELECT * FROM " + name).c_str(), -1, &rows, nullptr);
        const int columns = sqlite3_column_count(rows);
        table.insert = "INSERT INTO " + name + " VALUES (?";
        for (int c = 1; c < columns; ++c) table.insert += ", ?";
        table.insert += ")";
        while (sqlite3_step(rows) == SQLITE_ROW) {
            std::vector<std::string> row;
            for (int c = 0; c < columns; ++c) {
                const unsigned char* text = sqlite3_column_text(rows, c);
                row.push_back(text != nullptr ? reinterpret_cast<const char*>(text) : "");
            }
            table.rows.push_back(std::move(row));
        }
        sqlite3_finalize(rows);
        tables.push_back(std::move(table));
    }
    sqlite3_finalize(list);
    sqlite3_close(db);
    return tables;
}

// The warm floor: every row of every table read once.
size_t readAllRows(const std::string& path) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    size_t bytes = 0;
    sqlite3_stmt* list = nullptr;
    sqlite3_prepare_v2(db, "SELECT name FROM sqlite_master WHERE type='table'", -1, &list, nullptr);
    while (sqlite3_step(list) == SQLITE_ROW) {
        const std::string name = reinterpret_cast<const char*>(sqlite3_column_text(list, 0));
        sqlite3_stmt* rows = nullptr;
        sqlite3_prepare_v2(db, ("SELECT * FROM " + name).c_str(), -1, &rows, nullptr);
        const int columns = sqlite3_column_count(rows);
        while (sqlite3_step(rows) == SQLITE_ROW) {
            for (int c = 0; c < columns; ++c) {
                sqlite3_column_text(rows, c);
                bytes += static_cast<size_t>(sqlite3_column_bytes(rows, c));
            }
        }
        sqlite3_finalize(rows);
    }
    sqlite3_finalize(list);
    sqlite3_close(db);
    return bytes;
}

// The cold floor: the file read by libxml2, the rows inserted in one transaction.
void parseAndInsert(const std::string& file, const std::vector<Table>& tables,
                    const std::string& path) {
    xmlFreeDoc(xmlReadFile(file.c_str(), nullptr, 0));
    unlink(path.c_str());
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_exec(db, "BEGIN", nullptr, nullptr, nullptr);
    for (const Table& table : tables) {
        sqlite3_exec(db, table.create.c_str(), nullptr, nullptr, nullptr);
        sqlite3_stmt* insert = nullptr;
        sqlite3_prepare_v2(db, table.insert.c_str(), -1, &insert, nullptr);
        for (const auto& row : table.rows) {
            for (size_t c = 0; c < row.size(); ++c) {
                sqlite3_bind_text(insert, static_cast<int>(c + 1), row[c].c_str(), -1,
                                  SQLITE_STATIC);
            }
            sqlite3_step(insert);
            sqlite3_reset(insert);
        }
        sqlite3_finalize(insert);
    }
    sqlite3_exec(db, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(db);
}

void startAgainstFloor(benchmark::State& state, bool cold) {
    Root root(static_cast<size_t>(state.range(0)));
    const std::vector<Table> tables = readTables(root.database());
    const std::string scratch = root.folder() + "/floor.db";
    double start = 0, floor = 0;
    for (auto _ : state) {
        if (cold) root.touch();
        Clock::time_point begin = Clock::now();
        startOnce();
        vessa::bench::settleFreedMemory();
        Clock::time_point started = Clock::now();
        if (cold) {
            parseAndInsert(root.file(), tables, scratch);
        } else {
            benchmark::DoNotOptimize(readAllRows(root.database()));
        }
        vessa::bench::settleFreedMemory();
        Clock::time_point floored = Clock::now();
        start += seconds(begin, started);
        floor += seconds(started, floored);
        state.SetIterationTime(seconds(begin, started));
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["start_ms"] = 1000 * start / n;
    state.counters["floor_ms"] = 1000 * floor / n;
    state.counters["x_floor"] = start / floor;
}

void BM_WarmStart(benchmark::State& state) {
    startAgainstFloor(state, false);
}
void BM_ColdStart(benchmark::State& state) {
    startAgainstFloor(state, true);
}
// The sample file at 1x, 4x and 10x its size.
void atScales(benchmark::internal::Benchmark* b) {
    b->Arg(1)->Arg(4)->Arg(10)->ArgName("x")->UseManualTime()->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_WarmStart)->Apply(atScales);
BENCHMARK(BM_ColdStart)->Apply(atScales);

// VmRSS of this process, in kB.
long residentKb() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return -1;
}

// The resident memory of a fresh process (this program again) after one start.
long residentAfterStart(Root& root, bool cold) {
    if (cold) root.touch();
    const std::string command =
            "/proc/" + std::to_string(getpid()) + "/exe --resident-after-start " + root.folder();
    FILE* child = popen(command.c_str(), "r");
    if (child == nullptr) return -1;
    long kb = -1;
    if (fscanf(child, "%ld", &kb) != 1) kb = -1;
    pclose(child);
    return kb;
}

void BM_ResidentAfterStart(benchmark::State& state) {
    Root root(static_cast<size_t>(state.range(0)));
    long cold = 0, warm = 0;
    for (auto _ : state) {
        cold = residentAfterStart(root, true);
        warm = residentAfterStart(root, false);
    }
    state.counters["cold_MB"] = static_cast<double>(cold) / 1024;
    state.counters["warm_MB"] = static_cast<double>(warm) / 1024;
    state.counters["x_warm"] = static_cast<double>(cold) / static_cast<double>(warm);
}
BENCHMARK(BM_ResidentAfterStart)
        ->Arg(1)
        ->Arg(10)
        ->ArgName("x")
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    if (argc == 3 && std::string(argv[1]) == "--resident-after-start") {
        vessa::FileSystemRoot::set(argv[2]);
        startOnce();
        printf("%ld\n", residentKb());
        return 0;
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
