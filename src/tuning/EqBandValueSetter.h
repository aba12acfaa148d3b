#pragma once

#include "tuning/MultiParamValueSetter.h"

namespace vessa {

// Equaliser bands three levels below the setter's element, two attributes each:
// the first fills the first parameter, the second the second.
class EqBandValueSetter : public MultiParamValueSetter {
  public:
    void set(ParameterValues& values, TagIterator& it) const override;

  protected:
    EqBandValueSetter(const std::string& nodeName, const std::vector<Parameter>& params,
                      const std::vector<std::string>& attrNames);

    // False ends the band list at the current node.
    virtual bool isBand(const TagIterator& it) const;
};

}  // namespace vessa
