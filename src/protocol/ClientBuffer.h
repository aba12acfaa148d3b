#pragma once

#include <cstddef>
#include <cstdint>

namespace vessa {

// Bounds-checked access to a buffer a client sent. Words past the end read as
// zero, so a short request behaves like one padded with zeros, and nothing is
// ever read or written outside the buffer.
class ClientBuffer {
  public:
    static constexpr size_t kMaxSize = 64 * 1024;

    ClientBuffer(const void* data, size_t size)
        : mData(static_cast<const uint8_t*>(data)), mSize(data == nullptr ? 0 : size) {}

    size_t size() const { return mSize; }
    uint8_t byteAt(size_t offset) const { return offset < mSize ? mData[offset] : 0; }
    // A native-order 32-bit word at a byte offset.
    int32_t wordAtOffset(size_t offset) const;
    // Word `index` counted in 32-bit words.
    int32_t word(size_t index) const { return wordAtOffset(index * 4); }
    // The first four bytes read big-endian.
    uint32_t bigEndianAt(size_t offset) const;

  private:
    const uint8_t* mData;
    size_t mSize;
};

}  // namespace vessa
