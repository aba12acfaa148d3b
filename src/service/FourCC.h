#pragma once

#include <cstdint>

namespace android {

// Four ASCII characters packed big-endian: the first in the most significant byte.
constexpr uint32_t fourCC(const char (&code)[5]) {
    return (static_cast<uint32_t>(static_cast<unsigned char>(code[0])) << 24) |
           (static_cast<uint32_t>(static_cast<unsigned char>(code[1])) << 16) |
           (static_cast<uint32_t>(static_cast<unsigned char>(code[2])) << 8) |
           static_cast<uint32_t>(static_cast<unsigned char>(code[3]));
}

}  // namespace android
