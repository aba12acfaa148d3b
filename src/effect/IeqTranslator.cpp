#include "effect/IeqTranslator.h"

namespace vessa {

void IeqTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint, bool) const {
    const std::vector<int>& frequencies = valuesOf(src, Parameter::IEQ_FREQUENCY);
    const std::vector<int>& targets = valuesOf(src, Parameter::IEQ_TARGET);
    cmd.add(AupParameter::IEBS, lengthOf(frequencies), {&frequencies, &targets});
}

}  // namespace vessa
