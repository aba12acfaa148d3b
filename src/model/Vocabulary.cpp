#include "model/Vocabulary.h"

namespace vessa {

namespace {
const char* const kEndpointNames[kNumEndpoints] = {"speaker", "headphone", "other"};
const char* const kPortNames[kNumPortNames] = {"internal_speaker", "hdmi",      "miracast", "headphone",
                                               "bluetooth",        "usb",       "other"};
const char* const kPresetTypeNames[kNumPresetTypes] = {"off", "detailed", "balanced", "warm"};

template <size_t N>
const char* nameAt(const char* const (&table)[N], int index) {
    return (index >= 0 && index < static_cast<int>(N)) ? table[index] : "";
}
}  // namespace

const char* endpointName(Endpoint e) { return nameAt(kEndpointNames, static_cast<int>(e)); }

const char* portName(Port p) { return nameAt(kPortNames, static_cast<int>(p)); }

const char* presetTypeName(PresetType t) { return nameAt(kPresetTypeNames, static_cast<int>(t)); }

bool presetTypeFromName(const std::string& name, PresetType* out) {
    for (int i = 0; i < kNumPresetTypes; ++i) {
        if (name == kPresetTypeNames[i]) {
            *out = static_cast<PresetType>(i);
            return true;
        }
    }
    return false;
}

const std::map<std::string, Endpoint>& endpointNameToEndpoint() {
    static const std::map<std::string, Endpoint> map = {
            {"speaker", Endpoint::SPEAKER},
            {"headphone", Endpoint::HEADPHONE},
            {"other", Endpoint::OTHER},
    };
    return map;
}

const std::map<std::string, Endpoint>& portNameToEndpoint() {
    static const std::map<std::string, Endpoint> map = {
            {"internal_speaker", Endpoint::SPEAKER}, {"headphone", Endpoint::HEADPHONE},
            {"bluetooth", Endpoint::HEADPHONE},      {"usb", Endpoint::HEADPHONE},
            {"hdmi", Endpoint::OTHER},               {"miracast", Endpoint::OTHER},
            {"other", Endpoint::OTHER},
    };
    return map;
}

Endpoint endpointForPortName(const std::string& name) {
    const auto& map = portNameToEndpoint();
    auto it = map.find(name);
    return it == map.end() ? Endpoint::SPEAKER : it->second;
}

}  // namespace vessa
