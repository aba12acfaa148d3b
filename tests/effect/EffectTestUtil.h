#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "effect/AupParameter.h"
#include "effect/SetParamCommand.h"
#include "effect/Translator.h"
#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace vessa::test {

// One expected entry of a batch.
struct Entry {
    int device;
    AupParameter code;
    std::vector<int> values;
};

// The words of a batch as it stands before execute(): the count word is 0.
inline std::vector<int> batchWords(int target, std::initializer_list<Entry> entries) {
    std::vector<int> words = {target, 0};
    for (const Entry& e : entries) {
        words.push_back(e.device);
        words.push_back(aupParameterId(e.code));
        words.push_back(static_cast<int>(e.values.size()));
        words.insert(words.end(), e.values.begin(), e.values.end());
    }
    return words;
}

// The code string for an identifier of the table ("?" if none matches).
inline std::string codeOfId(int id) {
    for (int i = 0; i < kNumAupParameters; ++i) {
        if (aupParameterId(static_cast<AupParameter>(i)) == id) {
            return aupParameterCode(static_cast<AupParameter>(i));
        }
    }
    return "?";
}

// The codes of a batch's entries, in buffer order.
inline std::vector<std::string> entryCodes(const std::vector<int>& words) {
    std::vector<std::string> codes;
    for (size_t pos = 2; pos + 2 < words.size(); pos += 3 + words[pos + 2]) {
        codes.push_back(codeOfId(words[pos + 1]));
    }
    return codes;
}

// Sets Parameter number `p` of `values` (no validity check).
inline void put(ParameterValues& values, int p, const std::vector<int>& list) {
    values.set(toParameter(p), list);
}

// The device of the batches that translate() builds.
constexpr int kTestDevice = 0x2;

// Runs one translator on `source` into a fresh batch whose target and device
// are both kTestDevice; returns the batch's words.
inline std::vector<int> translate(const Translator& translator, ParameterValues& source,
                                  Endpoint endpoint = Endpoint::SPEAKER, bool mono = false) {
    SetParamCommand cmd(kTestDevice);
    cmd.setDeviceId(kTestDevice);
    translator.aupTranslate(cmd, source, endpoint, mono);
    return cmd.buffer();
}

}  // namespace vessa::test
