#pragma once

#include <pthread.h>

#include <condition_variable>
#include <mutex>
#include <vector>

#include "platform/AHandler.h"

namespace vessa::test {

// A handler that records what it receives and can hold the looper thread inside one
// delivery until the test releases it.
class RecordingHandler : public android::AHandler {
  public:
    struct Delivery {
        uint32_t what;
        int32_t sender;
        int32_t seq;
        pthread_t thread;
        std::vector<uint8_t> bytes;
    };

    std::vector<Delivery> deliveries() const;
    // True once at least `count` messages arrived, false after a few seconds.
    bool waitForCount(size_t count) const;
    // The next delivery is recorded, then waits until release().
    void holdNextDelivery();
    bool waitUntilHeld() const;
    void release();

  protected:
    void onMessageReceived(const android::sp<android::AMessage>& msg) override;

  private:
    mutable std::mutex mLock;
    mutable std::condition_variable mChanged;
    std::vector<Delivery> mDeliveries;
    bool mHoldNext = false;
    bool mHeld = false;
    bool mReleased = false;
};

}  // namespace vessa::test
