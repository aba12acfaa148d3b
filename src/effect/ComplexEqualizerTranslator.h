#pragma once

#include "effect/Translator.h"

namespace vessa {

// Complex equaliser tables per output channel, channel count first, sent
// only while the complex equaliser enable is exactly 1 and for 2 or 4 channels.
class ComplexEqualizerTranslator : public FixedSourceTranslator<ComplexEqualizerTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
