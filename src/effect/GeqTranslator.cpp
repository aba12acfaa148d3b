#include "effect/GeqTranslator.h"

namespace vessa {

void GeqTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint, bool) const {
    const std::vector<int>& frequencies = valuesOf(src, Parameter::GEQ_FREQUENCY);
    const std::vector<int>& gains = valuesOf(src, Parameter::GEQ_GAIN);
    cmd.add(AupParameter::GEBS, lengthOf(frequencies), {&frequencies, &gains});
    cmd.add(AupParameter::VCBF, &frequencies);
}

}  // namespace vessa
