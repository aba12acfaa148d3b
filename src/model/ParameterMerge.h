#pragma once

#include "model/ParamChangeObserver.h"
#include "model/ParameterValues.h"

namespace vessa {

// The merge step both views share: every entry of the source, in ascending
// parameter order, goes through checkAndUpdate on the view, and each real
// change is reported to the observer before the next entry.
void mergeParameters(ParameterValues& view, ParameterValues& source, ParamChangeObserver* observer);

}  // namespace vessa
