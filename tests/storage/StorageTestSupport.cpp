#include "StorageTestSupport.h"

#include "platform/FileSystemRoot.h"

namespace vessa::test {

ScopedRoot::ScopedRoot() : mPrevious(FileSystemRoot::get()) {
    FileSystemRoot::set(mDir.path());
}

ScopedRoot::~ScopedRoot() {
    FileSystemRoot::set(mPrevious);
}

OutsideView::OutsideView(const std::string& path) {
    sqlite3_open_v2(path.c_str(), &mDb, SQLITE_OPEN_READONLY, nullptr);
}

std::vector<std::string> OutsideView::column(const std::string& sql) {
    std::vector<std::string> out;
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(mDb, sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
        return {"<prepare failed: " + std::string(sqlite3_errmsg(mDb)) + ">"};
    }
    while (sqlite3_step(stmt) == SQLITE_ROW) {
        const unsigned char* text = sqlite3_column_text(stmt, 0);
        out.push_back(text ? reinterpret_cast<const char*>(text) : "<null>");
    }
    sqlite3_finalize(stmt);
    return out;
}

int OutsideView::count(const std::string& table, const std::string& where) {
    std::vector<std::string> rows = column("SELECT COUNT(*) FROM " + table + where);
    return rows.size() == 1 ? std::stoi(rows[0]) : -1;
}

int OutsideView::run(const std::string& sql) {
    sqlite3_stmt* stmt = nullptr;
    int ret = sqlite3_prepare_v2(mDb, sql.c_str(), -1, &stmt, nullptr);
    while (ret == SQLITE_OK || ret == SQLITE_ROW) ret = sqlite3_step(stmt);
    sqlite3_finalize(stmt);
    return ret;
}

void fillAll(ParameterValues& record, int seed) {
    static const ParamSet kLists = makeParamSet(
            {1, 2, 3, 4, 5, 13, 16, 17, 18, 19, 24, 25, 36, 38, 46, 50, 53, 54, 55, 56, 68, 81});
    for (Parameter p : record.getValidParams()) {
        if (p == Parameter::IEQ_ID) continue;
        const int base = toInt(p) * 7 + seed * 131;
        std::vector<int> values(kLists.count(p) ? 20 : 1);
        for (size_t i = 0; i < values.size(); ++i) values[i] = (i % 2 ? -1 : 1) * (base + i * 47);
        record.set(p, values);
    }
}

}  // namespace vessa::test
