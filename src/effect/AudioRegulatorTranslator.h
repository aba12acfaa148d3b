#pragma once

#include "effect/Translator.h"

namespace vessa {

// Audio regulator: the stress amount (ARSA) and the band table (ARBS),
// always; the sibilance suppression table (RSSA) only while it is enabled
// (exactly 1) and for 2 or 4 channels.
class AudioRegulatorTranslator : public FixedSourceTranslator<AudioRegulatorTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
