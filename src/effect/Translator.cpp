#include "effect/Translator.h"

namespace vessa {

Translator::~Translator() = default;

int Translator::firstValueOf(ParameterValues& src, Parameter p) {
    const std::vector<int>& values = src.valuesOf(p);
    return values.empty() ? 0 : values.front();
}

int Translator::outputChannelsOf(ParameterValues& src) {
    return firstValueOf(src, Parameter::OUTPUT_CHANNELS);
}

void Translator::addChannelTable(SetParamCommand& cmd, AupParameter code, ParameterValues& src,
                                 const ChannelParams& params) {
    const int channels = outputChannelsOf(src);
    if (channels != kTwoChannels && channels != kFourChannels) return;
    const std::vector<int>& left = valuesOf(src, params.left);
    const std::vector<int>& right = valuesOf(src, params.right);
    const int bands = lengthOf(left);
    if (channels == kTwoChannels) {
        cmd.addParts(code, {channels, bands, left, right});
        return;
    }
    cmd.addParts(code, {channels, bands, left, right, valuesOf(src, params.leftSurround),
                        valuesOf(src, params.rightSurround)});
}

}  // namespace vessa
