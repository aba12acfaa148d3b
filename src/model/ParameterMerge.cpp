#include "model/ParameterMerge.h"

namespace vessa {

void mergeParameters(ParameterValues& view, ParameterValues& source, ParamChangeObserver* observer) {
    for (const auto& [param, list] : source.values()) {
        if (view.checkAndUpdate(param, list) && observer != nullptr) {
            observer->onParameterChanged(param);
        }
    }
}

}  // namespace vessa
