#include "effect/CustomDRCTranslator.h"

namespace vessa {

void CustomDRCTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                       bool) const {
    cmd.add(AupParameter::DRCM, &valuesOf(src, Parameter::CUSTOM_DRC_METADATA));
}

}  // namespace vessa
