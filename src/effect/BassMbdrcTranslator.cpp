#include "effect/BassMbdrcTranslator.h"

namespace vessa {

void BassMbdrcTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                       bool) const {
    if (firstValueOf(src, Parameter::BASS_MBDRC_ENABLE) == 0) return;
    cmd.add(AupParameter::BMDT, &valuesOf(src, Parameter::BASS_MBDRC_TUNING));
}

}  // namespace vessa
