#define LOG_TAG "DatabaseHelper"

#include "storage/DatabaseHelper.h"

#include <log/log.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "model/StringUtils.h"
#include "platform/FileSystemRoot.h"
#include "storage/SqlStatement.h"

namespace vessa {

namespace {

constexpr const char* kDefaultOrigin = "default";
constexpr const char* kOemOrigin = "oem";

#define DB_LOGD(...) ALOGD(__VA_ARGS__)
#define DB_LOGW(...) ALOGW(__VA_ARGS__)
#define DB_LOGE(...) ALOGE(__VA_ARGS__)

// Appends a quoted SQL text literal. Doubling the single quotes keeps a value such
// as a name holding "'" inside its literal instead of ending the statement there.
void appendQuoted(std::string& sql, const std::string& value) {
    sql += '\'';
    size_t start = 0;
    for (size_t q = value.find('\''); q != std::string::npos; q = value.find('\'', start)) {
        sql.append(value, start, q - start + 1);
        sql += '\'';
        start = q + 1;
    }
    sql.append(value, start, std::string::npos);
    sql += '\'';
}

std::string quote(const std::string& value) {
    std::string out;
    out.reserve(value.size() + 2);
    appendQuoted(out, value);
    return out;
}

const std::string* column(const DatabaseHelper::Row& row, const char* name) {
    for (const auto& [columnName, text] : row) {
        if (columnName == name) return &text;
    }
    return nullptr;
}

bool parseInteger(const char* text, long long* out) {
    if (*text == '\0') return false;
    char* end = nullptr;
    errno = 0;
    long long value = std::strtoll(text, &end, 10);
    if (errno != 0 || *end != '\0') return false;
    *out = value;
    return true;
}

bool parseInteger(const std::string& text, long long* out) {
    return parseInteger(text.c_str(), out);
}

long long readInteger(const char* text, long long fallback) {
    long long value = fallback;
    if (text != nullptr) parseInteger(text, &value);
    return value;
}

// Flags are written from dump lines as "true"/"false"; digits are read too, any
// non-zero number being true.
bool readFlag(const char* text, bool fallback) {
    if (text == nullptr) return fallback;
    if (strcmp(text, "true") == 0) return true;
    if (strcmp(text, "false") == 0) return false;
    long long value = 0;
    return parseInteger(text, &value) ? value != 0 : fallback;
}

// A key column as a WHERE clause compares it: the text must be the number's own
// decimal form ("03" is not profile 3).
bool readKey(const char* text, int* out) {
    long long value = 0;
    if (text == nullptr || !parseInteger(text, &value) || value < INT_MIN || value > INT_MAX ||
        std::to_string(value) != text) {
        return false;
    }
    *out = static_cast<int>(value);
    return true;
}

// Every column named after a parameter becomes that parameter's list; an empty text is
// an empty list. NULL columns are absent from the row, so their parameters stay unset.
// The value part of a dump line; logged and empty when the line has no "=".
std::string dumpValue(const std::string& line) {
    std::string value;
    if (!getStringValues(line, value)) DB_LOGE("invalid string value");
    return value;
}

// A record's values by column, from its dump: the header lines in order, then the
// parameter lines, matched to their columns by name, so a record that lacks a
// parameter still fills the right columns. A column left without a value is NULL.
struct DumpValues {
    std::vector<std::string> values;
    std::vector<bool> present;

    DumpValues(const DatabaseSchema::Table& table, const std::vector<std::string>& lines) {
        // The row id and the origin are not in the dump's values.
        const size_t headerCount = table.leadingColumns.size() - 2;
        values.resize(headerCount + table.parameterColumns.size());
        present.assign(values.size(), false);
        // The first dump line is the id, written as the row id.
        size_t next = 1;
        for (size_t i = 0; i < headerCount && next < lines.size(); ++i) {
            values[i] = dumpValue(lines[next++]);
            present[i] = true;
        }
        for (; next < lines.size(); ++next) {
            const std::string& line = lines[next];
            size_t eq = line.find('=');
            Parameter p;
            if (eq == std::string::npos) {
                DB_LOGE("invalid string value");
            } else if (!parameterFromName(line.substr(0, eq), &p) ||
                       table.parameterSlot[toInt(p)] < 0) {
                DB_LOGW("no column for [%s] in %s, not stored", line.substr(0, eq).c_str(),
                        table.name.c_str());
            } else {
                size_t slot = headerCount + static_cast<size_t>(table.parameterSlot[toInt(p)]);
                values[slot] = dumpValue(line);
                present[slot] = true;
            }
        }
    }
};

// One row of a record table, read through the table's own select: the columns
// sit where the schema puts them, so a name is looked up among the few leading
// columns and the parameter columns need no look-up at all.
class TableRow {
  public:
    TableRow(const SqlStatement& statement, TableType type)
        : mStatement(statement), mTable(DatabaseSchema::table(type)) {}

    // The leading column's text; null for NULL.
    const char* text(const char* name) const {
        for (size_t i = 0; i < mTable.leadingColumns.size(); ++i) {
            if (mTable.leadingColumns[i] == name) {
                return mStatement.textOrNull(static_cast<int>(i));
            }
        }
        return nullptr;
    }

