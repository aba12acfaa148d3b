#pragma once

#include "tuning/MultiParamValueSetter.h"

namespace vessa {

// A frequency pair in attributes of the element itself, one parameter each.
class VirtualBassValueSetter : public MultiParamValueSetter {
  public:
    static const std::vector<std::string> kAttrNames;

    VirtualBassValueSetter(const std::string& nodeName, const std::vector<Parameter>& params);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
