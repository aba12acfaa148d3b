#include "model/ParameterValues.h"

namespace vessa {

ParamSet makeParamSet(std::initializer_list<int> values) {
    ParamSet set;
    for (int v : values) set.insert(toParameter(v));
    return set;
}

ParameterValues::~ParameterValues() = default;

bool ParameterValues::isDirty() const { return mDirty; }

void ParameterValues::setDirty(bool dirty) { mDirty = dirty; }

void ParameterValues::set(Parameter p, const std::vector<int>& values) {
    auto it = mValues.find(p);
    if (it == mValues.end()) {
        mValues.emplace(p, values);
    } else if (&it->second != &values) {
        it->second = values;
    }
    mDirty = true;
}

bool ParameterValues::checkAndUpdate(Parameter p, const std::vector<int>& values) {
    if (getValidParams().count(p) == 0) return false;
    std::vector<int>& current = mValues[p];
    if (current == values) return false;
    set(p, values);
    return true;
}

bool ParameterValues::equals(const ParameterValues& other) const {
    if (this == &other) return true;
    return mValues == other.mValues;
}

std::string ParameterValues::valuesToString() const {
    std::string out;
    for (const auto& [param, list] : mValues) {
        if (param == Parameter::IEQ_ID) continue;
        out += parameterName(param);
        out += '=';
        for (int v : list) {
            out += std::to_string(v);
            out += ',';
        }
        out += '\n';
    }
    return out;
}

}  // namespace vessa
