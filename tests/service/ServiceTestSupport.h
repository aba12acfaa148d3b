#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <vector>

#include "SampleRoot.h"

namespace android::test {

// The one device root of the service tests, installed before the first test of the
// binary; every test file asks for it here, so it is registered once.
inline vessa::test::SampleRootEnvironment& serviceRoot() {
    static auto* environment = static_cast<vessa::test::SampleRootEnvironment*>(
            ::testing::AddGlobalTestEnvironment(new vessa::test::SampleRootEnvironment()));
    return *environment;
}

// Native 32-bit words as the bytes of a blob.
inline std::vector<uint8_t> blob(std::initializer_list<int32_t> words) {
    std::vector<uint8_t> bytes(words.size() * 4);
    memcpy(bytes.data(), std::data(words), bytes.size());
    return bytes;
}

// A getAupParam request: the command big-endian, then a and b.
inline std::vector<uint8_t> query(uint32_t command, int32_t a, int32_t b) {
    std::vector<uint8_t> in = blob({0, a, b});
    for (int i = 0; i < 4; ++i) in[i] = static_cast<uint8_t>(command >> (24 - 8 * i));
    return in;
}

}  // namespace android::test
