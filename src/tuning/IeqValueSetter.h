#pragma once

#include "tuning/EqBandValueSetter.h"

namespace vessa {

// Intelligent-EQ target curve: "band_ieq" elements with frequency and target; the
// first element of another name ends the curve.
class IeqValueSetter : public EqBandValueSetter {
  public:
    static const std::vector<std::string> kAttrNames;

    IeqValueSetter(const std::string& nodeName, const std::vector<Parameter>& params);

  protected:
    bool isBand(const TagIterator& it) const override;
};

}  // namespace vessa
