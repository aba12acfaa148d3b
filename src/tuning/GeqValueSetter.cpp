#include "tuning/GeqValueSetter.h"

namespace vessa {

const std::vector<std::string> GeqValueSetter::kAttrNames = {"frequency", "gain"};

GeqValueSetter::GeqValueSetter(const std::string& nodeName, const std::vector<Parameter>& params)
    : EqBandValueSetter(nodeName, params, kAttrNames) {}

}  // namespace vessa
