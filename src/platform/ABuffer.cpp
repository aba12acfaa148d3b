#define LOG_TAG "ABuffer"

#include "platform/ABuffer.h"

#include <log/log.h>
#include <string.h>

namespace android {

ABuffer::ABuffer(size_t capacity)
    : mOwned(new uint8_t[capacity]),
      mData(mOwned.get()),
      mCapacity(capacity),
      mRangeOffset(0),
      mRangeLength(capacity) {}

ABuffer::ABuffer(void* data, size_t capacity)
    : mData(static_cast<uint8_t*>(data)),
      mCapacity(capacity),
      mRangeOffset(0),
      mRangeLength(capacity) {}

ABuffer::~ABuffer() = default;

sp<ABuffer> ABuffer::CreateAsCopy(const void* data, size_t capacity) {
    sp<ABuffer> buffer = new ABuffer(capacity);
    if (capacity > 0) memcpy(buffer->base(), data, capacity);
    return buffer;
}

status_t ABuffer::setRange(size_t offset, size_t size) {
    if (offset > mCapacity || size > mCapacity - offset) {
        ALOGE("range %zu+%zu exceeds capacity %zu", offset, size, mCapacity);
        return BAD_VALUE;
    }
    mRangeOffset = offset;
    mRangeLength = size;
    return OK;
}

}  // namespace android
