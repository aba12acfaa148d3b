#pragma once

#include "effect/Translator.h"

namespace vessa {

// Dialog-enhancer amount, clamped to at most 12 (there is deliberately no
// lower clamp).
class DeAmountTranslator : public FixedSourceTranslator<DeAmountTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
