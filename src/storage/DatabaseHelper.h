#pragma once

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

// The only code that speaks SQL: opens the settings database, creates and drops its
// tables and moves records in and out of rows. Statements are plain text; every
// quoted value has its single quotes doubled. Failures are logged, never returned:
// without a connection every operation is a logged no-op.
class DatabaseHelper {
  public:
    // One row as (column name, text) pairs, in column order; NULL columns are left out.
    using Row = std::vector<std::pair<std::string, std::string>>;

    static constexpr const char* kDirectory = "/data/vendor/vessa/";

    // Opens (creating if needed) kDirectory + fileName under the filesystem root.
    explicit DatabaseHelper(const std::string& fileName);
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
    void commitTransaction();

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
    void queryProfileNames(std::vector<std::string>& names, const std::string& customName);
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
    std::string selectAll(TableType type, const std::string& where) const;
    // The last row of a record query; logs `missing` when there is none.
    bool queryLastRow(TableType type, const std::string& where, const char* missing, Row& row);
    bool refuseDefault(const std::string& customName, int line) const;
    // Deletes the record's row and writes it again from its dump.
    void replaceRow(TableType type, const std::string& customName, const std::string& match,
                    const std::string& dump, long long id);
    void updateConfiguration(const std::string& key, const std::string& value);
    std::string deleteByOriginSql(TableType type, const std::string& customName) const;

    sqlite3* mDb = nullptr;
    std::string mPath;
};

}  // namespace vessa
