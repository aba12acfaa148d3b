#include "ParameterTable.h"

#include <cstdlib>

#include "model/Vocabulary.h"
#include "service/FourCC.h"

namespace vessa {

namespace {

// clang-format off
const ParameterTable::ParamId kParamIds[] = {
    {101, "virtualizer-enable",          "headphone virtualizer on (the headphone endpoint only)", 0, 1, 1},
    {102, "virtualizer-enable",          "speaker virtualizer on (the speaker endpoint only)", 0, 1, 1},
    {103, "volume-leveler-enable",       "volume leveler on", 0, 1, 1},
    {104, "ieq-id",                      "intelligent EQ preset: 0 off, 1 detailed, 2 balanced, 3 warm", 0, 3, 1},
    {105, "dialog-enhancer-enable",      "dialog enhancer on", 0, 1, 1},
    {106, "graphic-equalizer-enable",    "graphic EQ on", 0, 1, 1},
    {107, "ieq-amount",                  "intelligent EQ amount", 0, 16, 1},
    {108, "dialog-enhancer-amount",      "dialog enhancer amount", 0, 16, 1},
    {109, "dialog-enhancer-ducking",     "dialog enhancer ducking", 0, 16, 1},
    {110, "geq-gain",                    "graphic EQ band gains", -576, 576, 20},
    {111, "bass-enhancer-enable",        "bass enhancer on (also sets 112)", 0, 1, 1},
    {112, "virtual-bass-process-enable", "virtual bass processing on", 0, 1, 1},
    {113, "headphone-virtualizer-steerer-source-distance",
                                         "headphone virtualizer source distance", 4, 64, 1},
    {114, "reverb-suppression-enable",   "reverb suppression on (profile-wide)", 0, 1, 1},
    {115, "reverb-suppression-amount",   "reverb suppression amount (profile-wide)", 0, 9, 1},
    {116, "volume-leveler-amount",       "volume leveler amount", 0, 10, 1},
};

// Read before ADEV: querying the active device records the query time.
const ParameterTable::IntCode kIntCodes[] = {
    {"AUPO", "effect on"},
    {"APMO", "mobility profile selected"},
    {"DEAM", "dialog enhancer amount (0 when off, active port)"},
    {"DVLA", "volume leveler amount (active port)"},
    {"LCTM", "last active-device query (uptime ms)"},
    {"ADEV", "active output device"},
    {"CHCT", "channel count"},
    {"SPKM", "mono internal speaker"},
    {"SPKP", "speaker in portrait mode"},
    {"DFSA", "front speaker angle (active port)"},
    {"DHSA", "height speaker angle (active port)"},
    {"DDSA", "surround speaker angle (active port)"},
    {"DTFV", "default tuning file format version"},
    {"DCCP", "a decoder client is registered"},
    {"LCTP", "last registered decoder client type"},
    {"GDEA", "game client registered"},
};
// clang-format on

template <typename T, int N>
constexpr int countOf(const T (&)[N]) {
    return N;
}

}  // namespace

const ParameterTable::ParamId* ParameterTable::paramIds(int* count) {
    *count = countOf(kParamIds);
    return kParamIds;
}

const ParameterTable::ParamId* ParameterTable::findParamId(int id) {
    for (const ParamId& p : kParamIds) {
        if (p.id == id) return &p;
    }
    return nullptr;
}

const ParameterTable::IntCode* ParameterTable::intCodes(int* count) {
    *count = countOf(kIntCodes);
    return kIntCodes;
}

uint32_t ParameterTable::packIntCode(const IntCode& code) {
    return android::fourCC(code.code);
}

int ParameterTable::parsePort(const std::string& text) {
    for (int port = 0; port < kNumPorts; ++port) {
        if (text == portName(port)) return port;
    }
    char* end = nullptr;
    long port = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || port < 0 || port >= kNumPorts) return -1;
    return static_cast<int>(port);
}

const char* ParameterTable::portName(int port) {
    return vessa::portName(static_cast<Port>(port));
}

}  // namespace vessa
