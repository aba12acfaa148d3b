#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "service/IPqsCallbacks.h"

namespace android::test {

// A client's callback object that records every update it is sent.
class FakeClient : public IPqsCallbacks {
  public:
    bool onAupParamUpdate(const uint8_t* data, size_t length) override {
        std::lock_guard<std::mutex> guard(mLock);
        mUpdates.emplace_back(data, data + length);
        mChanged.notify_all();
        return !mFailSends;
    }
    bool linkToDeath(const sp<PqsDeathRecipient>& recipient, uint64_t) override {
        std::lock_guard<std::mutex> guard(mLock);
        mRecipient = recipient;
        return true;
    }
    bool unlinkToDeath(const sp<PqsDeathRecipient>&) override { return linkToDeath(nullptr, 0); }

    // Waits until `count` updates arrived in all; false on time-out.
    bool waitForUpdates(size_t count) {
        std::unique_lock<std::mutex> guard(mLock);
        return mChanged.wait_for(guard, std::chrono::seconds(5),
                                 [&] { return mUpdates.size() >= count; });
    }
    // Waits until `update` arrives as update number `from` or later; false on time-out.
    bool waitForUpdate(const std::vector<uint8_t>& update, size_t from,
                       std::chrono::seconds timeout = std::chrono::seconds(5)) {
        std::unique_lock<std::mutex> guard(mLock);
        return mChanged.wait_for(guard, timeout, [&] {
            return std::find(mUpdates.begin() + std::min(from, mUpdates.size()), mUpdates.end(),
                             update) != mUpdates.end();
        });
    }
    std::vector<std::vector<uint8_t>> updates() {
        std::lock_guard<std::mutex> guard(mLock);
        return mUpdates;
    }
    size_t updateCount() {
        std::lock_guard<std::mutex> guard(mLock);
        return mUpdates.size();
    }
    // The death recipient the service linked, if any.
    sp<PqsDeathRecipient> recipient() {
        std::lock_guard<std::mutex> guard(mLock);
        return mRecipient.promote();
    }
    void failSends(bool fail) { mFailSends = fail; }

  private:
    std::mutex mLock;
    std::condition_variable mChanged;
    std::vector<std::vector<uint8_t>> mUpdates;
    wp<PqsDeathRecipient> mRecipient;
    bool mFailSends = false;
};

}  // namespace android::test
