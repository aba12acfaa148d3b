#pragma once

#include "effect/Translator.h"

namespace vessa {

// Virtual bass source and mix frequency ranges (low, then high), always.
class VirtualBassTranslator : public FixedSourceTranslator<VirtualBassTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
