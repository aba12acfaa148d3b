#pragma once

#include "tuning/SingleParamValueSetter.h"

namespace vessa {

// A matrix: rows below a wrapper element, each row list in its first attribute.
class MixMatrixValueSetter : public SingleParamValueSetter {
  public:
    MixMatrixValueSetter(const std::string& nodeName, Parameter param);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
