#pragma once

#include <cstdint>
#include <initializer_list>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "model/Parameter.h"

namespace vessa {

using ParamMap = std::map<Parameter, std::vector<int>>;
using ParamSet = std::set<Parameter>;

// Builds a parameter set from numeric values (the tables are written that way).
ParamSet makeParamSet(std::initializer_list<int> values);

// Base of every settings record: an ordered map from Parameter to a list of
// ints, the record's database row id and a dirty flag for the storage layer.
class ParameterValues {
public:
    ParameterValues() = default;
    ParameterValues(const ParameterValues&) = default;
    ParameterValues& operator=(const ParameterValues&) = default;

    virtual int64_t getId() const = 0;
    virtual bool isDirty() const;
    virtual void setDirty(bool dirty);
    virtual ~ParameterValues();
    virtual const ParamSet& getValidParams() const = 0;

    // Unconditional write; always marks the record dirty. No validity check.
    void set(Parameter p, const std::vector<int>& values);
    // Validated, change-detecting write. An absent parameter first gets an empty
    // entry (kept even when nothing else changes). True only on a real change.
    bool checkAndUpdate(Parameter p, const std::vector<int>& values);
    // Compares the maps only; ids and flags do not count.
    bool equals(const ParameterValues& other) const;
    // One "name=v1,v2,...,\n" line per entry, ieq_id left out.
    std::string valuesToString() const;

    ParamMap& values() { return mValues; }
    const ParamMap& values() const { return mValues; }
    // Lookup with insertion: an absent parameter is added with an empty list.
    std::vector<int>& valuesOf(Parameter p) { return mValues[p]; }

protected:
    int64_t mId = -1;
    bool mDirty = false;
    ParamMap mValues;
};

}  // namespace vessa
