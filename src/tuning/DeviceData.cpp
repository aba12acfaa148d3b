#include "tuning/DeviceData.h"

namespace vessa {

DeviceData::~DeviceData() = default;

std::string DeviceData::getFormatVersion() const {
    return mFormatVersion;
}

std::string DeviceData::getToolVersion() const {
    return mToolVersion;
}

std::set<IeqPreset*>& DeviceData::getIeqPresets() {
    return mIeqPresets;
}

std::set<GeqPreset*>& DeviceData::getGeqPresets() {
    return mGeqPresets;
}

std::set<Profile*>& DeviceData::getProfiles() {
    return mProfiles;
}

std::set<ProfileEndpoint*>& DeviceData::getProfileEndpoints() {
    return mProfileEndpoints;
}

std::set<Tuning*>& DeviceData::getTunings() {
    return mTunings;
}

std::set<DeviceTuning*>& DeviceData::getDeviceTunings() {
    return mDeviceTunings;
}

void DeviceData::setFormatVersion(const std::string& version) {
    mFormatVersion = version;
}

void DeviceData::setToolVersion(const std::string& version) {
    mToolVersion = version;
}

void DeviceData::setIeqPresets(const std::set<IeqPreset*>& presets) {
    mIeqPresets = presets;
}

void DeviceData::setGeqPresets(const std::set<GeqPreset*>& presets) {
    mGeqPresets = presets;
}

void DeviceData::setProfiles(const std::set<Profile*>& profiles) {
    mProfiles = profiles;
}

void DeviceData::setProfileEndPoints(const std::set<ProfileEndpoint*>& endpoints) {
    mProfileEndpoints = endpoints;
}

void DeviceData::setTunings(const std::set<Tuning*>& tunings) {
    mTunings = tunings;
}

void DeviceData::setDeviceTunings(const std::set<DeviceTuning*>& deviceTunings) {
    mDeviceTunings = deviceTunings;
}

std::string DeviceData::getSignature() const {
    return mSignature;
}

void DeviceData::setSignature(const std::string& signature) {
    mSignature = signature;
}

void DeviceData::validateData() {
    for (ProfileEndpoint* endpoint : mProfileEndpoints) {
        // find, not valuesOf: the look-up must not add an empty ieq-enable entry.
        const ParamMap& values = endpoint->values();
        auto ieqEnable = values.find(Parameter::IEQ_ENABLE);
        if (ieqEnable == values.end() || ieqEnable->second.empty()) continue;
        if (ieqEnable->second.front() == 0) endpoint->setSelectedIeqPreset(PresetType::OFF);
    }
}

}  // namespace vessa
