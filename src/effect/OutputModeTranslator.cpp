#include "effect/OutputModeTranslator.h"

namespace vessa {

void OutputModeTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src,
                                        Endpoint endpoint, bool mono) const {
    std::vector<int>& virtualizer = valuesOf(src, Parameter::VIRTUALIZER_ENABLE);
    std::vector<int>& orientation = valuesOf(src, Parameter::ORIENTATION);
    const int endpointValue = static_cast<int>(endpoint);
    if (endpoint != Endpoint::SPEAKER) {
        cmd.addParts(AupParameter::DOM, {virtualizer, endpointValue, orientation});
        return;
    }
    const std::vector<int>& mixMatrix = valuesOf(src, Parameter::OUTPUT_MIX_MATRIX);
    if (mono) {
        // Written into the source itself, so the view keeps these values.
        virtualizer = {0};
        orientation = {1};
    }
    cmd.addParts(AupParameter::DOM, {virtualizer, endpointValue, orientation, mixMatrix});
}

}  // namespace vessa
