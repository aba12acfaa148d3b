#define LOG_TAG "AMessage"

#include "platform/AMessage.h"

#include <errno.h>
#include <log/log.h>

#include "platform/ABuffer.h"
#include "platform/AHandler.h"

namespace android {

AMessage::AMessage() : mWhat(0), mTarget(0) {}

AMessage::AMessage(uint32_t what, const sp<const AHandler>& handler) : mWhat(what), mTarget(0) {
    setTarget(handler);
}

void AMessage::setTarget(const sp<const AHandler>& handler) {
    if (handler == nullptr) {
        mTarget = 0;
        mLooper.clear();
        return;
    }
    mTarget = handler->id();
    mLooper = handler->looper();
}

void AMessage::setInt32(const char* name, int32_t value) {
    itemFor(name, Type::kInt32).int32Value = value;
}

void AMessage::setBuffer(const char* name, const sp<ABuffer>& buffer) {
    itemFor(name, Type::kBuffer).buffer = buffer;
}

bool AMessage::findInt32(const char* name, int32_t* value) const {
    const Item* item = findItem(name, Type::kInt32);
    if (item == nullptr) return false;
    *value = item->int32Value;
    return true;
}

bool AMessage::findBuffer(const char* name, sp<ABuffer>* buffer) const {
    const Item* item = findItem(name, Type::kBuffer);
    if (item == nullptr) return false;
    *buffer = item->buffer;
    return true;
}

void AMessage::clear() {
    mItems.clear();
}

status_t AMessage::post(int64_t delayUs) {
    sp<ALooper> looper = mLooper.promote();
    if (looper == nullptr) {
        ALOGW("no looper for message 0x%08x to handler %d", mWhat, mTarget);
        return -ENOENT;
    }
    return looper->post(this, delayUs);
}

const AMessage::Item* AMessage::findItem(const char* name, Type type) const {
    for (const Item& item : mItems) {
        if (item.name == name) return item.type == type ? &item : nullptr;
    }
    return nullptr;
}

AMessage::Item& AMessage::itemFor(const char* name, Type type) {
    for (Item& item : mItems) {
        if (item.name == name) {
            item.type = type;
            item.buffer.clear();
            return item;
        }
    }
    mItems.push_back(Item{name, type, 0, nullptr});
    return mItems.back();
}

}  // namespace android
