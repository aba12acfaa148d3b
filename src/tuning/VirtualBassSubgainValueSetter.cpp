#include "tuning/VirtualBassSubgainValueSetter.h"

#include "tuning/TagIterator.h"

namespace vessa {

VirtualBassSubgainValueSetter::VirtualBassSubgainValueSetter(const std::string& nodeName,
                                                             Parameter param)
    : SingleParamValueSetter(nodeName, param) {}

void VirtualBassSubgainValueSetter::set(ParameterValues& values, TagIterator& it) const {
    std::vector<int> gains;
    it.parseNodeIntVector(gains);
    values.set(mParam, gains);
}

}  // namespace vessa
