#include "effect/ComplexEqualizerTranslator.h"

namespace vessa {

void ComplexEqualizerTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                              bool) const {
    if (firstValueOf(src, Parameter::COMPLEX_EQUALIZER_ENABLE) != 1) return;
    addChannelTable(
            cmd, AupParameter::CEQT, src,
            {Parameter::COMPLEX_EQUALIZER_TUNING_LEFT, Parameter::COMPLEX_EQUALIZER_TUNING_RIGHT,
             Parameter::COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
             Parameter::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND});
}

}  // namespace vessa
