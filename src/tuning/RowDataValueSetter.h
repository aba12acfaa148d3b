#pragma once

#include "tuning/SingleParamValueSetter.h"

namespace vessa {

// An integer list in the first attribute, whatever its name.
class RowDataValueSetter : public SingleParamValueSetter {
  public:
    RowDataValueSetter(const std::string& nodeName, Parameter param);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
