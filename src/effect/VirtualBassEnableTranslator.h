#pragma once

#include "effect/Translator.h"

namespace vessa {

// Virtual bass on/off: VBM is mode 3 when the process is enabled, else 0;
// VBON carries the virtual-bass type as it is.
class VirtualBassEnableTranslator : public FixedSourceTranslator<VirtualBassEnableTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
