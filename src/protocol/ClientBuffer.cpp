#include "protocol/ClientBuffer.h"

#include <cstring>

namespace vessa {

int32_t ClientBuffer::wordAtOffset(size_t offset) const {
    uint8_t bytes[4] = {byteAt(offset), byteAt(offset + 1), byteAt(offset + 2), byteAt(offset + 3)};
    int32_t word;
    memcpy(&word, bytes, sizeof(word));
    return word;
}

uint32_t ClientBuffer::bigEndianAt(size_t offset) const {
    return (static_cast<uint32_t>(byteAt(offset)) << 24) |
           (static_cast<uint32_t>(byteAt(offset + 1)) << 16) |
           (static_cast<uint32_t>(byteAt(offset + 2)) << 8) |
           static_cast<uint32_t>(byteAt(offset + 3));
}

}  // namespace vessa
