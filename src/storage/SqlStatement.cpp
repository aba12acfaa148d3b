#include "storage/SqlStatement.h"

#include <sqlite3.h>

namespace vessa {

SqlStatement::SqlStatement(sqlite3* db, const std::string& sql)
    : mPrepared(db == nullptr ? SQLITE_MISUSE
                              : sqlite3_prepare_v2(db, sql.c_str(), -1, &mStatement, nullptr)) {}

SqlStatement::~SqlStatement() {
    sqlite3_finalize(mStatement);
}

int SqlStatement::step() {
    return mPrepared == SQLITE_OK ? sqlite3_step(mStatement) : mPrepared;
}

int SqlStatement::columnCount() const {
    return mPrepared == SQLITE_OK ? sqlite3_column_count(mStatement) : 0;
}

std::string SqlStatement::text(int column, bool* isNull) const {
    bool null = sqlite3_column_type(mStatement, column) == SQLITE_NULL;
    if (isNull != nullptr) *isNull = null;
    const unsigned char* value = null ? nullptr : sqlite3_column_text(mStatement, column);
    return value != nullptr ? reinterpret_cast<const char*>(value) : "";
}

const char* SqlStatement::columnName(int column) const {
    return sqlite3_column_name(mStatement, column);
}

}  // namespace vessa
