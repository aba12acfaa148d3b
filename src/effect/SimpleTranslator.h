#pragma once

#include "effect/Translator.h"

namespace vessa {

// Copies one Parameter's values unchanged to one effect code.
class SimpleTranslator : public Translator {
  public:
    SimpleTranslator(AupParameter target, Parameter source);

    const std::vector<Parameter>& getSrcParams() const override { return mSrcParams; }
    void aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint endpoint,
                      bool mono) const override;

    AupParameter getTarget() const { return mTarget; }

  private:
    AupParameter mTarget;
    std::vector<Parameter> mSrcParams;  // exactly one
};

}  // namespace vessa
