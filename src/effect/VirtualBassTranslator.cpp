#include "effect/VirtualBassTranslator.h"

namespace vessa {

void VirtualBassTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                         bool) const {
    cmd.add(AupParameter::VBSF, {&valuesOf(src, Parameter::VIRTUAL_BASS_SRC_FREQ_LOW),
                                 &valuesOf(src, Parameter::VIRTUAL_BASS_SRC_FREQ_HIGH)});
    cmd.add(AupParameter::VBMF, {&valuesOf(src, Parameter::VIRTUAL_BASS_MIX_FREQ_LOW),
                                 &valuesOf(src, Parameter::VIRTUAL_BASS_MIX_FREQ_HIGH)});
}

}  // namespace vessa
