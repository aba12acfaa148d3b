#pragma once

#include <utils/Mutex.h>
#include <utils/RefBase.h>

#include "platform/ALooper.h"

namespace android {

class AMessage;

// Receives the messages addressed to it, one at a time, on the thread of the looper
// it is registered with. A handler belongs to at most one looper at a time.
class AHandler : public RefBase {
  public:
    AHandler();

    // 0 while the handler is not registered.
    ALooper::handler_id id() const;
    // Null while the handler is not registered or once its looper is gone.
    sp<ALooper> looper() const;

  protected:
    virtual void onMessageReceived(const sp<AMessage>& msg) = 0;

  private:
    friend class ALooper;

    // False, nothing changed, when the handler is already registered somewhere.
    bool attach(ALooper::handler_id id, const wp<ALooper>& looper);
    void detach();

    mutable Mutex mLock;
    ALooper::handler_id mId;
    wp<ALooper> mLooper;
};

}  // namespace android
