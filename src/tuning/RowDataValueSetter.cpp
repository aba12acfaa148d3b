#include "tuning/RowDataValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

RowDataValueSetter::RowDataValueSetter(const std::string& nodeName, Parameter param)
    : SingleParamValueSetter(nodeName, param) {}

void RowDataValueSetter::set(ParameterValues& values, TagIterator& it) const {
    values.set(mParam, NodeParseUtils::parseDataRow(it));
}

}  // namespace vessa
