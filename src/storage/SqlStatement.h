#pragma once

#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace vessa {

// One prepared statement, finalised when it goes out of scope.
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
    int columnCount() const;
    // The column's text; "" for NULL. `isNull` (may be null) tells them apart.
    std::string text(int column, bool* isNull = nullptr) const;
    const char* columnName(int column) const;

  private:
    sqlite3_stmt* mStatement = nullptr;
    int mPrepared;
};

}  // namespace vessa
