#pragma once

#include <stddef.h>
#include <stdint.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>

#include <memory>

namespace android {

// A block of bytes with a valid range [offset, offset + size) inside its capacity.
// Made with a capacity it owns its bytes; made over external memory it only points
// at them, and the caller keeps that memory alive for the buffer's lifetime.
class ABuffer : public RefBase {
  public:
    explicit ABuffer(size_t capacity);
    ABuffer(void* data, size_t capacity);
    ABuffer(const ABuffer&) = delete;
    ABuffer& operator=(const ABuffer&) = delete;

    // An owning buffer holding a copy of the bytes, so the caller's memory is not kept.
    static sp<ABuffer> CreateAsCopy(const void* data, size_t capacity);

    uint8_t* base() { return mData; }
    const uint8_t* base() const { return mData; }
    uint8_t* data() { return mData + mRangeOffset; }
    const uint8_t* data() const { return mData + mRangeOffset; }
    size_t capacity() const { return mCapacity; }
    size_t size() const { return mRangeLength; }
    size_t offset() const { return mRangeOffset; }

    // BAD_VALUE, range unchanged, when the range does not fit in the capacity.
    status_t setRange(size_t offset, size_t size);

  protected:
    ~ABuffer() override;

  private:
    std::unique_ptr<uint8_t[]> mOwned;
    uint8_t* mData;
    size_t mCapacity;
    size_t mRangeOffset;
    size_t mRangeLength;
};

}  // namespace android
