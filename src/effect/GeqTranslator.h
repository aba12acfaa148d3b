#pragma once

#include "effect/Translator.h"

namespace vessa {

// Graphic equaliser: GEBS carries the band count, the band frequencies and
// the gains; VCBF the frequencies alone.
class GeqTranslator : public FixedSourceTranslator<GeqTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
