#include "effect/AupContext.h"

namespace vessa {

const std::map<Port, AndroidDevice> AupContext::kDeviceForPort = {
        {Port::INTERNAL_SPEAKER, kDeviceOutSpeaker}, {Port::HDMI, kDeviceOutAuxDigital},
        {Port::MIRACAST, kDeviceOutRemoteSubmix},    {Port::HEADPHONE, kDeviceOutWiredHeadphone},
        {Port::BLUETOOTH, kDeviceOutBluetoothA2dp},  {Port::USB, kDeviceOutUsbDevice},
};

const std::map<AndroidDevice, Port> AupContext::kPortForDevice = {
        {kDeviceOutSpeaker, Port::INTERNAL_SPEAKER}, {kDeviceOutAuxDigital, Port::HDMI},
        {kDeviceOutRemoteSubmix, Port::MIRACAST},    {kDeviceOutWiredHeadphone, Port::HEADPHONE},
        {kDeviceOutBluetoothA2dp, Port::BLUETOOTH},  {kDeviceOutUsbDevice, Port::USB},
};

AupContext::AupContext(std::map<AndroidDevice, ParameterTranslator*>& translators)
    : mProfileParameters(std::make_unique<ProfileParameters>(translators[kDeviceOutDefault])) {
    for (const auto& [port, device] : kDeviceForPort) {
        if (mDeviceParameters.count(device) == 0) {
            mDeviceParameters.emplace(device,
                                      std::make_unique<DeviceParameters>(translators[device]));
        }
    }
}

AupContext::~AupContext() = default;

ParameterValues* AupContext::getParameters(AndroidDevice device) const {
    if (device == kDeviceOutDefault) return mProfileParameters.get();
    auto it = mDeviceParameters.find(device);
    return it == mDeviceParameters.end() ? nullptr : it->second.get();
}

DeviceParameters* AupContext::getDeviceParameters(Port port) const {
    auto device = kDeviceForPort.find(port);
    if (device == kDeviceForPort.end()) return nullptr;
    auto it = mDeviceParameters.find(device->second);
    return it == mDeviceParameters.end() ? nullptr : it->second.get();
}

void AupContext::setProfile(Profile& profile) {
    mProfileParameters->setProfile(profile);
    for (auto& [device, view] : mDeviceParameters) view->setProfile(profile);
}

void AupContext::setGeqPreset(GeqPreset& preset) {
    mProfileParameters->setGeqPreset(preset);
}

void AupContext::setProfileEndpoint(Port port, ProfileEndpoint& endpoint) {
    if (DeviceParameters* view = getDeviceParameters(port)) view->setProfileEndpoint(endpoint);
}

void AupContext::setIeqPreset(Port port, IeqPreset& preset) {
    if (DeviceParameters* view = getDeviceParameters(port)) view->setIeqPreset(preset);
}

void AupContext::setTuning(Port port, Tuning& tuning) {
    if (DeviceParameters* view = getDeviceParameters(port)) view->setTuning(tuning);
}

}  // namespace vessa
