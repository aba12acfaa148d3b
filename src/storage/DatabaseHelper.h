#pragma once

#include <array>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "storage/DatabaseSchema.h"
#include "storage/RecordOrder.h"

struct sqlite3;

namespace vessa {

class SqlStatement;

// The only code that speaks SQL: opens the settings database, creates and drops its
// tables and moves records in and out of rows. Records move through statements
// prepared once and kept, with their values bound; other statements are plain text,
// every quoted value with its single quotes doubled. Failures are logged, never
// returned: without a connection every operation is a logged no-op.
//
// Writes happen in transactions that nest: only the outermost begin and commit reach
// the database. Once a statement of a transaction fails, the rest of it is skipped
// and the commit rolls the whole transaction back, with one error line naming the
// file and the reason, so the previous copy of every row stays.
class DatabaseHelper {
  public:
    // One row as (column name, text) pairs, in column order; NULL columns are left out.
    using Row = std::vector<std::pair<std::string, std::string>>;

    // What a start finds in the file.
    enum class Health {
        kUsable,   // the tables, their columns and the factory rows are there, or no table at all
        kLocked,   // another connection held the lock longer than the busy timeout
        kDamaged,  // not a database, malformed, or tables or rows missing
    };

    // The user's settings as they could still be read from a damaged database: the
    // configuration rows and the user ("custom") rows of the profile-level tables.
    struct UserSettings {
        std::vector<Row> configuration;
        std::vector<Row> profiles;
        std::vector<Row> endpoints;
        std::vector<Row> geqPresets;
    };

    // The tables whose rows come as a factory and a user copy: profiles, profile
    // endpoints, GEQ presets.
    static constexpr size_t kNumCopiedTables = 3;
    static constexpr const char* kDirectory = "/data/vendor/vessa/";
    // How long a statement waits for another connection's lock before it fails.
    static constexpr int kBusyTimeoutMs = 3000;

    // Opens (creating if needed) kDirectory + fileName under the filesystem root;
    // read-only opens an existing file as it is.
    explicit DatabaseHelper(const std::string& fileName, bool readOnly = false);
    ~DatabaseHelper();
    DatabaseHelper(const DatabaseHelper&) = delete;
    DatabaseHelper& operator=(const DatabaseHelper&) = delete;

    bool isOpen() const { return mDb != nullptr; }
    const std::string& getPath() const { return mPath; }

    // Schema.
    void init();
    void createTable(TableType type);
    std::string buildColumnString(TableType type) const;
    void clear();
    void beginTransaction();
    // False when the transaction was rolled back (or, nested, already failed).
    bool commitTransaction();
    // Why the last outermost transaction was rolled back; empty once one committed.
    const std::string& getSaveError() const { return mSaveError; }
    // Reads until endRead see one state of the file and lock it once, not once per
    // statement. A write transaction in between ends the read and opens it again
    // after its commit.
    void beginRead();
    void endRead();

    // Checks the file: it opens, passes PRAGMA quick_check, holds the seven tables
    // with their columns, a profile, its configuration and a "default" row for every
    // "custom" row. `reason` says what is wrong.
    Health checkHealth(std::string* reason);
    // Copies each "default" row of the profile-level tables whose "custom" row is
    // missing into that "custom" row; the number restored.
    int restoreMissingCustomRows();
    // Reads what it can of the user's settings; each table on its own.
    void readUserSettings(UserSettings* out);
    // Writes those of `settings` that fit this database over its own: the switch, the
    // selected profile and the port selections that still exist, and the user rows
    // of profiles that exist. The number of settings carried over.
    int writeUserSettings(const UserSettings& settings);

    // Prepare, one step, finalise. Always 1: the outcome is only logged.
    int execSQL(const std::string& sql);
    // -1 when the count cannot be read.
    int getRowCount(const std::string& table);

    // Inserts; customName is the row's origin ("default", "oem" or "custom").
    void insertValue(IeqPreset* preset, const std::string& customName);
    void insertValue(GeqPreset* preset, const std::string& customName, long long id);
    void insertValue(Profile* profile, const std::string& customName, long long id);
    void insertValue(ProfileEndpoint* endpoint, const std::string& customName, long long id);
    void insertValue(Tuning* tuning, const std::string& customName);
    void insertValue(DeviceTuning* deviceTuning, const std::string& customName);
    // Writes one row from a record dump: the row id (id when positive, else the row
    // count + 1), the origin, the dump's header values in order, then the parameter
    // values in column order (NULL for a parameter the record does not hold).
    void executeInsertCommand(TableType type, const std::string& customName,
                              const std::string& dump, long long id);
    void insertConfigurationValue(const std::string& key, const std::string& value);

