#include "tuning/VirtualBassValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

const std::vector<std::string> VirtualBassValueSetter::kAttrNames = {"frequency_low",
                                                                     "frequency_high"};

VirtualBassValueSetter::VirtualBassValueSetter(const std::string& nodeName,
                                               const std::vector<Parameter>& params)
    : MultiParamValueSetter(nodeName, params, kAttrNames) {}

void VirtualBassValueSetter::set(ParameterValues& values, TagIterator& it) const {
    std::vector<std::string> attrs;
    it.parseNodeWithName(kAttrNames, attrs);
    // A missing attribute, or a node that is not an element, reads as 0.
    attrs.resize(kAttrNames.size());
    std::vector<std::vector<int>> lists;
    for (const std::string& text : attrs) lists.push_back({string2Int(text)});
    storeLists(values, lists);
}

}  // namespace vessa
