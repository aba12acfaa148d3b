#define LOG_TAG "ALooper"

#include "platform/ALooper.h"

#include <errno.h>
#include <log/log.h>
#include <pthread.h>
#include <utils/AndroidThreads.h>
#include <utils/Thread.h>
#include <utils/Timers.h>

#include <algorithm>
#include <atomic>
#include <limits>

#include "platform/AHandler.h"
#include "platform/AMessage.h"

namespace android {

namespace {
constexpr int64_t kMaxInt64 = std::numeric_limits<int64_t>::max();

// Ids are unique across loopers, so a message addressed to a handler of another
// looper can never match a handler here.
std::atomic<ALooper::handler_id> sNextHandlerId{1};

int64_t dueTimeUs(int64_t delayUs) {
    int64_t nowUs = ALooper::GetNowUs();
    if (delayUs <= 0) return nowUs;
    return delayUs > kMaxInt64 - nowUs ? kMaxInt64 : nowUs + delayUs;
}

nsecs_t toNs(int64_t us) {
    return us > kMaxInt64 / 1000 ? kMaxInt64 : us * 1000;
}
}  // namespace

// Holds no reference on the looper, so releasing the looper stops the thread: the
// destructor joins it, or, when the last reference goes on this very thread, asks it
// to end after the current step, which touches the looper no more.
class ALooper::LooperThread : public Thread {
  public:
    LooperThread(ALooper* looper, const std::string& name)
        : Thread(false), mLooper(looper), mName(name), mThreadId(nullptr) {}

    bool isCurrentThread() const { return mThreadId.load() == getThreadId(); }

  private:
    status_t readyToRun() override {
        // The thread library does not name its threads here; the kernel keeps 15 bytes.
        pthread_setname_np(pthread_self(), mName.substr(0, 15).c_str());
        mThreadId = getThreadId();
        return OK;
    }

    bool threadLoop() override { return mLooper->loop(this); }

    ALooper* const mLooper;
    const std::string mName;
    std::atomic<thread_id_t> mThreadId;
};

ALooper::ALooper() : mName("ALooper") {}

ALooper::~ALooper() {
    stop();
    for (size_t i = 0; i < mHandlers.size(); ++i) {
        sp<AHandler> handler = mHandlers.valueAt(i).promote();
        if (handler != nullptr) handler->detach();
    }
}

void ALooper::setName(const char* name) {
    Mutex::Autolock lock(mLock);
    mName = name != nullptr ? name : "";
}

ALooper::handler_id ALooper::registerHandler(const sp<AHandler>& handler) {
    if (handler == nullptr) return INVALID_OPERATION;
    Mutex::Autolock lock(mLock);
    handler_id id = sNextHandlerId++;
    if (!handler->attach(id, this)) {
        ALOGE("handler %d is already registered", handler->id());
        return INVALID_OPERATION;
    }
    mHandlers.add(id, handler);
    return id;
}

void ALooper::unregisterHandler(handler_id id) {
    // Released after the lock: the handler's destructor may release this looper.
    sp<AHandler> handler;
    Mutex::Autolock lock(mLock);
    ssize_t index = mHandlers.indexOfKey(id);
    if (index < 0) return;
    handler = mHandlers.valueAt(index).promote();
    mHandlers.removeItemsAt(index);
    if (handler != nullptr) handler->detach();
}

status_t ALooper::start() {
    Mutex::Autolock lock(mLock);
    if (mThread != nullptr) return INVALID_OPERATION;
    sp<LooperThread> thread = new LooperThread(this, mName);
    // The lock is held until mThread is set, so the first loop step sees it.
    status_t err = thread->run(mName.c_str());
    if (err != OK) {
        ALOGE("cannot start thread %s: %d", mName.c_str(), err);
        return err;
    }
    mThread = thread;
    return OK;
}

status_t ALooper::stop() {
    // Both are released after the lock, on the caller's thread.
    sp<LooperThread> thread;
    std::vector<Event> discarded;
    {
        Mutex::Autolock lock(mLock);
        if (mThread == nullptr) return INVALID_OPERATION;
        thread = mThread;
        mThread.clear();
        discarded.swap(mEventQueue);
        thread->requestExit();
        mQueueChanged.broadcast();
    }
    if (!thread->isCurrentThread()) thread->join();
    return OK;
}

status_t ALooper::post(const sp<AMessage>& msg, int64_t delayUs) {
    if (msg == nullptr) return BAD_VALUE;
    Mutex::Autolock lock(mLock);
    if (mHandlers.indexOfKey(msg->target()) < 0) {
        ALOGW("%s: handler %d of message 0x%08x unknown", mName.c_str(), msg->target(),
              msg->what());
        return -ENOENT;
    }
    const uint64_t seq = mNextSeq++;
    mEventQueue.push_back(Event{dueTimeUs(delayUs), seq, msg});
    std::push_heap(mEventQueue.begin(), mEventQueue.end(), isLater);
    if (mEventQueue.front().seq == seq) mQueueChanged.signal();
    return OK;
}

bool ALooper::isLater(const Event& a, const Event& b) {
    return a.whenUs != b.whenUs ? a.whenUs > b.whenUs : a.seq > b.seq;
}

int64_t ALooper::GetNowUs() {
    return systemTime(SYSTEM_TIME_MONOTONIC) / 1000;
}

bool ALooper::loop(const LooperThread* self) {
    // Released after the lock, on this thread.
    sp<AMessage> msg;
    sp<AHandler> handler;
    {
        Mutex::Autolock lock(mLock);
        for (;;) {
            if (mThread.get() != self) return false;
            if (mEventQueue.empty()) {
                mQueueChanged.wait(mLock);
                continue;
            }
            int64_t waitUs = mEventQueue.front().whenUs - GetNowUs();
            if (waitUs <= 0) break;
            mQueueChanged.waitRelative(mLock, toNs(waitUs));
        }
        std::pop_heap(mEventQueue.begin(), mEventQueue.end(), isLater);
        msg = std::move(mEventQueue.back().msg);
        mEventQueue.pop_back();
        ssize_t index = mHandlers.indexOfKey(msg->target());
        if (index >= 0) handler = mHandlers.valueAt(index).promote();
    }
    if (handler == nullptr) {
        ALOGD("dropped message 0x%08x for handler %d", msg->what(), msg->target());
        return true;
    }
    handler->onMessageReceived(msg);
    return true;
}

}  // namespace android