    // Every parameter column becomes that parameter's list; an empty text is an empty
    // list. NULL columns leave their parameters unset.
    void fillParameters(ParameterValues* record) const {
        std::vector<int> values;
        const int first = static_cast<int>(mTable.leadingColumns.size());
        for (size_t i = 0; i < mTable.parameterColumns.size(); ++i) {
            const char* text = mStatement.textOrNull(first + static_cast<int>(i));
            if (text == nullptr) continue;
            values.clear();
            string2IntVector(text, strlen(text), values);
            record->set(mTable.parameterColumns[i], values);
        }
    }

  private:
    const SqlStatement& mStatement;
    const DatabaseSchema::Table& mTable;
};

void fillRecord(const TableRow& row, IeqPreset* preset) {
    PresetType type = preset->getType();
    if (const char* text = row.text("preset_type")) presetTypeFromName(text, &type);
    *preset = IeqPreset(readInteger(row.text("_id"), preset->getId()), type);
    row.fillParameters(preset);
}

void fillRecord(const TableRow& row, GeqPreset* preset) {
    *preset = GeqPreset(readInteger(row.text("_id"), preset->getId()),
                        readInteger(row.text("profile_id"), preset->getProfileId()));
    row.fillParameters(preset);
}

void fillRecord(const TableRow& row, Profile* profile) {
    const char* name = row.text("name");
    int id = static_cast<int>(readInteger(row.text("profile_id"), profile->getProfileId()));
    *profile = Profile(readInteger(row.text("_id"), profile->getId()), id,
                       name != nullptr ? std::string(name) : profile->getName(),
                       readFlag(row.text("is_mobility"), profile->isMobility()));
    profile->setSelectedGeqPreset(readInteger(row.text("selected_geq_preset_id"), id));
    row.fillParameters(profile);
}

void fillRecord(const TableRow& row, ProfileEndpoint* endpoint) {
    Endpoint kind = endpoint->getEndpoint();
    if (const char* text = row.text("endpoint")) {
        auto it = endpointNameToEndpoint().find(text);
        if (it != endpointNameToEndpoint().end()) kind = it->second;
    }
    // Any text other than the four preset names keeps the type the record had.
    PresetType preset = endpoint->getSelectedIeqPreset();
    if (const char* text = row.text("selected_ieq_preset_type")) presetTypeFromName(text, &preset);
    *endpoint = ProfileEndpoint(static_cast<long>(readInteger(row.text("_id"), endpoint->getId())),
                                readInteger(row.text("profile_id"), endpoint->getProfileId()), kind,
                                preset);
    row.fillParameters(endpoint);
}

void fillRecord(const TableRow& row, Tuning* tuning) {
    const char* name = row.text("name");
    *tuning = Tuning(static_cast<long>(readInteger(row.text("_id"), tuning->getId())),
                     name != nullptr ? std::string(name) : tuning->getName(), tuning->getEndpoint(),
                     readFlag(row.text("is_mono"), tuning->isMono()),
                     readFlag(row.text("is_readonly"), tuning->isReadonly()));
    if (const char* text = row.text("endpoint")) tuning->setEndpoint(text);
    row.fillParameters(tuning);
}

DeviceTuning* newDeviceTuning(const TableRow& row) {
    auto orEmpty = [](const char* text) { return text != nullptr ? text : ""; };
    return new DeviceTuning(readInteger(row.text("_id"), -1), orEmpty(row.text("device")),
                            orEmpty(row.text("port")), orEmpty(row.text("tuning_id")));
}

}  // namespace

DatabaseHelper::DatabaseHelper(const std::string& fileName, bool readOnly) {
    forgetRowCounts();
    std::string directory = FileSystemRoot::resolve(kDirectory);
    mPath = directory + fileName;
    std::error_code ec;
    if (!readOnly) std::filesystem::create_directories(directory, ec);
    if (ec) DB_LOGE("failed to create %s: %s", directory.c_str(), ec.message().c_str());
    // No mutex of SQLite's own on every call: the service never lets two threads use
    // the database at once, so a lock per column read would only cost time.
    int flags = (readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
                SQLITE_OPEN_NOMUTEX;
    int ret = sqlite3_open_v2(mPath.c_str(), &mDb, flags, nullptr);
    if (ret != SQLITE_OK) {
        DB_LOGE("failed to open database %s, ret = %d", mPath.c_str(), ret);
        sqlite3_close_v2(mDb);
        mDb = nullptr;
        return;
    }
    // A rollback journal with full syncs, SQLite's own defaults, made explicit. A
    // commit is on disk before it returns and a crash at any moment leaves the old or
    // the new state; unlike WAL, a database in a directory that cannot be written
    // still opens and reads, so the service keeps its settings and reports the
    // saves that fail.
    run("PRAGMA journal_mode=DELETE");
    run("PRAGMA synchronous=FULL");
    // Another connection (the sqlite3 tool, a second start) is waited for, not given up on.
    sqlite3_busy_timeout(mDb, kBusyTimeoutMs);
}

DatabaseHelper::~DatabaseHelper() {
    mStatements.clear();
    if (mDb != nullptr) sqlite3_close_v2(mDb);
}

void DatabaseHelper::init() {
    for (int type = 0; type < kNumTableTypes; ++type) createTable(static_cast<TableType>(type));
}

void DatabaseHelper::createTable(TableType type) {
    execSQL("CREATE TABLE " + DatabaseSchema::tableName(type) + buildColumnString(type));
}

std::string DatabaseHelper::buildColumnString(TableType type) const {
    return DatabaseSchema::table(type).columnList;
}

void DatabaseHelper::clear() {
    // Statements of the tables about to go would only be prepared again.
    mStatements.clear();
    for (int type = 0; type < kNumTableTypes; ++type) {
        execSQL("DROP TABLE IF EXISTS " + DatabaseSchema::tableName(static_cast<TableType>(type)));
    }
}

void DatabaseHelper::noteFailure(const std::string& what) {
    if (mTransactionDepth > 0 && mTransactionError.empty()) mTransactionError = what;
}

void DatabaseHelper::beginTransaction() {
    if (mTransactionDepth++ > 0) return;
    mTransactionError.clear();
    // A write needs the lock a read transaction cannot give; the read ends here and
    // starts again once the write is done.
    if (mReadOpen && run("COMMIT") == SQLITE_DONE) mReadOpen = false;
    execSQL("BEGIN EXCLUSIVE");
}

void DatabaseHelper::beginRead() {
    mReadWanted = true;
    openRead();
}

void DatabaseHelper::endRead() {
    mReadWanted = false;
    if (mReadOpen && run("COMMIT") == SQLITE_DONE) mReadOpen = false;
}

void DatabaseHelper::openRead() {
    // Only outside a write, and only with nothing else open (autocommit).
    if (mDb == nullptr || mReadOpen || mTransactionDepth > 0 || sqlite3_get_autocommit(mDb) == 0) {
        return;
    }
    mReadOpen = run("BEGIN") == SQLITE_DONE;
}

bool DatabaseHelper::commitTransaction() {
    if (mTransactionDepth == 0) return true;
    if (--mTransactionDepth > 0) return mTransactionError.empty();
    if (mTransactionError.empty() && mDb != nullptr && run("COMMIT") != SQLITE_DONE) {
        noteFailure(sqlite3_errmsg(mDb));
    }
    if (mDb == nullptr) noteFailure("the db is not open");
    forgetRowCounts();
    if (mTransactionError.empty()) {
        mSaveError.clear();
        if (mReadWanted) openRead();
        return true;
    }
    // A BEGIN that failed left nothing to roll back; SQLite may have rolled back itself.
    if (mDb != nullptr && sqlite3_get_autocommit(mDb) == 0) run("ROLLBACK");
    mSaveError = mTransactionError;
    mTransactionError.clear();
    DB_LOGE("Settings not saved to %s: %s; the previous copy stays", mPath.c_str(),
            mSaveError.c_str());
    if (mReadWanted) openRead();
    return false;
}

int DatabaseHelper::run(const std::string& sql) {
    SqlStatement stmt(mDb, sql);
    if (stmt.prepared() != SQLITE_OK) {
        DB_LOGD("failed to prepare SQL : %s", sql.c_str());
        return stmt.prepared();
    }
    int ret = stmt.step();
    if (ret != SQLITE_DONE && ret != SQLITE_ROW) DB_LOGE("failed to exec SQL: %s", sql.c_str());
    return ret;
}

int DatabaseHelper::execSQL(const std::string& sql) {
    if (mDb == nullptr) {
        DB_LOGE("the db is not open...");
        noteFailure("the db is not open");
        return 1;
    }
    // Once a statement failed, the rest of its transaction would only make a mixture.
    if (!mTransactionError.empty()) return 1;
    // Any statement may add or remove rows; counts are known again from the next count.
    forgetRowCounts();
    if (run(sql) != SQLITE_DONE) noteFailure(sqlite3_errmsg(mDb));
    return 1;
}

int DatabaseHelper::getRowCount(const std::string& table) {
    if (mDb == nullptr) {
        DB_LOGE("the db is not open...");
        return -1;
    }
    std::string sql = "SELECT COUNT(*) FROM " + table;
    SqlStatement stmt(mDb, sql);
    if (stmt.prepared() != SQLITE_OK) {
        DB_LOGE("failed to prepare SQL: %s", sql.c_str());
        return -1;
    }
    int count = -1;
    while (stmt.step() == SQLITE_ROW) count = std::atoi(stmt.text(0).c_str());
    return count;
}

bool DatabaseHelper::queryRows(const std::string& sql, std::vector<Row>& rows) {
    if (mDb == nullptr) {
        DB_LOGE("the database is not connected");
        return false;
    }
    SqlStatement stmt(mDb, sql);
    int ret = stmt.prepared();
    if (ret != SQLITE_OK) {
        DB_LOGE("failed to prepare sql command: %s, ret = %d, line %d", sql.c_str(), ret, __LINE__);
        return false;
    }
    const int columns = stmt.columnCount();
    while ((ret = stmt.step()) == SQLITE_ROW) {
        Row row;
        row.reserve(columns);
        for (int i = 0; i < columns; ++i) {
            bool null = false;
            std::string text = stmt.text(i, &null);
            if (!null) row.emplace_back(stmt.columnName(i), std::move(text));
        }
        rows.push_back(std::move(row));
    }
    if (ret != SQLITE_DONE) DB_LOGE("Unknow error... %d", ret);
    return ret == SQLITE_DONE;
}

std::string DatabaseHelper::queryText(const std::string& sql, bool* found) {
    SqlStatement stmt(mDb, sql);
    bool row = stmt.step() == SQLITE_ROW;
    if (found != nullptr) *found = row;
    return row ? stmt.text(0) : std::string();
}

std::string DatabaseHelper::selectAll(TableType type, const std::string& where) const {
    return "SELECT * FROM " + DatabaseSchema::tableName(type) + where;
}

SqlStatement* DatabaseHelper::reusable(const std::string& sql) {
    if (mDb == nullptr) {
        DB_LOGE("the database is not connected");
        return nullptr;
    }
    std::unique_ptr<SqlStatement>& stmt = mStatements[sql];
    if (stmt == nullptr) stmt = std::make_unique<SqlStatement>(mDb, sql);
    if (stmt->prepared() != SQLITE_OK) {
        DB_LOGE("failed to prepare sql command: %s, ret = %d, line %d", sql.c_str(),
                stmt->prepared(), __LINE__);
        // Prepared again next time: the table may exist by then.
        mStatements.erase(sql);
        return nullptr;
    }
    return stmt.get();
}

// ---- inserts ----

void DatabaseHelper::insertValue(IeqPreset* preset, const std::string& customName) {
    if (preset == nullptr) return;
    executeInsertCommand(TableType::IEQ_PRESETS, customName, preset->toString(), preset->getId());
}

void DatabaseHelper::insertValue(GeqPreset* preset, const std::string& customName, long long id) {
    if (preset == nullptr) return;
    executeInsertCommand(TableType::GEQ_PRESETS, customName, preset->toString(), id);
}

void DatabaseHelper::insertValue(Profile* profile, const std::string& customName, long long id) {
    if (profile == nullptr) return;
    executeInsertCommand(TableType::PROFILES, customName, profile->toString(), id);
}

void DatabaseHelper::insertValue(ProfileEndpoint* endpoint, const std::string& customName,
                                 long long id) {
    if (endpoint == nullptr) return;
    executeInsertCommand(TableType::PROFILE_ENDPOINTS, customName, endpoint->toString(), id);
}

void DatabaseHelper::insertValue(Tuning* tuning, const std::string& customName) {
    if (tuning == nullptr) return;
    executeInsertCommand(TableType::TUNINGS, customName, tuning->toString(), tuning->getId());
}

void DatabaseHelper::insertValue(DeviceTuning* deviceTuning, const std::string& customName) {
    if (deviceTuning == nullptr) return;
    executeInsertCommand(TableType::DEVICE_TUNINGS, customName, deviceTuning->toString(),
                         deviceTuning->getId());
}

void DatabaseHelper::executeInsertCommand(TableType type, const std::string& customName,
                                          const std::string& dump, long long id) {
    if (mDb == nullptr) {
        DB_LOGE("the db is not open...");
        return;
    }
    const DatabaseSchema::Table& table = DatabaseSchema::table(type);
    std::vector<std::string> lines;
    splitString(dump, "\n", lines);
    const long long rowId = id > 0 ? id : rowCount(type) + 1;
    const DumpValues dumped(table, lines);
    SqlStatement* insert = reusable(table.insertSql);
    if (insert == nullptr) {
        noteFailure(sqlite3_errmsg(mDb));
        return;
    }
    insert->bindInteger(1, rowId);
    insert->bindText(2, customName);
    for (size_t i = 0; i < dumped.values.size(); ++i) {
        const int index = static_cast<int>(i) + 3;
        if (dumped.present[i]) {
            insert->bindText(index, dumped.values[i]);
        } else {
            insert->bindNull(index);
        }
    }
    runInsert(type, *insert);
}

void DatabaseHelper::insertConfigurationValue(const std::string& key, const std::string& value) {
    if (mDb == nullptr) {
        DB_LOGE("db is not connected");
        return;
    }
    SqlStatement* insert = reusable(DatabaseSchema::table(TableType::CONFIGURATION).insertSql);
    if (insert == nullptr) {
        noteFailure(sqlite3_errmsg(mDb));
        return;
    }
    insert->bindInteger(1, rowCount(TableType::CONFIGURATION) + 1);
    insert->bindText(2, key);
    insert->bindText(3, value);
    runInsert(TableType::CONFIGURATION, *insert);
}

long long DatabaseHelper::rowCount(TableType type) {
    long long& count = mRowCounts[static_cast<size_t>(type)];
    if (count < 0) {
        const int counted = getRowCount(DatabaseSchema::tableName(type));
        // Not kept when it could not be read: the next insert asks again.
        if (counted < 0) return counted;
        count = counted;
    }
    return count;
}

void DatabaseHelper::runInsert(TableType type, SqlStatement& insert) {
    // Once a statement failed, the rest of its transaction would only make a mixture.
    if (mTransactionError.empty()) {
        if (insert.step() == SQLITE_DONE) {
            long long& count = mRowCounts[static_cast<size_t>(type)];
            if (count >= 0) ++count;
        } else {
            DB_LOGE("failed to exec SQL: %s", insert.expandedSql().c_str());
            noteFailure(sqlite3_errmsg(mDb));
            forgetRowCounts();
        }
    }
    insert.reset();
}

void DatabaseHelper::forgetRowCounts() {
    mRowCounts.fill(-1);
}

// ---- queries ----

template <typename Record>
bool DatabaseHelper::queryLastRow(TableType type, const char* where,
                                  std::initializer_list<const std::string*> keys,
                                  const char* missing, Record* record) {
    if (record == nullptr) return false;
    // The last matching row in table order, as a full scan would end on.
    SqlStatement* stmt = reusable(DatabaseSchema::table(type).selectSql + where +
                                  " ORDER BY rowid DESC LIMIT 1");
    if (stmt == nullptr) return false;
    int index = 1;
    for (const std::string* key : keys) stmt->bindText(index++, *key);
    const bool found = stmt->step() == SQLITE_ROW;
    if (found) {
        fillRecord(TableRow(*stmt, type), record);
    } else {
        DB_LOGE("%s", missing);
    }
    stmt->reset();
    return found;
}

template <typename Visit>
void DatabaseHelper::forEachRowNewestFirst(TableType type, Visit visit) {
    SqlStatement* stmt = reusable(DatabaseSchema::table(type).selectSql + " ORDER BY rowid DESC");
    if (stmt == nullptr) return;
    int ret;
    while ((ret = stmt->step()) == SQLITE_ROW) visit(TableRow(*stmt, type));
    if (ret != SQLITE_DONE) DB_LOGE("Unknow error... %d", ret);
    stmt->reset();
}

bool DatabaseHelper::queryIeqValue(const std::string& presetTypeName, const std::string& customName,
                                   IeqPreset* preset) {
    return queryLastRow(TableType::IEQ_PRESETS, " WHERE preset_type=? AND custom_name=?",
                        {&presetTypeName, &customName}, "IeqPreset doesn't exist!", preset);
}

bool DatabaseHelper::queryGeqValue(const std::string& profileId, const std::string& customName,
                                   GeqPreset* preset) {
    return queryLastRow(TableType::GEQ_PRESETS, " WHERE profile_id=? AND custom_name=?",
                        {&profileId, &customName}, "GeqPreset doesn't exist!", preset);
}

bool DatabaseHelper::queryProfileValue(const std::string& profileId, const std::string& customName,
                                       Profile* profile) {
    return queryLastRow(TableType::PROFILES, " WHERE profile_id=? AND custom_name=?",
                        {&profileId, &customName}, "Profile doesn't exist!", profile);
}

bool DatabaseHelper::queryEndpointValue(const std::string& profileId,
                                        const std::string& endpointName,
                                        const std::string& customName, ProfileEndpoint* endpoint) {
    return queryLastRow(
            TableType::PROFILE_ENDPOINTS, " WHERE profile_id=? AND endpoint=? AND custom_name=?",
            {&profileId, &endpointName, &customName}, "Endpoint doesn't exist!", endpoint);
}

bool DatabaseHelper::queryTuning(const std::string& name, Tuning* tuning) {
    return queryLastRow(TableType::TUNINGS, " WHERE name=?", {&name}, "Tuning doesn't exist!",
                        tuning);
}

void DatabaseHelper::queryDeviceTunings(const std::string& portName, DeviceTuningSet& out) {
    SqlStatement* stmt =
            reusable(DatabaseSchema::table(TableType::DEVICE_TUNINGS).selectSql + " WHERE port=?");
    if (stmt == nullptr) return;
    stmt->bindText(1, portName);
    while (stmt->step() == SQLITE_ROW) {
        out.insert(newDeviceTuning(TableRow(*stmt, TableType::DEVICE_TUNINGS)));
    }
    stmt->reset();
}

void DatabaseHelper::queryProfileNames(std::vector<std::string>& names,
                                       const std::string& customName) {
    SqlStatement* stmt =
            reusable(DatabaseSchema::table(TableType::PROFILES).selectSql + " WHERE custom_name=?");
    if (stmt == nullptr) return;
    stmt->bindText(1, customName);
    while (stmt->step() == SQLITE_ROW) {
        const char* name = TableRow(*stmt, TableType::PROFILES).text("name");
        names.emplace_back(name != nullptr ? name : "");
    }
    stmt->reset();
}

void DatabaseHelper::queryColumn(TableType type, const char* column, const std::string& customName,
                                 std::set<std::string>& out) {
    SqlStatement* stmt = reusable(std::string("SELECT ") + column + " FROM " +
                                  DatabaseSchema::tableName(type) + " WHERE custom_name=?");
    if (stmt == nullptr) return;
    stmt->bindText(1, customName);
    while (stmt->step() == SQLITE_ROW) out.insert(stmt->text(0));
    stmt->reset();
}

template <typename Record>
void DatabaseHelper::queryEveryProfileRecord(TableType type, const Pick<Record>& pick) {
    forEachRowNewestFirst(type, [&](const TableRow& row) {
        int id;
        const char* origin = row.text("custom_name");
        if (origin == nullptr || !readKey(row.text("profile_id"), &id)) return;
        if (Record* record = pick(id, Endpoint::OTHER, origin)) fillRecord(row, record);
    });
}

void DatabaseHelper::queryEveryProfile(const Pick<Profile>& pick) {
    queryEveryProfileRecord(TableType::PROFILES, pick);
}

void DatabaseHelper::queryEveryEndpoint(const Pick<ProfileEndpoint>& pick) {
    forEachRowNewestFirst(TableType::PROFILE_ENDPOINTS, [&](const TableRow& row) {
        int id;
        const char* origin = row.text("custom_name");
        const char* name = row.text("endpoint");
        if (origin == nullptr || name == nullptr || !readKey(row.text("profile_id"), &id)) return;
        auto kind = endpointNameToEndpoint().find(name);
        if (kind == endpointNameToEndpoint().end()) return;
        if (ProfileEndpoint* endpoint = pick(id, kind->second, origin)) fillRecord(row, endpoint);
    });
}

void DatabaseHelper::queryEveryGeqPreset(const Pick<GeqPreset>& pick) {
    queryEveryProfileRecord(TableType::GEQ_PRESETS, pick);
}

void DatabaseHelper::queryEveryIeqPreset(
        const std::function<IeqPreset*(PresetType, const char* origin)>& pick) {
    forEachRowNewestFirst(TableType::IEQ_PRESETS, [&](const TableRow& row) {
        PresetType type;
        const char* origin = row.text("custom_name");
        const char* name = row.text("preset_type");
        if (origin == nullptr || name == nullptr || !presetTypeFromName(name, &type)) return;
        if (IeqPreset* preset = pick(type, origin)) fillRecord(row, preset);
    });
}

std::string DatabaseHelper::queryConfigurationValue(const std::string& key) {
    SqlStatement* stmt =
            reusable("SELECT value FROM " + DatabaseSchema::tableName(TableType::CONFIGURATION) +
                     " WHERE key=?");
    if (stmt == nullptr) return std::string();
    stmt->bindText(1, key);
    // The last matching row's value.
    std::string value;
    while (stmt->step() == SQLITE_ROW) value = stmt->text(0);
    stmt->reset();
    return value;
}

bool DatabaseHelper::queryAupStatus(const std::string& key) {
    std::string value = queryConfigurationValue(key);
    return !value.empty() && value != "false";
}

std::string DatabaseHelper::querySelectedProfile(const std::string& key) {
    std::string value = queryConfigurationValue(key);
    return value.empty() ? "-1" : value;
}

// ---- updates ----

bool DatabaseHelper::refuseDefault(const std::string& customName, int line) const {
    if (customName != kDefaultOrigin) return false;
    DB_LOGE("the default value can't be updated, %d", line);
    return true;
}

void DatabaseHelper::replaceRow(TableType type, const std::string& customName,
                                const std::string& match, const std::string& dump, long long id) {
    execSQL("DELETE FROM " + DatabaseSchema::tableName(type) +
            " WHERE custom_name=" + quote(customName) + match);
    executeInsertCommand(type, customName, dump, id);
}

void DatabaseHelper::updateGeqValue(GeqPreset* preset, const std::string& customName) {
    if (preset == nullptr || refuseDefault(customName, __LINE__)) return;
    replaceRow(TableType::GEQ_PRESETS, customName,
               " AND profile_id=" + quote(int2String(preset->getProfileId())), preset->toString(),
               preset->getId());
}

void DatabaseHelper::updateProfileValue(Profile* profile, const std::string& customName) {
    if (profile == nullptr || refuseDefault(customName, __LINE__)) return;
    replaceRow(TableType::PROFILES, customName,
               " AND profile_id=" + quote(int2String(profile->getProfileId())), profile->toString(),
               profile->getId());
}

void DatabaseHelper::updateProfileEndpointValue(ProfileEndpoint* endpoint,
                                                const std::string& customName) {
    if (endpoint == nullptr || refuseDefault(customName, __LINE__)) return;
    replaceRow(TableType::PROFILE_ENDPOINTS, customName,
               " AND profile_id=" + quote(int2String(endpoint->getProfileId())) +
                       " AND endpoint=" + quote(endpointName(endpoint->getEndpoint())),
               endpoint->toString(), endpoint->getId());
}

void DatabaseHelper::updateConfiguration(const std::string& key, const std::string& value) {
    if (mDb == nullptr) {
        DB_LOGE("the database is not connected");
        return;
    }
    execSQL("UPDATE " + DatabaseSchema::tableName(TableType::CONFIGURATION) +
            " SET value=" + quote(value) + " WHERE key=" + quote(key));
}

void DatabaseHelper::updateAupStatus(const std::string& key, bool on) {
    updateConfiguration(key, on ? "true" : "false");
}

void DatabaseHelper::updateTuningDevice(const std::string& key, const std::string& device) {
    updateConfiguration(key, device);
}

void DatabaseHelper::updateSelectedProfile(const std::string& key, const std::string& value) {
    updateConfiguration(key, value);
}

// ---- deletes ----

std::string DatabaseHelper::deleteByOriginSql(TableType type, const std::string& customName) const {
    return "DELETE from " + DatabaseSchema::tableName(type) +
           " WHERE custom_name = " + quote(customName);
}

void DatabaseHelper::clearOemTunings() {
    std::string sql = deleteByOriginSql(TableType::TUNINGS, kOemOrigin);
    DB_LOGD("Delete existing tuning with SQL [%s]", sql.c_str());
    execSQL(sql);
}

void DatabaseHelper::clearOemDeviceTunings() {
    std::string sql = deleteByOriginSql(TableType::DEVICE_TUNINGS, kOemOrigin);
    DB_LOGD("Delete existing device tuning with SQL [%s]", sql.c_str());
    execSQL(sql);
}

// ---- health and recovery ----

namespace {

// The profile-level tables, whose rows come as a factory copy and a user copy, and
// the columns that tell one profile's (and endpoint's) row from another's.
struct CopiedTable {
    TableType type;
    const char* key;
};
constexpr CopiedTable kCopiedTables[] = {
        {TableType::PROFILES, "profile_id"},
        {TableType::PROFILE_ENDPOINTS, "profile_id, endpoint"},
        {TableType::GEQ_PRESETS, "profile_id"},
};
static_assert(std::size(kCopiedTables) == DatabaseHelper::kNumCopiedTables);

std::vector<std::string> columnsOf(const DatabaseSchema::Table& table) {
    std::vector<std::string> columns = table.leadingColumns;
    for (Parameter p : table.parameterColumns) columns.emplace_back(parameterName(p));
    return columns;
}

// "t.a = c.a AND t.b = c.b" for a key "a, b".
std::string sameKey(const char* key, const char* left, const char* right) {
    std::string out;
    std::vector<std::string> parts;
    splitString(key, ", ", parts);
    for (const std::string& part : parts) {
        if (!out.empty()) out += " AND ";
        out += std::string(left) + "." + part + " = " + right + "." + part;
    }
    return out;
}

// The factory rows of a profile-level table whose user row is missing.
std::string missingCustomRowsFrom(const CopiedTable& copied) {
    const std::string& name = DatabaseSchema::tableName(copied.type);
    return " FROM " + name + " d WHERE d.custom_name='default' AND NOT EXISTS (SELECT 1 FROM " +
           name + " c WHERE c.custom_name='custom' AND " + sameKey(copied.key, "c", "d") + ")";
}

std::string countMissingCustomRows(const CopiedTable& copied) {
    return "(SELECT COUNT(*)" + missingCustomRowsFrom(copied) + ")";
}

}  // namespace

DatabaseHelper::Health DatabaseHelper::checkHealth(std::string* reason) {
    std::error_code ec;
    if (std::filesystem::is_directory(mPath, ec)) {
        *reason = "it is a directory";
        return Health::kDamaged;
    }
    if (mDb == nullptr) {
        *reason = "it cannot be opened";
        return Health::kDamaged;
    }
    SqlStatement check(mDb, "PRAGMA quick_check");
    int ret = check.step();
    if (ret == SQLITE_BUSY || ret == SQLITE_LOCKED) {
        *reason = sqlite3_errmsg(mDb);
        return Health::kLocked;
    }
    if (ret != SQLITE_ROW || check.text(0) != "ok") {
        *reason = ret == SQLITE_ROW ? "quick_check: " + check.text(0) : sqlite3_errmsg(mDb);
        return Health::kDamaged;
    }
    // Every table's columns, in one statement.
    std::map<std::string, std::vector<std::string>> found;
    {
        SqlStatement info(mDb,
                          "SELECT m.name, p.name FROM sqlite_master m, pragma_table_info(m.name) p "
                          "WHERE m.type='table' ORDER BY m.name, p.cid");
        while (info.step() == SQLITE_ROW) found[info.text(0)].push_back(info.text(1));
    }
    if (found.empty()) return Health::kUsable;  // a new file: the start fills it
    for (int t = 0; t < kNumTableTypes; ++t) {
        const DatabaseSchema::Table& table = DatabaseSchema::table(static_cast<TableType>(t));
        auto columns = found.find(table.name);
        if (columns == found.end() || columns->second != columnsOf(table)) {
            *reason = columns == found.end() ? "table " + table.name + " is missing"
                                             : "table " + table.name + " has other columns";
            return Health::kDamaged;
        }
    }
    // The rows a start needs, in one statement: a profile, the configuration, and a
    // factory row for every user row.
    std::string sql =
            "SELECT (SELECT COUNT(*) FROM profiles WHERE custom_name='default'), "
            "(SELECT COUNT(*) FROM configuration WHERE key IN ('signature', 'version'))";
    for (const CopiedTable& copied : kCopiedTables) {
        const std::string& name = DatabaseSchema::tableName(copied.type);
        sql += ", EXISTS (SELECT 1 FROM " + name +
               " c WHERE c.custom_name='custom' AND NOT EXISTS (SELECT 1 FROM " + name +
               " d WHERE d.custom_name='default' AND " + sameKey(copied.key, "d", "c") + "))";
    }
    // And the user rows a usable file lacks, which the start restores next.
    for (const CopiedTable& copied : kCopiedTables) sql += ", " + countMissingCustomRows(copied);
    SqlStatement rows(mDb, sql);
    if (rows.step() != SQLITE_ROW) {
        *reason = sqlite3_errmsg(mDb);
        return Health::kDamaged;
    }
    if (rows.text(0) == "0") {
        *reason = "it holds no profile";
        return Health::kDamaged;
    }
    if (rows.text(1) != "2") {
        *reason = "its configuration is incomplete";
        return Health::kDamaged;
    }
    const int tables = static_cast<int>(std::size(kCopiedTables));
    for (int t = 0; t < tables; ++t) {
        if (rows.text(2 + t) != "0") {
            *reason = "a user row of " + DatabaseSchema::tableName(kCopiedTables[t].type) +
                      " has no factory row";
            return Health::kDamaged;
        }
    }
    for (int t = 0; t < tables; ++t) {
        mMissingCustomRows[t] = std::atoi(rows.text(2 + tables + t).c_str());
    }
    return Health::kUsable;
}

int DatabaseHelper::restoreMissingCustomRows() {
    // Looked for first, every table in one statement (the health check's, when it
    // just ran): a database that cannot be written is still read, and a start that
    // finds nothing missing must not fail on it.
    std::array<int, std::size(kCopiedTables)> counts = mMissingCustomRows;
    mMissingCustomRows.fill(-1);
    if (counts[0] < 0) {
        std::string counting;
        for (const CopiedTable& copied : kCopiedTables) {
            counting += (counting.empty() ? "SELECT " : ", ") + countMissingCustomRows(copied);
        }
        SqlStatement stmt(mDb, counting);
        const bool read = stmt.step() == SQLITE_ROW;
        for (size_t t = 0; t < counts.size(); ++t) {
            counts[t] = read ? std::atoi(stmt.text(static_cast<int>(t)).c_str()) : 0;
        }
    }
    int restored = 0;
    for (size_t t = 0; t < std::size(kCopiedTables); ++t) {
        const CopiedTable& copied = kCopiedTables[t];
        const DatabaseSchema::Table& table = DatabaseSchema::table(copied.type);
        const int count = counts[t];
        const std::string missing = missingCustomRowsFrom(copied);
        if (count == 0) continue;
        std::vector<std::string> columns = columnsOf(table);
        std::string rest;
        for (size_t i = 2; i < columns.size(); ++i) rest += ", d." + columns[i];
        beginTransaction();
        execSQL("INSERT INTO " + table.name + " SELECT d._id, 'custom'" + rest + missing);
        if (!commitTransaction()) continue;
        DB_LOGW("Restored %d missing user rows of %s from their factory rows", count,
                table.name.c_str());
        restored += count;
    }
    return restored;
}

void DatabaseHelper::readUserSettings(UserSettings* out) {
    // A damaged file may still give up some rows: each read keeps what it got.
    queryRows("SELECT key, value FROM configuration", out->configuration);
    queryRows(selectAll(TableType::PROFILES, " WHERE custom_name='custom'"), out->profiles);
    queryRows(selectAll(TableType::PROFILE_ENDPOINTS, " WHERE custom_name='custom'"),
              out->endpoints);
    queryRows(selectAll(TableType::GEQ_PRESETS, " WHERE custom_name='custom'"), out->geqPresets);
}

int DatabaseHelper::writeUserSettings(const UserSettings& settings) {
    int carried = 0;
    const std::string& configuration = DatabaseSchema::tableName(TableType::CONFIGURATION);
    const std::string profiles =
            queryText("SELECT COUNT(*) FROM profiles WHERE custom_name='default'");
    for (const Row& row : settings.configuration) {
        const std::string* key = column(row, "key");
        const std::string* value = column(row, "value");
        if (key == nullptr || value == nullptr) continue;
        long long number = -1;
        bool fits = false;
        if (*key == "State") {
            fits = *value == "true" || *value == "false";
        } else if (*key == "Profile") {
            fits = parseInteger(*value, &number) && number >= 0 &&
                   number < std::atoll(profiles.c_str());
        } else if (portNameToEndpoint().count(*key) != 0) {
            // A selection only of a device the port still has.
            fits = queryText("SELECT COUNT(*) FROM device_tunings WHERE port=" + quote(*key) +
                             " AND device=" + quote(*value)) != "0";
        }
        if (!fits) continue;
        execSQL("UPDATE " + configuration + " SET value=" + quote(*value) +
                " WHERE key=" + quote(*key));
        carried += mTransactionError.empty() ? sqlite3_changes(mDb) : 0;
    }
    const std::vector<Row>* rows[] = {&settings.profiles, &settings.endpoints,
                                      &settings.geqPresets};
    for (size_t t = 0; t < std::size(kCopiedTables); ++t) {
        const DatabaseSchema::Table& table = DatabaseSchema::table(kCopiedTables[t].type);
        std::vector<std::string> keys;
        splitString(kCopiedTables[t].key, ", ", keys);
        for (const Row& row : *rows[t]) {
            // The user's values; the factory's names, flags and links stay.
            std::string set, where = " WHERE custom_name='custom'";
            for (const auto& [name, text] : row) {
                Parameter p;
                PresetType preset;
                bool userColumn =
                        (parameterFromName(name, &p) && table.parameterSlot[toInt(p)] >= 0) ||
                        (name == "selected_ieq_preset_type" && presetTypeFromName(text, &preset));
                if (std::find(keys.begin(), keys.end(), name) != keys.end()) {
                    where += " AND " + name + "=" + quote(text);
                } else if (userColumn) {
                    set += (set.empty() ? " SET " : ", ") + name + "=" + quote(text);
                }
            }
            if (set.empty()) continue;
            execSQL("UPDATE " + table.name + set + where);
            carried += mTransactionError.empty() ? sqlite3_changes(mDb) : 0;
        }
    }
    return carried;
}

}  // namespace vessa
