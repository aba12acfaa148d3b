#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace vessa {

// Acoustic kind of an output; tunings and per-endpoint profile settings are keyed on it.
enum class Endpoint : int32_t {
    SPEAKER = 0,
    HEADPHONE = 1,
    OTHER = 2,
};
constexpr int kNumEndpoints = 3;

// The outputs the service is addressed by. OTHER only names the seventh entry
// of the port-name table; it is never a supported port.
enum class Port : int32_t {
    INTERNAL_SPEAKER = 0,
    HDMI = 1,
    MIRACAST = 2,
    HEADPHONE = 3,
    BLUETOOTH = 4,
    USB = 5,
    OTHER = 6,
};
constexpr int kNumPortNames = 7;

// Platform output-device bits (audio HAL values); only these six are used.
using AndroidDevice = uint32_t;
constexpr AndroidDevice kDeviceOutSpeaker = 0x2;
constexpr AndroidDevice kDeviceOutWiredHeadphone = 0x8;
constexpr AndroidDevice kDeviceOutBluetoothA2dp = 0x80;
constexpr AndroidDevice kDeviceOutAuxDigital = 0x400;
constexpr AndroidDevice kDeviceOutUsbDevice = 0x4000;
constexpr AndroidDevice kDeviceOutRemoteSubmix = 0x8000;
// The platform's default device; stands for the profile-wide parameters.
constexpr AndroidDevice kDeviceOutDefault = 0x40000000;

// Intelligent-EQ preset of a profile endpoint, and the kind of an IeqPreset.
enum class PresetType : int32_t {
    OFF = 0,
    DETAILED = 1,
    BALANCED = 2,
    WARM = 3,
};
constexpr int kNumPresetTypes = 4;

// "speaker", "headphone", "other"; empty for a value out of range.
const char* endpointName(Endpoint e);
// "internal_speaker", "hdmi", "miracast", "headphone", "bluetooth", "usb", "other".
const char* portName(Port p);
// "off", "detailed", "balanced", "warm".
const char* presetTypeName(PresetType t);
// Exact, case-sensitive; false (and *out untouched) for any other text.
bool presetTypeFromName(const std::string& name, PresetType* out);

// The three endpoint names to their values: how a stored endpoint text is read back.
const std::map<std::string, Endpoint>& endpointNameToEndpoint();

// Output names to the endpoint kind they are tuned as. Bluetooth and USB outputs
// count as headphones; HDMI and Miracast as "other".
const std::map<std::string, Endpoint>& portNameToEndpoint();
// The endpoint of an output name; an unknown name counts as the speaker.
Endpoint endpointForPortName(const std::string& name);

}  // namespace vessa
