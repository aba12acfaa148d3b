#define LOG_TAG "ValueSetter"

#include "tuning/IeqValueSetter.h"

#include <log/log.h>

namespace vessa {

const std::vector<std::string> IeqValueSetter::kAttrNames = {"frequency", "target"};

IeqValueSetter::IeqValueSetter(const std::string& nodeName, const std::vector<Parameter>& params)
    : EqBandValueSetter(nodeName, params, kAttrNames) {}

bool IeqValueSetter::isBand(const TagIterator& it) const {
    if (!it.isElementNode() || it.getNodeName() == "band_ieq") return true;
    ALOGI("No attribute band_ieq was found!");
    return false;
}

}  // namespace vessa
