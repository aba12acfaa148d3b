#pragma once

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "model/Vocabulary.h"

namespace vessa {

class SxContext;

// Told of every change of the live audio context. The references passed are
// the context's live records, valid for the duration of the call only.
class OnSxContextChange {
  public:
    virtual ~OnSxContextChange() = default;
    virtual void onLoad(SxContext& context) = 0;
    virtual void onAupOnChanged(SxContext& context, bool on) = 0;
    virtual void onSelectedProfileChanged(SxContext& context) = 0;
    virtual void onSelectedProfileParameterChanged(SxContext& context, Profile& profile) = 0;
    virtual void onSelectedProfileEndpointChanged(SxContext& context, Port port,
                                                  ProfileEndpoint& endpoint) = 0;
    virtual void onSelectedProfileIeqChanged(SxContext& context, Port port, IeqPreset& preset) = 0;
    virtual void onSelectedProfileGeqChanged(SxContext& context, GeqPreset& preset) = 0;
    virtual void onSelectedTuningChanged(SxContext& context, Port port, Tuning& tuning) = 0;
};

}  // namespace vessa
