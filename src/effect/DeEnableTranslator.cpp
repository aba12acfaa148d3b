#include "effect/DeEnableTranslator.h"

namespace vessa {

void DeEnableTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                      bool) const {
    const std::vector<int>& enable = valuesOf(src, Parameter::DIALOG_ENHANCER_ENABLE);
    cmd.add(AupParameter::DEON, &enable);
    cmd.add(AupParameter::MDEE, &enable);
}

}  // namespace vessa
