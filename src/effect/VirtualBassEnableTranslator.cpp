#include "effect/VirtualBassEnableTranslator.h"

namespace vessa {

namespace {
// The virtual-bass mode the effect runs when the process is enabled.
constexpr int kEnabledMode = 3;
}  // namespace

void VirtualBassEnableTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                               bool) const {
    const bool enabled = firstValueOf(src, Parameter::VIRTUAL_BASS_ENABLE) != 0;
    cmd.add(AupParameter::VBM, enabled ? kEnabledMode : 0);
    cmd.add(AupParameter::VBON, &valuesOf(src, Parameter::VIRTUAL_BASS_TYPE));
}

}  // namespace vessa
