#pragma once

#include <utils/Mutex.h>

namespace vessa {

// Holds a mutex for a scope. The context releases it early to notify its
// observers outside the lock; unlock() disarms the destructor so the mutex is
// released exactly once, and lock() takes it again when work remains.
class ContextLock {
  public:
    explicit ContextLock(android::Mutex& mutex) : mMutex(mutex) { lock(); }
    ~ContextLock() { unlock(); }
    ContextLock(const ContextLock&) = delete;
    ContextLock& operator=(const ContextLock&) = delete;

    void lock() {
        if (mHeld) return;
        mMutex.lock();
        mHeld = true;
    }
    void unlock() {
        if (!mHeld) return;
        mHeld = false;
        mMutex.unlock();
    }

  private:
    android::Mutex& mMutex;
    bool mHeld = false;
};

}  // namespace vessa
