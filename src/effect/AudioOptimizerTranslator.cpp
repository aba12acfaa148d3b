#include "effect/AudioOptimizerTranslator.h"

namespace vessa {

void AudioOptimizerTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                            bool) const {
    const int channels = outputChannelsOf(src);
    if (channels != kTwoChannels && channels != kFourChannels) return;
    const std::vector<int>& frequencies = valuesOf(src, Parameter::AUDIO_OPTIMIZER_FREQUENCY);
    const std::vector<int>& left = valuesOf(src, Parameter::AUDIO_OPTIMIZER_GAIN_L);
    const std::vector<int>& right = valuesOf(src, Parameter::AUDIO_OPTIMIZER_GAIN_R);
    const int bands = lengthOf(frequencies);
    if (channels == kTwoChannels) {
        cmd.addParts(AupParameter::AOBS, {bands, channels, frequencies, left, right});
        return;
    }
    cmd.addParts(AupParameter::AOBS, {bands, channels, frequencies, left, right,
                                      valuesOf(src, Parameter::AUDIO_OPTIMIZER_GAIN_LS),
                                      valuesOf(src, Parameter::AUDIO_OPTIMIZER_GAIN_RS)});
}

}  // namespace vessa
