#define LOG_TAG "SxContext"

#include "context/SxContext.h"

#include <log/log.h>

#include <algorithm>
#include <cstdlib>

#include "context/ContextLock.h"
#include "storage/Provider.h"

namespace vessa {

namespace {
constexpr const char* kDefaultDevicePrefix = "default_";
}  // namespace

const std::set<Port> SxContext::kSupportedPorts = {Port::INTERNAL_SPEAKER, Port::HDMI,
                                                   Port::MIRACAST,         Port::HEADPHONE,
                                                   Port::BLUETOOTH,        Port::USB};

SxContext::SxContext(Provider* provider, SxContextChangeObservable* observable)
    : mProvider(provider), mObservable(observable), mNumOfProfiles(provider->getNumOfProfiles()) {
    for (int id = 0; id < mNumOfProfiles; ++id) {
        mProfileContexts.insert(new ProfileContext(provider, id));
    }
}

SxContext::~SxContext() {
    for (ProfileContext* context : mProfileContexts) delete context;
}

void SxContext::loadProfiles(int selectedId) {
    for (ProfileContext* context : mProfileContexts) {
        context->load();
        if (context->getId() == selectedId) mSelectedProfile = context;
    }
    if (mSelectedProfile == nullptr && !mProfileContexts.empty()) {
        // A database without a valid selection would leave nothing selected;
        // fall back to profile 0 rather than fail on the first request.
        ALOGW("No profile %d, selecting profile 0", selectedId);
        mSelectedProfile = getContext(0);
    }
}

void SxContext::load() {
    loadProfiles(mProvider->getSelectedProfile());
    for (Port port : kSupportedPorts) {
        std::string device = mProvider->getDeviceTuning(portName(port));
        mProvider->loadDeviceTuningsForPort(port);
        mSelectedTuningDevices.emplace(port, device);
        mSelectedTunings.emplace(port, mProvider->loadTuningForDevice(device));
    }
    mAupOn = mProvider->isAupOn();
    mObservable->onLoad(*this);
}

void SxContext::reloadAllProfile() {
    ContextLock lock(mLock);
    loadProfiles(mProvider->getSelectedProfile());
    mAupOn = mProvider->isAupOn();
    bool on = mAupOn;
    lock.unlock();
    mObservable->onSelectedProfileChanged(*this);
    mObservable->onAupOnChanged(*this, on);
}

// Binder threads read the selection while the event thread changes it, so
// the maps and the provider's caches are touched under the lock here too;
// it is released around each notification.
void SxContext::reloadTuning() {
    ContextLock lock(mLock);
    mSelectedTunings.clear();
    for (Port port : kSupportedPorts) {
        std::string device = mSelectedTuningDevices[port];
        std::vector<std::string> available = availableTuningDevicesLocked(port);
        if (std::find(available.begin(), available.end(), device) == available.end()) {
            std::string fallback = defaultTuningDeviceLocked(port);
            ALOGW("Current selected tuning dev[%s] is not available for port[%s], "
                  "revert to use dev[%s].",
                  device.c_str(), portName(port), fallback.c_str());
            device = fallback;
            mSelectedTuningDevices[port] = fallback;
        }
        Tuning* tuning = mProvider->loadTuningForDevice(device);
        if (tuning == nullptr) {
            ALOGE("Cannot load tuning data for device[%s] on port[%s]", device.c_str(),
                  portName(port));
            continue;
        }
        mSelectedTunings[port] = tuning;
        ALOGD("Reset tuning[%s] for port[%s] and notify observers.", tuning->getName().c_str(),
              portName(port));
        lock.unlock();
        mObservable->onSelectedTuningChanged(*this, port, *tuning);
        lock.lock();
    }
}

void SxContext::registerObserver(OnSxContextChange* observer) {
    mObservable->registerObserver(observer);
    observer->onLoad(*this);
}

void SxContext::unregisterObserver(OnSxContextChange* observer) {
    mObservable->unregisterObserver(observer);
}

bool SxContext::isSelected(int id) const {
    return mSelectedProfile != nullptr && mSelectedProfile->getId() == id;
}

ProfileContext* SxContext::getContext(int id) {
    if (isSelected(id)) return mSelectedProfile;
    for (ProfileContext* context : mProfileContexts) {
        if (context->getId() == id) return context;
    }
    // Every request names profiles by id; an unknown one means the
    // configuration and the database disagree, and the service cannot go on.
    ALOGE("Couldn't find the context for profileId: %d", id);
    exit(-1);
}

Profile* SxContext::getSelectedProfile() {
    ContextLock lock(mLock);
    return mSelectedProfile->getProfile();
}

void SxContext::setSelectedProfile(int id) {
    ContextLock lock(mLock);
    if (isSelected(id)) return;
    mSelectedProfile = getContext(id);
    lock.unlock();
    mObservable->onSelectedProfileChanged(*this);
}

Profile* SxContext::getDefaultProfile(int id) {
    ContextLock lock(mLock);
    return mProvider->loadDefaultProfile(id);
}

Profile* SxContext::getProfile(int id) {
    ContextLock lock(mLock);
    return getContext(id)->getProfile();
}

GeqPreset* SxContext::getProfileGeq(int id) {
    ContextLock lock(mLock);
    return getContext(id)->getSelectedGeqPreset();
}

GeqPreset* SxContext::getSelectedProfileGeq() {
    ContextLock lock(mLock);
    return mSelectedProfile->getSelectedGeqPreset();
}

ProfileEndpoint* SxContext::getProfileEndpoint(Endpoint endpoint) {
    ContextLock lock(mLock);
    return mSelectedProfile->getProfileEndpoint(endpoint);
}

ProfileEndpoint* SxContext::getProfileEndpoint(int id, Endpoint endpoint) {
    ContextLock lock(mLock);
    return getContext(id)->getProfileEndpoint(endpoint);
}

bool SxContext::isProfileModified(int id) {
    ContextLock lock(mLock);
    return getContext(id)->isModified();
}

bool SxContext::isProfileGeqModified(int id) {
    ContextLock lock(mLock);
    return getContext(id)->isGeqModified();
}

bool SxContext::isProfileSpecificSettingsModified(int id) {
    ContextLock lock(mLock);
    return getContext(id)->isProfileSpecificSettingsModified();
}

void SxContext::resetProfile(int id) {
    ContextLock lock(mLock);
    // The factory rows are read in one transaction: all of them from one state.
    mProvider->beginTransaction();
    getContext(id)->reset();
    mProvider->commitTransaction();
    if (!isSelected(id)) return;
    lock.unlock();
    mObservable->onSelectedProfileChanged(*this);
}

void SxContext::resetProfileGeq(int id) {
    ContextLock lock(mLock);
    ProfileContext* context = getContext(id);
    context->resetGeq();
    if (!isSelected(id)) return;
    GeqPreset* preset = context->getSelectedGeqPreset();
    lock.unlock();
    mObservable->onSelectedProfileGeqChanged(*this, *preset);
}

std::vector<int>& SxContext::getProfileParameter(int id, Parameter p) {
    ContextLock lock(mLock);
    return getContext(id)->getProfile()->valuesOf(p);
}

std::vector<int>& SxContext::getProfileParameter(int id, Endpoint endpoint, Parameter p) {
    ContextLock lock(mLock);
    ProfileContext* context = getContext(getContext(id)->getProfile()->getProfileId());
    if (p == Parameter::IEQ_ID) return context->getSelectedIeqPreset(endpoint)->valuesOf(p);
    return context->getProfileEndpoint(endpoint)->valuesOf(p);
}

std::vector<int>& SxContext::getProfileGeqParameter(int id, Parameter p) {
    ContextLock lock(mLock);
    return getContext(id)->getSelectedGeqPreset()->valuesOf(p);
}

std::vector<int>& SxContext::getSelectedTuningParameter(Port port, Parameter p) {
    ContextLock lock(mLock);
    Tuning* tuning = mSelectedTunings[port];
    if (tuning == nullptr) {
        mNoValues.clear();
        return mNoValues;
    }
    return tuning->valuesOf(p);
}

bool SxContext::setParameter(ParameterValues& values, Parameter p, std::vector<int>& v) {
    std::vector<int>& current = values.valuesOf(p);
    if (current.empty()) {
        values.set(p, v);
        return true;
    }
    if (v.empty()) return false;
    // Only the new vector's length is compared: a prefix of the stored values
    // counts as unchanged.
    if (v.size() <= current.size() && std::equal(v.begin(), v.end(), current.begin())) {
        return false;
    }
    values.set(p, v);
    return true;
}

void SxContext::setProfileParameter(int id, Parameter p, std::vector<int>& values) {
    ContextLock lock(mLock);
    Profile* profile = getContext(id)->getProfile();
    if (!setParameter(*profile, p, values) || !isSelected(id)) return;
    lock.unlock();
    mObservable->onSelectedProfileParameterChanged(*this, *profile);
}

SxContext::PortList SxContext::portsOnEndpoint(Endpoint endpoint) const {
    PortList ports;
    for (const auto& [port, tuning] : mSelectedTunings) {
        if (tuning != nullptr && tuning->getEndpoint() == endpoint) ports.push_back(port);
    }
    return ports;
}

void SxContext::setProfileParameter(int id, Endpoint endpoint, Parameter p,
                                    std::vector<int>& values) {
    ContextLock lock(mLock);
    if (endpoint != Endpoint::SPEAKER && p == Parameter::VIRTUAL_BASS_ENABLE) {
        ALOGW("Setting virtual-bass-enable is not supported for non-speaker "
              "endpoints");
        return;
    }
    ProfileEndpoint* pe = getContext(id)->getProfileEndpoint(endpoint);
    if (p == Parameter::IEQ_ID) {
        setIeqPresetLocked(lock, id, endpoint, pe, values);
        return;
    }
    if (!setParameter(*pe, p, values) || !isSelected(id)) return;
    const PortList ports = portsOnEndpoint(endpoint);
    lock.unlock();
    for (Port port : ports) mObservable->onSelectedProfileEndpointChanged(*this, port, *pe);
}

// Selecting an IEQ preset also switches the IEQ: preset 0 turns it off, any
// other on. Only ports whose tuning is on the endpoint take part. Without a
// value there is no preset to select, and nothing changes.
void SxContext::setIeqPresetLocked(ContextLock& lock, int id, Endpoint endpoint,
                                   ProfileEndpoint* pe, std::vector<int>& values) {
    if (values.empty()) return;
    unsigned int preset = static_cast<unsigned int>(values[0]);
    for (Port port : portsOnEndpoint(endpoint)) {
        if (preset > 3) {
            ALOGE("%s(): Invalid IEq preset %d", "setProfileParameter", static_cast<int>(preset));
            continue;
        }
        PresetType type = static_cast<PresetType>(preset);
        if (pe->getSelectedIeqPreset() != type) {
            lock.unlock();
            std::vector<int> enable = {preset != 0 ? 1 : 0};
            setProfileParameter(id, endpoint, Parameter::IEQ_ENABLE, enable);
            lock.lock();
            pe->setSelectedIeqPreset(type);
        }
        if (isSelected(id)) {
            IeqPreset* selected = mSelectedProfile->getSelectedIeqPreset(endpoint);
            lock.unlock();
            mObservable->onSelectedProfileIeqChanged(*this, port, *selected);
            lock.lock();
        }
    }
}

void SxContext::setProfileGeqParameter(int id, Parameter p, std::vector<int>& values) {
    ContextLock lock(mLock);
    GeqPreset* preset = getContext(id)->getSelectedGeqPreset();
    if (!setParameter(*preset, p, values) || !isSelected(id)) return;
    lock.unlock();
    mObservable->onSelectedProfileGeqChanged(*this, *preset);
}

bool SxContext::getAupOn() {
    ContextLock lock(mLock);
    return mAupOn;
}

void SxContext::setAupOn(bool on) {
    ContextLock lock(mLock);
    if (mAupOn == on) return;
    mAupOn = on;
    lock.unlock();
    mObservable->onAupOnChanged(*this, on);
}

Tuning* SxContext::getSelectedTuning(Port port) {
    ContextLock lock(mLock);
    return mSelectedTunings[port];
}

std::string SxContext::getSelectedTuningDevice(Port port) {
    ContextLock lock(mLock);
    return mSelectedTuningDevices[port];
}

Tuning* SxContext::selectedTuningLocked(Port port) const {
    auto it = mSelectedTunings.find(port);
    return it == mSelectedTunings.end() ? nullptr : it->second;
}

ProfileEndpoint* SxContext::getSelectedProfileEndpoint(Port port) {
    ContextLock lock(mLock);
    Tuning* tuning = selectedTuningLocked(port);
    if (tuning == nullptr) return nullptr;
    return mSelectedProfile->getProfileEndpoint(tuning->getEndpoint());
}

IeqPreset* SxContext::getSelectedProfileIeq(Port port) {
    ContextLock lock(mLock);
    Tuning* tuning = selectedTuningLocked(port);
    if (tuning == nullptr) return nullptr;
    return mSelectedProfile->getSelectedIeqPreset(tuning->getEndpoint());
}

std::vector<std::string> SxContext::getAvailableTuningDevice(Port port) {
    ContextLock lock(mLock);
    return availableTuningDevicesLocked(port);
}

std::vector<std::string> SxContext::availableTuningDevicesLocked(Port port) {
    std::vector<std::string> devices;
    for (DeviceTuning* deviceTuning : mProvider->loadDeviceTuningsForPort(port)) {
        devices.push_back(deviceTuning->getDevice());
    }
    return devices;
}

std::string SxContext::getDefaultTuningDevice(Port port) {
    ContextLock lock(mLock);
    return defaultTuningDeviceLocked(port);
}

std::string SxContext::defaultTuningDeviceLocked(Port port) {
    std::vector<std::string> available = availableTuningDevicesLocked(port);
    std::string name = portName(port);
    for (const std::string& device : available) {
        if (device.rfind(kDefaultDevicePrefix, 0) == 0) return device;
    }
    if (std::find(available.begin(), available.end(), name) != available.end()) return name;
    if (!available.empty() && !available.front().empty()) return available.front();
    return name;
}

bool SxContext::setSelectedTuning(Port port, const std::string& device, bool force) {
    ContextLock lock(mLock);
    if (!force && mSelectedTuningDevices[port] == device) return true;
    std::vector<std::string> available = availableTuningDevicesLocked(port);
    if (std::find(available.begin(), available.end(), device) == available.end()) {
        ALOGE("%s is not a valid tuning device for port %s, please call "
              "getAvailableTuningDevice(port) to check first!",
              device.c_str(), portName(port));
        return false;
    }
    Tuning* tuning = mProvider->loadTuningForDevice(device);
    if (tuning == nullptr) {
        ALOGW("Failed to set tuning for port[%s] as device[%s]", portName(port), device.c_str());
        return false;
    }
    mSelectedTuningDevices[port] = device;
    Tuning* current = selectedTuningLocked(port);
    if (force || current == nullptr || current->getName() != tuning->getName()) {
        mSelectedTunings[port] = tuning;
        lock.unlock();
        mObservable->onSelectedTuningChanged(*this, port, *tuning);
    }
    ALOGD("Complete setting port[%s] use tuning device[%s]", portName(port), device.c_str());
    return true;
}

void SxContext::selectDefaultTuning(Port port) {
    setSelectedTuning(port, getDefaultTuningDevice(port), false);
}

void SxContext::saveProfilesLocked() {
    for (ProfileContext* context : mProfileContexts) context->save();
    mProvider->setSelectedProfile(mSelectedProfile->getId());
}

void SxContext::save() {
    ContextLock lock(mLock);
    mProvider->beginTransaction();
    saveProfilesLocked();
    mProvider->setAupOn(mAupOn);
    for (Port port : kSupportedPorts) {
        mProvider->updateDeviceTuning(portName(port), mSelectedTuningDevices[port]);
    }
    mProvider->commitTransaction();
}

// Single statements too run in a transaction of their own, so that a failure
// rolls back and is reported like any other save.
void SxContext::saveSxState() {
    ContextLock lock(mLock);
    mProvider->beginTransaction();
    mProvider->setAupOn(mAupOn);
    mProvider->commitTransaction();
}

void SxContext::saveSxProfile() {
    ContextLock lock(mLock);
    mProvider->beginTransaction();
    mProvider->setSelectedProfile(mSelectedProfile->getId());
    mProvider->commitTransaction();
}

void SxContext::saveSxProfileSettings() {
    ContextLock lock(mLock);
    mProvider->beginTransaction();
    saveProfilesLocked();
    mProvider->commitTransaction();
}

}  // namespace vessa
