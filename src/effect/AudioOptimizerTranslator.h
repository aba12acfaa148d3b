#pragma once

#include "effect/Translator.h"

namespace vessa {

// Audio optimizer bands per output channel: band count first, then channel
// count (the other per-channel tables put the channel count first; the effect
// expects the two layouts as they are). Only 2 and 4 channels are sent.
class AudioOptimizerTranslator : public FixedSourceTranslator<AudioOptimizerTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
