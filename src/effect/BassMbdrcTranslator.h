#pragma once

#include "effect/Translator.h"

namespace vessa {

// The bass multiband-DRC tuning, sent only while the bass MBDRC is enabled.
// It is triggered by the tuning alone: a change of the enable reaches the
// effect through BMDE and does not resend the tuning.
class BassMbdrcTranslator : public FixedSourceTranslator<BassMbdrcTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
