#include "tuning/ValueSetter.h"

namespace vessa {

ValueSetter::ValueSetter(const std::string& nodeName) : mNodeName(nodeName) {}

ValueSetter::~ValueSetter() = default;

std::string ValueSetter::getNodeName() const {
    return mNodeName;
}

}  // namespace vessa
