#include "tuning/RegulatorTuningValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

const std::vector<std::string> RegulatorTuningValueSetter::kAttrNames = {
        "frequency", "threshold_low", "threshold_high", "isolated_band"};

RegulatorTuningValueSetter::RegulatorTuningValueSetter(const std::string& nodeName,
                                                       const std::vector<Parameter>& params)
    : MultiParamValueSetter(nodeName, params, kAttrNames) {}

void RegulatorTuningValueSetter::set(ParameterValues& values, TagIterator& it) const {
    constexpr size_t kIsolatedBand = 3;
    std::vector<std::vector<int>> lists(kAttrNames.size());
    forEachBand(it, 1, [&lists](const TagIterator&, const std::vector<std::string>& attrs) {
        for (size_t i = 0; i < attrs.size(); ++i) {
            lists[i].push_back(i == kIsolatedBand ? (attrs[i] == "true" ? 1 : 0)
                                                  : string2Int(attrs[i]));
        }
        return true;
    });
    storeLists(values, lists);
}

}  // namespace vessa
