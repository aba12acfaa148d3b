#pragma once

#include "tuning/MultiParamValueSetter.h"

namespace vessa {

// One band per child element; the surround gains only where written.
class AudioOptimizerValueSetter : public MultiParamValueSetter {
  public:
    static const std::vector<std::string> kAttrNames;

    AudioOptimizerValueSetter(const std::string& nodeName, const std::vector<Parameter>& params);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
