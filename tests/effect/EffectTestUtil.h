#pragma once

#include <vector>

#include "effect/AupParameter.h"
#include "model/Parameter.h"
#include "model/ParameterValues.h"

namespace vessa::test {

constexpr int kDevice = 0x2;

// One expected entry of a batch.
struct Entry {
    AupParameter code;
    std::vector<int> values;
    int device = kDevice;
};

// The words of a batch as it stands before execute(): the count word is 0.
inline std::vector<int> batchWords(int target, const std::vector<Entry>& entries) {
    std::vector<int> words = {target, 0};
    for (const Entry& e : entries) {
        words.insert(words.end(), {e.device, aupParameterId(e.code), int(e.values.size())});
        words.insert(words.end(), e.values.begin(), e.values.end());
    }
    return words;
}

// Sets Parameter number `p` of `values` (no validity check).
inline void put(ParameterValues& values, int p, const std::vector<int>& list) {
    values.set(toParameter(p), list);
}

}  // namespace vessa::test
