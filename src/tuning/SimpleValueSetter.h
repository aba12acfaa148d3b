#pragma once

#include "tuning/SingleParamValueSetter.h"

namespace vessa {

// One number in the "value" attribute ("true" 1, "false" 0).
class SimpleValueSetter : public SingleParamValueSetter {
  public:
    SimpleValueSetter(const std::string& nodeName, Parameter param);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
