#include "RecordingHandler.h"

#include <chrono>

#include "platform/ABuffer.h"
#include "platform/AMessage.h"

namespace vessa::test {

namespace {
constexpr auto kTimeout = std::chrono::seconds(5);
}

std::vector<RecordingHandler::Delivery> RecordingHandler::deliveries() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mDeliveries;
}

bool RecordingHandler::waitForCount(size_t count) const {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, kTimeout, [&] { return mDeliveries.size() >= count; });
}

void RecordingHandler::holdNextDelivery() {
    std::lock_guard<std::mutex> lock(mLock);
    mHoldNext = true;
    mReleased = false;
}

bool RecordingHandler::waitUntilHeld() const {
    std::unique_lock<std::mutex> lock(mLock);
    return mChanged.wait_for(lock, kTimeout, [&] { return mHeld; });
}

void RecordingHandler::release() {
    std::lock_guard<std::mutex> lock(mLock);
    mReleased = true;
    mChanged.notify_all();
}

void RecordingHandler::onMessageReceived(const android::sp<android::AMessage>& msg) {
    Delivery delivery{msg->what(), -1, -1, pthread_self(), {}};
    msg->findInt32("sender", &delivery.sender);
    msg->findInt32("seq", &delivery.seq);
    android::sp<android::ABuffer> buffer;
    if (msg->findBuffer("buffer", &buffer)) {
        delivery.bytes.assign(buffer->data(), buffer->data() + buffer->size());
    }
    std::unique_lock<std::mutex> lock(mLock);
    mDeliveries.push_back(delivery);
    mChanged.notify_all();
    if (!mHoldNext) return;
    mHoldNext = false;
    mHeld = true;
    mChanged.notify_all();
    mChanged.wait(lock, [&] { return mReleased; });
    mHeld = false;
}

}  // namespace vessa::test
