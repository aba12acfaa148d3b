#include "effect/AudioRegulatorTranslator.h"

namespace vessa {

void AudioRegulatorTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                            bool) const {
    // The channel-count list goes into ARSA as it is, whatever its length.
    cmd.add(AupParameter::ARSA, {&valuesOf(src, Parameter::OUTPUT_CHANNELS),
                                 &valuesOf(src, Parameter::REGULATOR_STRESS_AMOUNT)});
    const std::vector<int>& frequencies = valuesOf(src, Parameter::REGULATOR_FREQUENCY);
    cmd.add(AupParameter::ARBS, lengthOf(frequencies),
            {&frequencies, &valuesOf(src, Parameter::REGULATOR_THRESHOLD_LOW),
             &valuesOf(src, Parameter::REGULATOR_THRESHOLD_HIGH),
             &valuesOf(src, Parameter::REGULATOR_ISOLATED_BAND)});
    if (firstValueOf(src, Parameter::REGULATOR_SIBILANCE_SUPPRESS_ENABLE) != 1) return;
    addChannelTable(cmd, AupParameter::RSSA, src,
                    {Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
                     Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
                     Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
                     Parameter::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND});
}

}  // namespace vessa
