#define LOG_TAG nullptr

#include "context/ProfileContext.h"

#include <log/log.h>

#include <cstdlib>

#include "storage/Provider.h"

namespace vessa {

namespace {

// A profile without one of its endpoints is a broken configuration; the
// service cannot run on it, so the process ends.
[[noreturn]] void missingEndpoint(Endpoint endpoint) {
    ALOGE("Couldn't find the profile endpoint fo %d", static_cast<int>(endpoint));
    exit(-1);
}

ProfileEndpoint* findEndpoint(const ProfileEndpointSet& endpoints, Endpoint endpoint) {
    for (ProfileEndpoint* pe : endpoints) {
        if (pe->getEndpoint() == endpoint) return pe;
    }
    missingEndpoint(endpoint);
}

}  // namespace

ProfileContext::Defaults::Defaults(Provider* provider, int id)
    : profile(provider->loadDefaultProfile(id)),
      profileEndpoints(provider->loadDefaultProfileEndpoints(id)),
      geqPreset(provider->loadDefaultGeqPreset(id)) {}

ProfileContext::ProfileContext(Provider* provider, int id) : mProvider(provider), mId(id) {}

ProfileContext::~ProfileContext() = default;

void ProfileContext::load() {
    mProfile = mProvider->loadProfile(mId);
    mProfileEndpoints = mProvider->loadProfileEndpoints(mId);
    mGeqPreset = mProvider->loadGeqPreset(mId);
    if (mDefaults == nullptr) mDefaults = std::make_unique<Defaults>(mProvider, mId);
}

void ProfileContext::save() {
    mProvider->save(mProfile);
    for (ProfileEndpoint* pe : mProfileEndpoints) mProvider->save(pe);
    mProvider->save(mGeqPreset);
}

void ProfileContext::reset() {
    mProfile = mProvider->reset(mProfile);
    for (ProfileEndpoint* pe : mProfileEndpoints) mProvider->reset(pe);
    mProvider->reset(mGeqPreset);
}

void ProfileContext::resetGeq() {
    mProvider->reset(mGeqPreset);
}

ProfileEndpoint* ProfileContext::getProfileEndpoint(Endpoint endpoint) const {
    return findEndpoint(mProfileEndpoints, endpoint);
}

IeqPreset* ProfileContext::getSelectedIeqPreset(Endpoint endpoint) const {
    ProfileEndpoint* pe = findEndpoint(mProfileEndpoints, endpoint);
    const std::vector<int>& enable = pe->valuesOf(Parameter::IEQ_ENABLE);
    if (!enable.empty() && enable[0] != 0) {
        return mProvider->loadIeqPreset(pe->getSelectedIeqPreset());
    }
    return mProvider->loadIeqPreset(PresetType::OFF);
}

// ProfileEndpoint::equals already compares the selected IEQ preset, so one
// walk serves both modified checks.
bool ProfileContext::endpointsDifferFromDefaults() const {
    for (ProfileEndpoint* def : mDefaults->profileEndpoints) {
        ProfileEndpoint* live = findEndpoint(mProfileEndpoints, def->getEndpoint());
        if (!live->equals(*def)) return true;
    }
    return false;
}

bool ProfileContext::isModified() const {
    return isProfileSpecificSettingsModified() || !mGeqPreset->equals(*mDefaults->geqPreset);
}

bool ProfileContext::isProfileSpecificSettingsModified() const {
    return !mProfile->equals(*mDefaults->profile) || endpointsDifferFromDefaults();
}

bool ProfileContext::isGeqModified() const {
    // Judged against a fresh read of the factory preset, not the one kept in
    // the defaults: the two checks take their reference from different places.
    GeqPreset* def = mProvider->loadDefaultGeqPreset(mId);
    return !def->equals(*mGeqPreset);
}

}  // namespace vessa
