#include "tuning/MixMatrixValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

MixMatrixValueSetter::MixMatrixValueSetter(const std::string& nodeName, Parameter param)
    : SingleParamValueSetter(nodeName, param) {}

void MixMatrixValueSetter::set(ParameterValues& values, TagIterator& it) const {
    values.set(mParam, NodeParseUtils::parseMixMatrix(it));
}

}  // namespace vessa
