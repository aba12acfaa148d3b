#include "context/SxContextChangeObservable.h"

namespace vessa {

SxContextChangeObservable::~SxContextChangeObservable() {
    mObservers.clear();
}

void SxContextChangeObservable::registerObserver(OnSxContextChange* observer) {
    mObservers.insert(observer);
}

void SxContextChangeObservable::unregisterObserver(OnSxContextChange* observer) {
    mObservers.erase(observer);
}

void SxContextChangeObservable::unregisterAll() {
    mObservers.clear();
}

void SxContextChangeObservable::onLoad(SxContext& context) {
    for (OnSxContextChange* o : mObservers) o->onLoad(context);
}

void SxContextChangeObservable::onAupOnChanged(SxContext& context, bool on) {
    for (OnSxContextChange* o : mObservers) o->onAupOnChanged(context, on);
}

void SxContextChangeObservable::onSelectedProfileChanged(SxContext& context) {
    for (OnSxContextChange* o : mObservers) o->onSelectedProfileChanged(context);
}

void SxContextChangeObservable::onSelectedProfileParameterChanged(SxContext& context,
                                                                  Profile& profile) {
    for (OnSxContextChange* o : mObservers) o->onSelectedProfileParameterChanged(context, profile);
}

void SxContextChangeObservable::onSelectedProfileEndpointChanged(SxContext& context, Port port,
                                                                 ProfileEndpoint& endpoint) {
    for (OnSxContextChange* o : mObservers) {
        o->onSelectedProfileEndpointChanged(context, port, endpoint);
    }
}

void SxContextChangeObservable::onSelectedProfileIeqChanged(SxContext& context, Port port,
                                                            IeqPreset& preset) {
    for (OnSxContextChange* o : mObservers) o->onSelectedProfileIeqChanged(context, port, preset);
}

void SxContextChangeObservable::onSelectedProfileGeqChanged(SxContext& context, GeqPreset& preset) {
    for (OnSxContextChange* o : mObservers) o->onSelectedProfileGeqChanged(context, preset);
}

void SxContextChangeObservable::onSelectedTuningChanged(SxContext& context, Port port,
                                                        Tuning& tuning) {
    for (OnSxContextChange* o : mObservers) o->onSelectedTuningChanged(context, port, tuning);
}

}  // namespace vessa
