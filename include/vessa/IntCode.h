#pragma once

#include <cstdint>

namespace vessa::client {

// Four ASCII characters packed big-endian: the first in the most significant byte.
constexpr uint32_t fourCC(const char (&code)[5]) {
    return (static_cast<uint32_t>(static_cast<unsigned char>(code[0])) << 24) |
           (static_cast<uint32_t>(static_cast<unsigned char>(code[1])) << 16) |
           (static_cast<uint32_t>(static_cast<unsigned char>(code[2])) << 8) |
           static_cast<uint32_t>(static_cast<unsigned char>(code[3]));
}

// The integer parameters of the service (getIntParam, setIntParam).
enum class IntCode : uint32_t {
    EFFECT_ON = fourCC("AUPO"),
    MOBILITY_PROFILE = fourCC("APMO"),
    DIALOG_ENHANCER_AMOUNT = fourCC("DEAM"),
    VOLUME_LEVELER_AMOUNT = fourCC("DVLA"),
    LAST_DEVICE_QUERY = fourCC("LCTM"),
    ACTIVE_DEVICE = fourCC("ADEV"),
    CHANNEL_COUNT = fourCC("CHCT"),
    MONO_SPEAKER = fourCC("SPKM"),
    SPEAKER_PORTRAIT = fourCC("SPKP"),
    FRONT_SPEAKER_ANGLE = fourCC("DFSA"),
    HEIGHT_SPEAKER_ANGLE = fourCC("DHSA"),
    SURROUND_SPEAKER_ANGLE = fourCC("DDSA"),
    FORMAT_VERSION = fourCC("DTFV"),
    DECODER_CLIENT = fourCC("DCCP"),
    LAST_DECODER_TYPE = fourCC("LCTP"),
    GAME_CLIENT = fourCC("GDEA"),
    // Written, not read: re-reads the OEM tuning file.
    RELOAD_TUNING = fourCC("RLTF"),
};

// What an integer parameter's value means, so that a client can print it.
struct IntCodeInfo {
    enum class Reading {
        FLAG,         // 0 or 1
        NUMBER,       // a plain count or amount; -1 when the service has none
        DEVICE,       // an output-device bit of the platform
        VERSION,      // major * 1000000 + minor * 1000 + maintenance
        UPTIME_MS,    // milliseconds since boot; -1000 before the first query
        CLIENT_TYPE,  // a client type; -1 before the first decoder client
    };
    IntCode code;
    char name[5];  // "ADEV"
    const char* meaning;
    Reading reading;
};

}  // namespace vessa::client
