#include "tuning/DrcRowDataValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

DrcRowDataValueSetter::DrcRowDataValueSetter(const std::string& nodeName, Parameter param)
    : RowDataValueSetter(nodeName, param) {}

void DrcRowDataValueSetter::set(ParameterValues& values, TagIterator& it) const {
    std::vector<int> row = NodeParseUtils::parseDataRow(it);
    if (row.empty()) row.push_back(0);
    values.set(mParam, row);
}

}  // namespace vessa
