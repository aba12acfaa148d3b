#pragma once

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "TempDir.h"
#include "model/ParameterValues.h"
#include "platform/FileSystemRoot.h"

namespace vessa::test {

using Strings = std::vector<std::string>;

// Moves the filesystem root into a fresh temporary directory for one test.
class ScopedRoot {
  public:
    ScopedRoot() : mPrevious(FileSystemRoot::get()) { FileSystemRoot::set(mDir.path()); }
    ~ScopedRoot() { FileSystemRoot::set(mPrevious); }
    std::string databasePath() const { return mDir.path() + "/data/vendor/vessa/zan_sqlite3.db"; }

    // Checks the database file from outside the code under test: the output lines of
    // one sqlite3 command-line run, read-only ("<null>" for NULL, errors included).
    Strings sql(const std::string& command) const {
        Strings lines;
        const std::string cli = "sqlite3 -readonly -nullvalue '<null>' '" + databasePath() +
                                "' \"" + command + "\" 2>&1";
        FILE* pipe = popen(cli.c_str(), "r");
        char line[8192];
        while (pipe != nullptr && fgets(line, sizeof(line), pipe) != nullptr) {
            lines.emplace_back(line, strcspn(line, "\n"));
        }
        if (pipe != nullptr) pclose(pipe);
        return lines;
    }

  private:
    TempDir mDir;
    std::string mPrevious;
};

// Every valid parameter but ieq_id, every other one as a 20-value list and the rest as
// a single value; `seed` makes records of one kind differ.
inline void fillAll(ParameterValues& record, int seed) {
    for (Parameter p : record.getValidParams()) {
        if (p == Parameter::IEQ_ID) continue;
        const int base = toInt(p) * 7 + seed * 131;
        std::vector<int> values(toInt(p) % 2 ? 20 : 1);
        for (size_t i = 0; i < values.size(); ++i) values[i] = (i % 2 ? -1 : 1) * (base + i * 47);
        record.set(p, values);
    }
}

}  // namespace vessa::test
