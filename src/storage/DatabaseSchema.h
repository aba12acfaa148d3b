#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "model/Parameter.h"

namespace vessa {

// The tables of the settings database, in creation order.
enum class TableType : int32_t {
    CONFIGURATION = 0,
    IEQ_PRESETS = 1,
    GEQ_PRESETS = 2,
    PROFILES = 3,
    PROFILE_ENDPOINTS = 4,
    TUNINGS = 5,
    DEVICE_TUNINGS = 6,
};
constexpr int kNumTableTypes = 7;

// Names and column layouts of the settings tables. A record table's columns are
// the row id, the origin word, one column per header line of the record's dump
// and then one column per parameter in ascending Parameter order, so a dump maps
// onto a row line by line.
class DatabaseSchema {
  public:
    struct Table {
        std::string name;
        // Every column before the parameter columns, starting with "_id".
        std::vector<std::string> leadingColumns;
        std::vector<Parameter> parameterColumns;
        // Position of each parameter among parameterColumns, -1 where it has none.
        std::array<int, kNumParameters> parameterSlot;
        // " (" + column definitions + ")", as appended to "CREATE TABLE <name>".
        std::string columnList;
        // "SELECT <every column, in order> FROM <name>": a row read through it has
        // its columns where this table says, whatever the file's own order.
        std::string selectSql;
        // "INSERT INTO <name> VALUES(?, ...)", one parameter per column.
        std::string insertSql;
    };

    static const Table& table(TableType type);
    static const std::string& tableName(TableType type) { return table(type).name; }

  private:
    DatabaseSchema() = delete;
};

}  // namespace vessa
