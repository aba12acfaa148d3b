#pragma once

#include "effect/Translator.h"

namespace vessa {

// The custom DRC metadata, unchanged.
class CustomDRCTranslator : public FixedSourceTranslator<CustomDRCTranslator> {
  public:
    static const std::vector<Parameter> kSrcParams;

    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;
};

}  // namespace vessa
