#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "effect/AupEffect.h"
#include "effect/AupParameter.h"
#include "effect/ParameterTranslator.h"
#include "effect/SetParamCommand.h"
#include "model/DeviceParameters.h"
#include "model/ProfileParameters.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"

namespace vessa::test {

using A = AupParameter;
using P = Parameter;
using V = std::vector<int>;

constexpr int kDevice = 0x2;

// One expected entry of a batch.
struct Entry {
    AupParameter code;
    V values;
    int device = kDevice;
};

// The words of a batch as it stands before execute(): the count word is 0.
inline V batchWords(int target, const std::vector<Entry>& entries) {
    V words = {target, 0};
    for (const Entry& e : entries) {
        words.insert(words.end(), {e.device, aupParameterId(e.code), int(e.values.size())});
        words.insert(words.end(), e.values.begin(), e.values.end());
    }
    return words;
}

// The codes of a batch's entries, in buffer order.
inline std::vector<std::string> entryCodes(const V& words) {
    std::vector<std::string> codes;
    for (size_t pos = 2; pos + 2 < words.size(); pos += 3 + words[pos + 2]) {
        codes.push_back(unpackParameterCode(static_cast<uint32_t>(words[pos + 1])));
    }
    return codes;
}

// Runs the translator's pending translators (or, with `all`, every translator
// of its source) into a fresh batch for kDevice.
inline V translate(ParameterTranslator& translator, bool all = false) {
    SetParamCommand cmd(kDevice);
    cmd.setDeviceId(kDevice);
    all ? translator.translateAll(cmd) : translator.translatePending(cmd);
    return cmd.buffer();
}

}  // namespace vessa::test
