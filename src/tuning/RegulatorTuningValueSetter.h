#pragma once

#include "tuning/MultiParamValueSetter.h"

namespace vessa {

// One band per child element; "isolated_band" is a flag.
class RegulatorTuningValueSetter : public MultiParamValueSetter {
  public:
    static const std::vector<std::string> kAttrNames;

    RegulatorTuningValueSetter(const std::string& nodeName, const std::vector<Parameter>& params);

    void set(ParameterValues& values, TagIterator& it) const override;
};

}  // namespace vessa
