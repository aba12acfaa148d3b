#include "effect/DeAmountTranslator.h"

namespace vessa {

namespace {
constexpr int kMaxAmount = 12;
}

void DeAmountTranslator::aupTranslate(SetParamCommand& cmd, ParameterValues& src, Endpoint,
                                      bool) const {
    const std::vector<int>& amount = valuesOf(src, Parameter::DIALOG_ENHANCER_AMOUNT);
    if (!amount.empty() && amount.front() > kMaxAmount) {
        // Only the first value is clamped; the rest, if any, go as they are.
        std::vector<int> clamped = amount;
        clamped.front() = kMaxAmount;
        cmd.add(AupParameter::DEA, &clamped);
        return;
    }
    cmd.add(AupParameter::DEA, &amount);
}

}  // namespace vessa