    // Queries fill the given record from the matching row (the last one if several)
    // and return whether a row was found; with none the record is left as it was.
    bool queryIeqValue(const std::string& presetTypeName, const std::string& customName,
                       IeqPreset* preset);
    bool queryGeqValue(const std::string& profileId, const std::string& customName,
                       GeqPreset* preset);
    bool queryProfileValue(const std::string& profileId, const std::string& customName,
                           Profile* profile);
    bool queryEndpointValue(const std::string& profileId, const std::string& endpointName,
                            const std::string& customName, ProfileEndpoint* endpoint);
    bool queryTuning(const std::string& name, Tuning* tuning);
    // Adds a new record per row; the caller owns them.
    void queryDeviceTunings(const std::string& portName, DeviceTuningSet& out);
    // One pass over a whole profile-level table, newest row first: `pick` gets each
    // row's profile id, endpoint (endpoint rows only; OTHER otherwise) and origin,
    // and returns the record to fill from it, or null to pass. A pick that takes
    // only the first row per record gets the row the single queries would choose.
    template <typename Record>
    using Pick = std::function<Record*(int profileId, Endpoint endpoint, const char* origin)>;
    void queryEveryProfile(const Pick<Profile>& pick);
    void queryEveryEndpoint(const Pick<ProfileEndpoint>& pick);
    void queryEveryGeqPreset(const Pick<GeqPreset>& pick);
    void queryEveryIeqPreset(const std::function<IeqPreset*(PresetType, const char* origin)>& pick);
    void queryProfileNames(std::vector<std::string>& names, const std::string& customName);
    // The texts of one column over the rows of one origin.
    void queryColumn(TableType type, const char* column, const std::string& customName,
                     std::set<std::string>& out);
    // The value of the last matching row, or "".
    std::string queryConfigurationValue(const std::string& key);
    // Off for a missing or empty value and for "false"; on for anything else.
    bool queryAupStatus(const std::string& key);
    // The stored text, or "-1" when there is none.
    std::string querySelectedProfile(const std::string& key);

    // Rows of origin "default" are read-only: these refuse them.
    void updateGeqValue(GeqPreset* preset, const std::string& customName);
    void updateProfileValue(Profile* profile, const std::string& customName);
    void updateProfileEndpointValue(ProfileEndpoint* endpoint, const std::string& customName);
    void updateAupStatus(const std::string& key, bool on);
    void updateTuningDevice(const std::string& key, const std::string& device);
    void updateSelectedProfile(const std::string& key, const std::string& value);

    void clearOemTunings();
    void clearOemDeviceTunings();

    // Every row of a "SELECT" statement; false (logged) when it could not run.
    bool queryRows(const std::string& sql, std::vector<Row>& rows);

  private:
    // Runs one statement, logging a failure with the given messages; the SQLite result.
    int run(const std::string& sql);
    // The first column of the first row of a query, or "" (with `found` false).
    std::string queryText(const std::string& sql, bool* found = nullptr);
    void noteFailure(const std::string& what);
    std::string selectAll(TableType type, const std::string& where) const;
    // The statement kept for this text, reset; null (logged) when it cannot be prepared.
    SqlStatement* reusable(const std::string& sql);
    // Fills the record from the last row that `where` (bound to `keys`) selects; logs
    // `missing` when there is none.
    template <typename Record>
    bool queryLastRow(TableType type, const char* where,
                      std::initializer_list<const std::string*> keys, const char* missing,
                      Record* record);
    template <typename Visit>
    void forEachRowNewestFirst(TableType type, Visit visit);
    // The pass of a table keyed by profile id and origin only.
    template <typename Record>
    void queryEveryProfileRecord(TableType type, const Pick<Record>& pick);
    // Rows in the table, counted once per transaction and then kept by the inserts.
    long long rowCount(TableType type);
    void runInsert(TableType type, SqlStatement& insert);
    void forgetRowCounts();
    void openRead();
    bool refuseDefault(const std::string& customName, int line) const;
    // Deletes the record's row and writes it again from its dump.
    void replaceRow(TableType type, const std::string& customName, const std::string& match,
                    const std::string& dump, long long id);
    void updateConfiguration(const std::string& key, const std::string& value);
    std::string deleteByOriginSql(TableType type, const std::string& customName) const;

    sqlite3* mDb = nullptr;
    std::string mPath;
    std::map<std::string, std::unique_ptr<SqlStatement>> mStatements;
    std::array<long long, kNumTableTypes> mRowCounts;
    // The user rows of each profile-level table that the last health check found
    // missing; -1 until one ran.
    std::array<int, kNumCopiedTables> mMissingCustomRows = {-1, -1, -1};
    bool mReadWanted = false;
    bool mReadOpen = false;
    int mTransactionDepth = 0;
    // The first failure of the open transaction; once set, its statements are skipped.
    std::string mTransactionError;
    std::string mSaveError;
};

}  // namespace vessa
