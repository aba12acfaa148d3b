#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vessa::client {

// One notification of the service to its registered clients, decoded.
struct Update {
    enum class Kind {
        EFFECT_SWITCHED,       // `on` holds the new state
        SETTING_CHANGED,       // `profile`, `id`, `values`: for every endpoint of the profile
        PORT_SETTING_CHANGED,  // `profile`, `port`, `id`, `values`: one port's endpoint
        PROFILE_SELECTED,      // `profile`
        PROFILE_RESET,         // `profile`
        OTHER_COMMAND,         // a change request the service took no action on; `command`
        TUNING_SELECTED,       // `tuning`: the name a client asked a port to use
        CLIENTS_CHANGED,       // a client registered or left
        TUNING_RELOADED,       // the tuning files were read again; every value may differ
        UNKNOWN,               // bytes of no known form; see `bytes`
    };
    Kind kind = Kind::UNKNOWN;
    int command = -1;
    bool on = false;
    int profile = -1;
    int port = -1;
    int id = 0;
    int32_t answer = 0;  // the value the service applied, for the commands that report one
    std::vector<int32_t> values;
    std::string tuning;
    std::vector<uint8_t> bytes;  // what the service sent
};

}  // namespace vessa::client
