#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "context/OnSxContextChange.h"
#include "context/SxContext.h"
#include "effect/AupContext.h"
#include "effect/AupEffect.h"
#include "effect/ParameterTranslator.h"

namespace vessa {

// Keeps the effect in step with the audio context: every notification updates
// the parameter views, and only what changed is sent, in one batch.
class AupController : public OnSxContextChange {
  public:
    // The devices controlled: the six outputs and the default device, which
    // stands for the profile-wide parameters.
    static const std::set<AndroidDevice> kControlledDevices;

    // While one lives, each notification the context raises reports a change of one
    // known Parameter (the manager knows which one a request sets), so only that
    // Parameter of the record handed over needs merging. A null controller is ignored.
    class ParameterChange {
      public:
        ParameterChange(AupController* controller, Parameter changed);
        ~ParameterChange();
        ParameterChange(const ParameterChange&) = delete;
        ParameterChange& operator=(const ParameterChange&) = delete;

      private:
        AupController* mController;
        std::optional<Parameter> mPrevious;
    };

    AupController(int value, AupEffect& effect);
    ~AupController() override;
    AupController(const AupController&) = delete;
    AupController& operator=(const AupController&) = delete;

    // Sends what every device's translator has pending, devices in ascending order.
    void sendParameters(AndroidDevice target);
    // The full resend: every translator of every device, then the on/off state.
    void setAupEffect(AupEffect& effect, SxContext& context);

    void onLoad(SxContext& context) override;
    void onAupOnChanged(SxContext& context, bool on) override;
    void onSelectedProfileChanged(SxContext& context) override;
    void onSelectedProfileParameterChanged(SxContext& context, Profile& profile) override;
    void onSelectedProfileEndpointChanged(SxContext& context, Port port,
                                          ProfileEndpoint& endpoint) override;
    void onSelectedProfileIeqChanged(SxContext& context, Port port, IeqPreset& preset) override;
    void onSelectedProfileGeqChanged(SxContext& context, GeqPreset& preset) override;
    void onSelectedTuningChanged(SxContext& context, Port port, Tuning& tuning) override;

    AupContext* getContext() const { return mContext.get(); }

  private:
    // Applies the port's profile endpoint and IEQ preset of the selected profile.
    void applyEndpoint(SxContext& sx, Port port, bool logMissing);

    std::unique_ptr<AupContext> mContext;
    std::map<AndroidDevice, ParameterTranslator*> mTranslators;
    AupEffect* mEffect;
    [[maybe_unused]] int mValue;
    // The batch of every send, kept with its capacity from one send to the next.
    std::vector<int> mBatch;
    // Set by a ParameterChange: the one Parameter the notifications report.
    std::optional<Parameter> mChanged;
};

}  // namespace vessa
