#pragma once

#include "effect/Translator.h"

namespace vessa {

// Intelligent equaliser: IEBS carries the band count, the band frequencies
// and the targets.
class IeqTranslator : public FixedSourceTranslator<IeqTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
