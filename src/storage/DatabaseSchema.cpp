#include "storage/DatabaseSchema.h"

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace vessa {

namespace {

DatabaseSchema::Table makeTable(const char* name, std::vector<std::string> leading,
                                const ParamSet& parameters) {
    DatabaseSchema::Table table;
    table.name = name;
    table.leadingColumns = std::move(leading);
    table.parameterColumns.assign(parameters.begin(), parameters.end());
    table.parameterSlot.fill(-1);
    std::string columns, names, places;
    auto add = [&](const std::string& column, const char* type) {
        const char* separator = columns.empty() ? "" : ", ";
        columns += separator + column + type;
        names += separator + column;
        places += std::string(separator) + "?";
    };
    for (const std::string& column : table.leadingColumns) {
        add(column, column == "_id" ? " INTEGER" : " TEXT");
    }
    for (size_t i = 0; i < table.parameterColumns.size(); ++i) {
        Parameter p = table.parameterColumns[i];
        table.parameterSlot[toInt(p)] = static_cast<int>(i);
        add(parameterName(p), " TEXT");
    }
    table.columnList = " (" + columns + ")";
    table.selectSql = "SELECT " + names + " FROM " + table.name;
    table.insertSql = "INSERT INTO " + table.name + " VALUES(" + places + ")";
    return table;
}

// The IEQ preset's type is stored through its own header line, so ieq_id gets no column.
ParamSet ieqColumns() {
    ParamSet set = IeqPreset::kValidParams;
    set.erase(Parameter::IEQ_ID);
    return set;
}

// virtual_bass_type keeps a column although a profile endpoint does not validate it:
// an unconditional write can still put it into the record.
ParamSet profileEndpointColumns() {
    ParamSet set = ProfileEndpoint::kValidParams;
    set.insert(Parameter::VIRTUAL_BASS_TYPE);
    return set;
}

// Built on first use, after static initialisation of the records' parameter sets.
const std::array<DatabaseSchema::Table, kNumTableTypes>& tables() {
    static const std::array<DatabaseSchema::Table, kNumTableTypes> kTables = {
            makeTable("configuration", {"_id", "key", "value"}, {}),
            makeTable("ieq_presets", {"_id", "custom_name", "preset_type"}, ieqColumns()),
            makeTable("geq_presets", {"_id", "custom_name", "profile_id"}, GeqPreset::kValidParams),
            makeTable("profiles",
                      {"_id", "custom_name", "profile_id", "name", "is_mobility",
                       "selected_geq_preset_id"},
                      Profile::kValidParams),
            makeTable("profile_endpoints",
                      {"_id", "custom_name", "profile_id", "endpoint", "selected_ieq_preset_type"},
                      profileEndpointColumns()),
            makeTable("tunings",
                      {"_id", "custom_name", "name", "endpoint", "is_mono", "is_readonly"},
                      Tuning::kValidParams),
            makeTable("device_tunings", {"_id", "custom_name", "device", "port", "tuning_id"}, {}),
    };
    return kTables;
}

}  // namespace

const DatabaseSchema::Table& DatabaseSchema::table(TableType type) {
    return tables()[static_cast<size_t>(type)];
}

}  // namespace vessa
