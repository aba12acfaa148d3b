#pragma once

#include "effect/Translator.h"

namespace vessa {

// Output mode (DOM): virtualizer enable, endpoint and orientation, plus the
// mix matrix for the speaker. A mono speaker never virtualises and always
// uses orientation 1; those values are written back into the source.
class OutputModeTranslator : public FixedSourceTranslator<OutputModeTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;
    // What it writes back into its source for a mono speaker.
    static constexpr Parameter kWrittenToSource[] = {Parameter::VIRTUALIZER_ENABLE,
                                                     Parameter::ORIENTATION};

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
