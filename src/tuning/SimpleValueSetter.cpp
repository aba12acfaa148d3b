#include "tuning/SimpleValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

SimpleValueSetter::SimpleValueSetter(const std::string& nodeName, Parameter param)
    : SingleParamValueSetter(nodeName, param) {}

void SimpleValueSetter::set(ParameterValues& values, TagIterator& it) const {
    values.set(mParam, {NodeParseUtils::parseValue(it)});
}

}  // namespace vessa
