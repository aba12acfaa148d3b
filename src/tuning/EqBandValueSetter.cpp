#include "tuning/EqBandValueSetter.h"

#include "model/StringUtils.h"

namespace vessa {

EqBandValueSetter::EqBandValueSetter(const std::string& nodeName,
                                     const std::vector<Parameter>& params,
                                     const std::vector<std::string>& attrNames)
    : MultiParamValueSetter(nodeName, params, attrNames) {}

void EqBandValueSetter::set(ParameterValues& values, TagIterator& it) const {
    // The fields are joined as text and converted once: a band lacking an
    // attribute leaves an empty field, which ends that list (and only that one).
    std::string firsts;
    std::string seconds;
    forEachBand(it, 3,
                [this, &firsts, &seconds](const TagIterator& node,
                                          const std::vector<std::string>& attrs) {
                    if (!isBand(node)) return false;
                    if (attrs.size() >= 2) {
                        firsts.append(attrs[0]).push_back(',');
                        seconds.append(attrs[1]).push_back(',');
                    }
                    return true;
                });
    std::vector<std::vector<int>> lists(2);
    string2IntVector(firsts, lists[0]);
    string2IntVector(seconds, lists[1]);
    storeLists(values, lists);
}

bool EqBandValueSetter::isBand(const TagIterator&) const {
    return true;
}

}  // namespace vessa
