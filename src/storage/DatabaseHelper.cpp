#define LOG_TAG "DatabaseHelper"

#include "storage/DatabaseHelper.h"

#include <log/log.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
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

bool parseInteger(const std::string& text, long long* out) {
    if (text.empty()) return false;
    char* end = nullptr;
    errno = 0;
    long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0') return false;
    *out = value;
    return true;
}

long long readInteger(const std::string* text, long long fallback) {
    long long value = fallback;
    if (text != nullptr) parseInteger(*text, &value);
    return value;
}

// Flags are written from dump lines as "true"/"false"; digits are read too, any
// non-zero number being true.
bool readFlag(const std::string* text, bool fallback) {
    if (text == nullptr) return fallback;
    if (*text == "true") return true;
    if (*text == "false") return false;
    long long value = 0;
    return parseInteger(*text, &value) ? value != 0 : fallback;
}

// Every column named after a parameter becomes that parameter's list; an empty text is
// an empty list. NULL columns are absent from the row, so their parameters stay unset.
// The value part of a dump line; logged and empty when the line has no "=".
std::string dumpValue(const std::string& line) {
    std::string value;
    if (!getStringValues(line, value)) DB_LOGE("invalid string value");
    return value;
}

// Parameter lines are matched to their columns by name, so a record that lacks a
// parameter still fills the right columns: the missing one is stored as NULL.
void appendParameterValues(const DatabaseSchema::Table& table,
                           const std::vector<std::string>& lines, size_t first, std::string& sql) {
    std::vector<std::string> values(table.parameterColumns.size());
    std::vector<bool> present(values.size(), false);
    for (size_t next = first; next < lines.size(); ++next) {
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
            int slot = table.parameterSlot[toInt(p)];
            values[slot] = dumpValue(line);
            present[slot] = true;
        }
    }
    for (size_t i = 0; i < values.size(); ++i) {
        sql += ',';
        if (present[i]) {
            appendQuoted(sql, values[i]);
        } else {
            sql += "NULL";
        }
    }
}

// Selects one profile's row of one origin.
std::string profileWhere(const std::string& profileId, const std::string& customName) {
    return " WHERE profile_id=" + quote(profileId) + " AND custom_name=" + quote(customName);
}

void fillParameters(const DatabaseHelper::Row& row, ParameterValues* record) {
    std::vector<int> values;
    for (const auto& [columnName, text] : row) {
        Parameter p;
        if (!parameterFromName(columnName, &p)) continue;
        values.clear();
        string2IntVector(text, values);
        record->set(p, values);
    }
}

}  // namespace

DatabaseHelper::DatabaseHelper(const std::string& fileName, bool readOnly) {
    std::string directory = FileSystemRoot::resolve(kDirectory);
    mPath = directory + fileName;
    std::error_code ec;
    if (!readOnly) std::filesystem::create_directories(directory, ec);
    if (ec) DB_LOGE("failed to create %s: %s", directory.c_str(), ec.message().c_str());
    int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
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
    execSQL("BEGIN EXCLUSIVE");
}

