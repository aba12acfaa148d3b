#pragma once

#include "tuning/EqBandValueSetter.h"

namespace vessa {

// Graphic-equaliser bands of any element name: frequency and gain.
class GeqValueSetter : public EqBandValueSetter {
  public:
    static const std::vector<std::string> kAttrNames;

    GeqValueSetter(const std::string& nodeName, const std::vector<Parameter>& params);
};

}  // namespace vessa
