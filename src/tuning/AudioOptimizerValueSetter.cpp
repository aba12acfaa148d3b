#include "tuning/AudioOptimizerValueSetter.h"

#include "tuning/NodeParseUtils.h"

namespace vessa {

const std::vector<std::string> AudioOptimizerValueSetter::kAttrNames = {
        "frequency", "gain_left", "gain_right", "gain_left_surround", "gain_right_surround"};

AudioOptimizerValueSetter::AudioOptimizerValueSetter(const std::string& nodeName,
                                                     const std::vector<Parameter>& params)
    : MultiParamValueSetter(nodeName, params, kAttrNames) {}

void AudioOptimizerValueSetter::set(ParameterValues& values, TagIterator& it) const {
    // Frequency and the front gains are always present in a band; the surround
    // gains exist only for outputs that have surround channels.
    constexpr size_t kAlwaysPresent = 3;
    std::vector<std::vector<int>> lists(kAttrNames.size());
    forEachBand(it, 1, [&lists](const TagIterator&, const std::vector<std::string>& attrs) {
        for (size_t i = 0; i < attrs.size(); ++i) {
            if (i < kAlwaysPresent || !attrs[i].empty()) lists[i].push_back(string2Int(attrs[i]));
        }
        return true;
    });
    storeLists(values, lists);
}

}  // namespace vessa