bool DatabaseHelper::commitTransaction() {
    if (mTransactionDepth == 0) return true;
    if (--mTransactionDepth > 0) return mTransactionError.empty();
    if (mTransactionError.empty() && mDb != nullptr && run("COMMIT") != SQLITE_DONE) {
        noteFailure(sqlite3_errmsg(mDb));
    }
    if (mDb == nullptr) noteFailure("the db is not open");
    if (mTransactionError.empty()) {
        mSaveError.clear();
        return true;
    }
    // A BEGIN that failed left nothing to roll back; SQLite may have rolled back itself.
    if (mDb != nullptr && sqlite3_get_autocommit(mDb) == 0) run("ROLLBACK");
    mSaveError = mTransactionError;
    mTransactionError.clear();
    DB_LOGE("Settings not saved to %s: %s; the previous copy stays", mPath.c_str(),
            mSaveError.c_str());
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

bool DatabaseHelper::queryLastRow(TableType type, const std::string& where, const char* missing,
                                  Row& row) {
    std::vector<Row> rows;
    queryRows(selectAll(type, where), rows);
    if (rows.empty()) {
        DB_LOGE("%s", missing);
        return false;
    }
    row = std::move(rows.back());
    return true;
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

    long long rowId = id > 0 ? id : getRowCount(table.name) + 1;
    std::string sql;
    sql.reserve(dump.size() + 2 * lines.size() + 64);
    sql += "INSERT INTO " + table.name + " VALUES(" + std::to_string(rowId) + ",";
    appendQuoted(sql, customName);
    // The first dump line is the id, already written as the row id.
    size_t next = 1;
    const size_t headerCount = table.leadingColumns.size() - 2;
    for (size_t i = 0; i < headerCount; ++i) {
        sql += ',';
        if (next < lines.size()) {
            appendQuoted(sql, dumpValue(lines[next++]));
        } else {
            sql += "NULL";
        }
    }
    appendParameterValues(table, lines, next, sql);
    sql += ')';
    execSQL(sql);
}

void DatabaseHelper::insertConfigurationValue(const std::string& key, const std::string& value) {
    if (mDb == nullptr) {
        DB_LOGE("db is not connected");
        return;
    }
    const std::string& table = DatabaseSchema::tableName(TableType::CONFIGURATION);
    execSQL("INSERT INTO " + table + " VALUES(" + int2String(getRowCount(table) + 1) + "," +
            quote(key) + "," + quote(value) + ")");
}

// ---- queries ----

bool DatabaseHelper::queryIeqValue(const std::string& presetTypeName, const std::string& customName,
                                   IeqPreset* preset) {
    Row row;
    if (preset == nullptr || !queryLastRow(TableType::IEQ_PRESETS,
                                           " WHERE preset_type=" + quote(presetTypeName) +
                                                   " AND custom_name=" + quote(customName),
                                           "IeqPreset doesn't exist!", row)) {
        return false;
    }
    PresetType type = preset->getType();
    if (const std::string* text = column(row, "preset_type")) presetTypeFromName(*text, &type);
    *preset = IeqPreset(readInteger(column(row, "_id"), preset->getId()), type);
    fillParameters(row, preset);
    return true;
}

bool DatabaseHelper::queryGeqValue(const std::string& profileId, const std::string& customName,
                                   GeqPreset* preset) {
    Row row;
    if (preset == nullptr ||
        !queryLastRow(TableType::GEQ_PRESETS, profileWhere(profileId, customName),
                      "GeqPreset doesn't exist!", row)) {
        return false;
    }
    *preset = GeqPreset(readInteger(column(row, "_id"), preset->getId()),
                        readInteger(column(row, "profile_id"), preset->getProfileId()));
    fillParameters(row, preset);
    return true;
}

bool DatabaseHelper::queryProfileValue(const std::string& profileId, const std::string& customName,
                                       Profile* profile) {
    Row row;
    if (profile == nullptr ||
        !queryLastRow(TableType::PROFILES, profileWhere(profileId, customName),
                      "Profile doesn't exist!", row)) {
        return false;
    }
    const std::string* name = column(row, "name");
    int id = static_cast<int>(readInteger(column(row, "profile_id"), profile->getProfileId()));
    *profile = Profile(readInteger(column(row, "_id"), profile->getId()), id,
                       name != nullptr ? *name : profile->getName(),
                       readFlag(column(row, "is_mobility"), profile->isMobility()));
    profile->setSelectedGeqPreset(readInteger(column(row, "selected_geq_preset_id"), id));
    fillParameters(row, profile);
    return true;
}

bool DatabaseHelper::queryEndpointValue(const std::string& profileId,
                                        const std::string& endpointName,
                                        const std::string& customName, ProfileEndpoint* endpoint) {
    Row row;
    if (endpoint == nullptr || !queryLastRow(TableType::PROFILE_ENDPOINTS,
                                             " WHERE profile_id=" + quote(profileId) +
                                                     " AND endpoint=" + quote(endpointName) +
                                                     " AND custom_name=" + quote(customName),
                                             "Endpoint doesn't exist!", row)) {
        return false;
    }
    Endpoint kind = endpoint->getEndpoint();
    if (const std::string* text = column(row, "endpoint")) {
        auto it = endpointNameToEndpoint().find(*text);
        if (it != endpointNameToEndpoint().end()) kind = it->second;
    }
    // Any text other than the four preset names keeps the type the record had.
    PresetType preset = endpoint->getSelectedIeqPreset();
    if (const std::string* text = column(row, "selected_ieq_preset_type")) {
        presetTypeFromName(*text, &preset);
    }
    *endpoint = ProfileEndpoint(
            static_cast<long>(readInteger(column(row, "_id"), endpoint->getId())),
            readInteger(column(row, "profile_id"), endpoint->getProfileId()), kind, preset);
    fillParameters(row, endpoint);
    return true;
}

bool DatabaseHelper::queryTuning(const std::string& name, Tuning* tuning) {
    Row row;
    if (tuning == nullptr || !queryLastRow(TableType::TUNINGS, " WHERE name=" + quote(name),
                                           "Tuning doesn't exist!", row)) {
        return false;
    }
    const std::string* rowName = column(row, "name");
    *tuning = Tuning(static_cast<long>(readInteger(column(row, "_id"), tuning->getId())),
                     rowName != nullptr ? *rowName : tuning->getName(), tuning->getEndpoint(),
                     readFlag(column(row, "is_mono"), tuning->isMono()),
                     readFlag(column(row, "is_readonly"), tuning->isReadonly()));
    if (const std::string* text = column(row, "endpoint")) tuning->setEndpoint(*text);
    fillParameters(row, tuning);
    return true;
}

void DatabaseHelper::queryDeviceTunings(const std::string& portName, DeviceTuningSet& out) {
    std::vector<Row> rows;
    queryRows(selectAll(TableType::DEVICE_TUNINGS, " WHERE port=" + quote(portName)), rows);
    static const std::string kNone;
    for (const Row& row : rows) {
        const std::string* device = column(row, "device");
        const std::string* port = column(row, "port");
        const std::string* tuning = column(row, "tuning_id");
        out.insert(new DeviceTuning(readInteger(column(row, "_id"), -1), device ? *device : kNone,
                                    port ? *port : kNone, tuning ? *tuning : kNone));
    }
}

void DatabaseHelper::queryProfileNames(std::vector<std::string>& names,
                                       const std::string& customName) {
    std::vector<Row> rows;
    queryRows(selectAll(TableType::PROFILES, " WHERE custom_name=" + quote(customName)), rows);
    for (const Row& row : rows) {
        const std::string* name = column(row, "name");
        names.push_back(name != nullptr ? *name : std::string());
    }
}

std::string DatabaseHelper::queryConfigurationValue(const std::string& key) {
    std::vector<Row> rows;
    queryRows("SELECT value FROM " + DatabaseSchema::tableName(TableType::CONFIGURATION) +
                      " WHERE key=" + quote(key),
              rows);
    if (rows.empty()) return std::string();
    const std::string* value = column(rows.back(), "value");
    return value != nullptr ? *value : std::string();
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
    std::vector<Row> tables;
    queryRows("SELECT name FROM sqlite_master WHERE type='table'", tables);
    if (tables.empty()) return Health::kUsable;  // a new file: the start fills it
    for (int t = 0; t < kNumTableTypes; ++t) {
        const DatabaseSchema::Table& table = DatabaseSchema::table(static_cast<TableType>(t));
        std::vector<Row> info;
        queryRows("PRAGMA table_info(" + table.name + ")", info);
        std::vector<std::string> found;
        for (const Row& row : info) {
            if (const std::string* name = column(row, "name")) found.push_back(*name);
        }
        if (found != columnsOf(table)) {
            *reason = found.empty() ? "table " + table.name + " is missing"
                                    : "table " + table.name + " has other columns";
            return Health::kDamaged;
        }
    }
    if (queryText("SELECT COUNT(*) FROM profiles WHERE custom_name='default'") == "0") {
        *reason = "it holds no profile";
        return Health::kDamaged;
    }
    if (queryText("SELECT COUNT(*) FROM configuration WHERE key IN ('signature', 'version')") !=
        "2") {
        *reason = "its configuration is incomplete";
        return Health::kDamaged;
    }
    for (const CopiedTable& copied : kCopiedTables) {
        const std::string& name = DatabaseSchema::tableName(copied.type);
        bool orphan = false;
        queryText("SELECT 1 FROM " + name + " c WHERE c.custom_name='custom' AND NOT EXISTS " +
                          "(SELECT 1 FROM " + name + " d WHERE d.custom_name='default' AND " +
                          sameKey(copied.key, "d", "c") + ")",
                  &orphan);
        if (orphan) {
            *reason = "a user row of " + name + " has no factory row";
            return Health::kDamaged;
        }
    }
    return Health::kUsable;
}

int DatabaseHelper::restoreMissingCustomRows() {
    int restored = 0;
    for (const CopiedTable& copied : kCopiedTables) {
        const DatabaseSchema::Table& table = DatabaseSchema::table(copied.type);
        const std::string missing =
                " FROM " + table.name +
                " d WHERE d.custom_name='default' AND NOT EXISTS (SELECT 1 FROM " + table.name +
                " c WHERE c.custom_name='custom' AND " + sameKey(copied.key, "c", "d") + ")";
        // Looked for first: a database that cannot be written is still read, and a
        // start that finds nothing missing must not fail on it.
        int count = std::atoi(queryText("SELECT COUNT(*)" + missing).c_str());
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
