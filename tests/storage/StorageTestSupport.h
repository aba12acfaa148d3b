#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

#include "TempDir.h"
#include "model/ParameterValues.h"

namespace vessa::test {

// Moves the filesystem root into a fresh temporary directory for one test.
class ScopedRoot {
  public:
    ScopedRoot();
    ~ScopedRoot();
    std::string databasePath() const { return mDir.path() + "/data/vendor/vessa/zan_sqlite3.db"; }

  private:
    TempDir mDir;
    std::string mPrevious;
};

// A second, read-only connection: checks the file from outside the code under test.
class OutsideView {
  public:
    explicit OutsideView(const std::string& path);
    ~OutsideView() { sqlite3_close_v2(mDb); }
    // The first column of every row as text; "<null>" for NULL.
    std::vector<std::string> column(const std::string& sql);
    int count(const std::string& table, const std::string& where = "");
    // SQLite's result code of running the statement to its end.
    int run(const std::string& sql);

  private:
    sqlite3* mDb = nullptr;
};

// Every valid parameter but ieq_id, with 20-band lists for the list parameters;
// `seed` makes records of one kind differ.
void fillAll(ParameterValues& record, int seed);

}  // namespace vessa::test
