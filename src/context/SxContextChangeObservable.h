#pragma once

#include <set>

#include "context/OnSxContextChange.h"

namespace vessa {

// Forwards every notification to all registered observers, in ascending order
// of their addresses. Observers are borrowed, never deleted here.
class SxContextChangeObservable : public OnSxContextChange {
  public:
    SxContextChangeObservable() = default;
    ~SxContextChangeObservable() override;

    // A pointer already registered is ignored.
    void registerObserver(OnSxContextChange* observer);
    // Unregistering an observer that is not registered does nothing.
    void unregisterObserver(OnSxContextChange* observer);
    void unregisterAll();

    void onLoad(SxContext& context) override;
    void onAupOnChanged(SxContext& context, bool on) override;
    void onSelectedProfileChanged(SxContext& context) override;
    void onSelectedProfileParameterChanged(SxContext& context, Profile& profile) override;
    void onSelectedProfileEndpointChanged(SxContext& context, Port port,
                                          ProfileEndpoint& endpoint) override;
    void onSelectedProfileIeqChanged(SxContext& context, Port port, IeqPreset& preset) override;
    void onSelectedProfileGeqChanged(SxContext& context, GeqPreset& preset) override;
    void onSelectedTuningChanged(SxContext& context, Port port, Tuning& tuning) override;

  private:
    std::set<OnSxContextChange*> mObservers;
};

}  // namespace vessa
