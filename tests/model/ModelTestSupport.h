#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "model/DeviceParameters.h"
#include "model/DeviceTuning.h"
#include "model/ProfileParameters.h"

namespace vessa::test {

using Events = std::vector<std::string>;
using P = Parameter;
using V = std::vector<int>;

// Records every call as text so that the order of calls can be compared whole.
class RecordingObserver : public ParamChangeObserver {
  public:
    void setSource(ParameterValues* source, Endpoint endpoint, bool mono) override {
        lastSource = source;
        events.push_back("source " + std::string(endpointName(endpoint)) + (mono ? " mono" : ""));
    }
    void onParameterChanged(Parameter p) override { events.push_back(parameterName(p)); }

    // The calls since the last take().
    Events take() { return std::move(events); }

    ParameterValues* lastSource = nullptr;
    Events events;
};

}  // namespace vessa::test
