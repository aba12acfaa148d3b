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

void SqlStatement::reset() {
    if (mPrepared != SQLITE_OK) return;
    sqlite3_reset(mStatement);
    sqlite3_clear_bindings(mStatement);
}

void SqlStatement::bindText(int index, const char* text, size_t size) {
    if (mPrepared == SQLITE_OK) {
        sqlite3_bind_text(mStatement, index, text, static_cast<int>(size), SQLITE_STATIC);
    }
}

void SqlStatement::bindInteger(int index, long long value) {
    if (mPrepared == SQLITE_OK) sqlite3_bind_int64(mStatement, index, value);
}

void SqlStatement::bindNull(int index) {
    if (mPrepared == SQLITE_OK) sqlite3_bind_null(mStatement, index);
}

int SqlStatement::columnCount() const {
    return mPrepared == SQLITE_OK ? sqlite3_column_count(mStatement) : 0;
}

std::string SqlStatement::text(int column, bool* isNull) const {
    const char* value = textOrNull(column);
    if (isNull != nullptr) *isNull = value == nullptr;
    return value != nullptr ? value : "";
}

const char* SqlStatement::textOrNull(int column) const {
    if (sqlite3_column_type(mStatement, column) == SQLITE_NULL) return nullptr;
    const unsigned char* value = sqlite3_column_text(mStatement, column);
    return value != nullptr ? reinterpret_cast<const char*>(value) : "";
}

const char* SqlStatement::columnName(int column) const {
    return sqlite3_column_name(mStatement, column);
}

std::string SqlStatement::expandedSql() const {
    if (mPrepared != SQLITE_OK) return std::string();
    char* sql = sqlite3_expanded_sql(mStatement);
    std::string out = sql != nullptr ? sql : sqlite3_sql(mStatement);
    sqlite3_free(sql);
    return out;
}

}  // namespace vessa
