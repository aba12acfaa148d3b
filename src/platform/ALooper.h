#pragma once

#include <stdint.h>
#include <utils/Condition.h>
#include <utils/Errors.h>
#include <utils/KeyedVector.h>
#include <utils/Mutex.h>
#include <utils/RefBase.h>

#include <string>
#include <vector>

namespace android {

class AHandler;
class AMessage;

// A named thread delivering queued messages to the handlers registered with it.
// Messages are delivered in due order, first posted first among equal due times, so
// the messages of one poster arrive in posting order. A message whose handler was
// unregistered or destroyed by the time it is due is dropped.
//
// Posting to a looper that is not running queues the message until start(). stop()
// ends the thread and discards every message still queued: none of them is ever
// delivered, not even after a later start(). Releasing the last reference stops the
// looper the same way.
class ALooper : public RefBase {
  public:
    typedef int32_t handler_id;

    ALooper();
    ALooper(const ALooper&) = delete;
    ALooper& operator=(const ALooper&) = delete;

    // Names the thread of the next start() (the system keeps its first 15 characters).
    void setName(const char* name);

    // A new id (> 0), or INVALID_OPERATION when the handler is null or already
    // registered with a looper.
    handler_id registerHandler(const sp<AHandler>& handler);
    // Queued messages for the handler are dropped; a delivery already running ends
    // normally.
    void unregisterHandler(handler_id id);

    // INVALID_OPERATION when already running.
    status_t start();
    // Returns once no message is being delivered any more, except when called from
    // the looper's own thread: then the thread ends after the current delivery.
    // INVALID_OPERATION when not running.
    status_t stop();

    // -ENOENT when the message's target is not registered with this looper.
    status_t post(const sp<AMessage>& msg, int64_t delayUs);

    static int64_t GetNowUs();

  protected:
    ~ALooper() override;

  private:
    class LooperThread;

    struct Event {
        int64_t whenUs;
        uint64_t seq;  // posting order, to keep equal due times first in, first out
        sp<AMessage> msg;
    };
    // True when `a` is due after `b`: the heap's order, earliest at the front.
    static bool isLater(const Event& a, const Event& b);

    // One step of the thread: waits for the next due message and delivers it. False
    // once `self` is no longer the looper's thread.
    bool loop(const LooperThread* self);

    Mutex mLock;
    Condition mQueueChanged;
    std::string mName;
    KeyedVector<handler_id, wp<AHandler>> mHandlers;
    // A heap on (due time, posting order) in a vector that keeps its capacity, so a
    // post in the steady state allocates nothing.
    std::vector<Event> mEventQueue;
    uint64_t mNextSeq = 0;
    sp<LooperThread> mThread;
};

}  // namespace android
