#include "effect/SimpleTranslator.h"

namespace vessa {

SimpleTranslator::SimpleTranslator(AupParameter target, Parameter source)
    : mTarget(target), mSrcParams{source} {}

void SimpleTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                    bool) const {
    cmd.add(mTarget, {&valuesOf(src, mSrcParams.front())});
}

}  // namespace vessa
