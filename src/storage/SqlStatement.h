#pragma once

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace vessa {

// One prepared statement, finalised when it goes out of scope. A statement kept for
// reuse is reset (and its bindings cleared) before each use.
class SqlStatement {
  public:
    SqlStatement(sqlite3* db, const std::string& sql);
    ~SqlStatement();
    SqlStatement(const SqlStatement&) = delete;
    SqlStatement& operator=(const SqlStatement&) = delete;

    // SQLITE_OK when it was prepared; the other calls need that.
    int prepared() const { return mPrepared; }
    // One step: SQLITE_ROW, SQLITE_DONE or an error code.
    int step();
    // Ready to run again: no row held (so no lock), no value bound.
    void reset();
    // Parameters count from 1. The text must stay valid until the next step.
    void bindText(int index, const char* text, size_t size);
    void bindText(int index, const std::string& text) { bindText(index, text.data(), text.size()); }
    void bindInteger(int index, long long value);
    void bindNull(int index);
    int columnCount() const;
    // The column's text; "" for NULL. `isNull` (may be null) tells them apart.
    std::string text(int column, bool* isNull = nullptr) const;
    // The column's text without a copy, valid until the next step; null for NULL.
    const char* textOrNull(int column) const;
    const char* columnName(int column) const;
    // The statement with its bound values, for a log line.
    std::string expandedSql() const;

  private:
    sqlite3_stmt* mStatement = nullptr;
    int mPrepared;
};

}  // namespace vessa
