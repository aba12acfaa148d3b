#pragma once

#include "tuning/SingleParamValueSetter.h"

namespace vessa {

// Every attribute of the element is one integer, kept in document order.
class VirtualBassSubgainValueSetter : public SingleParamValueSetter {
  public:
    VirtualBassSubgainValueSetter(const std::string& nodeName, Parameter param);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
