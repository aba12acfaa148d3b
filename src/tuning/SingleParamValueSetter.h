#pragma once

#include <string>

#include "model/Parameter.h"
#include "tuning/ValueSetter.h"

namespace vessa {

// Base of the setters whose element fills exactly one parameter.
class SingleParamValueSetter : public ValueSetter {
  public:
    Parameter getParameter() const { return mParam; }

  protected:
    SingleParamValueSetter(const std::string& nodeName, Parameter param)
        : ValueSetter(nodeName), mParam(param) {}

    const Parameter mParam;
};

}  // namespace vessa
