#pragma once

#include "model/Parameter.h"
#include "model/Vocabulary.h"

namespace vessa {

class ParameterValues;

// Told by a parameter view which view it watches and which parameters changed.
class ParamChangeObserver {
public:
    virtual ~ParamChangeObserver() = default;
    // The watched view, the endpoint kind of its output and whether it is mono.
    virtual void setSource(ParameterValues* source, Endpoint endpoint, bool mono) = 0;
    virtual void onParameterChanged(Parameter p) = 0;
};

}  // namespace vessa
