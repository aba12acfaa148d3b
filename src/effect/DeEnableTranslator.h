#pragma once

#include "effect/Translator.h"

namespace vessa {

// Dialog-enhancer enable: the same values go to DEON and to MDEE.
class DeEnableTranslator : public FixedSourceTranslator<DeEnableTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
