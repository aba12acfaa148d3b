#define LOG_TAG "CallbackSender"

#include "dbus/CallbackSender.h"

#include <log/log.h>
#include <poll.h>
#include <sdbus-c++/Error.h>
#include <sdbus-c++/Message.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>

#include "platform/LogRepeats.h"
#include "pqs360/IPqs_proxy.h"

namespace vessa {

namespace {

using CallbacksInterface = vendor::vessa_v3_6::hardware::pqs360::IPqsCallbacks_proxy;

// One client in trouble must not write the log full.
LogRepeats sFailures(LOG_TAG, ANDROID_LOG_WARN);

}  // namespace

CallbackSender::CallbackSender(std::unique_ptr<sdbus::IConnection> connection)
    : mConnection(std::move(connection)),
      mWakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      mThread([this] { run(); }) {}

CallbackSender::~CallbackSender() {
    {
        std::lock_guard<std::mutex> guard(mLock);
        mStopping = true;
    }
    wake();
    mThread.join();
    mProxies.clear();  // before the connection they use
    if (mWakeFd >= 0) close(mWakeFd);
}

void CallbackSender::wake() {
    uint64_t one = 1;
    if (write(mWakeFd, &one, sizeof(one)) < 0) {
        // The counter is full: the thread has a wake-up pending anyway.
    }
}

bool CallbackSender::post(const std::string& client, const std::string& path, const uint8_t* data,
                          size_t length) {
    {
        std::lock_guard<std::mutex> guard(mLock);
        if (mStopping || mBroken) return false;
        if (mQueue.size() >= kMaxQueued || mQueuedBytes + length > kMaxQueuedBytes) {
            if (sFailures.admit("updates dropped: the queue to clients is full")) {
                ALOGW("update for %s%s dropped: %zu updates (%zu bytes) wait already",
                      client.c_str(), path.c_str(), mQueue.size(), mQueuedBytes);
            }
            return false;
        }
        mQueue.push_back(Update{client, path, std::vector<uint8_t>(data, data + length)});
        mQueuedBytes += length;
        if (mQueue.size() > 1) return true;  // the thread is busy with the queue already
    }
    wake();
    return true;
}

void CallbackSender::forget(const std::string& client) {
    {
        std::lock_guard<std::mutex> guard(mLock);
        mForgotten.insert(client);
        for (auto it = mQueue.begin(); it != mQueue.end();) {
            if (it->client != client) {
                ++it;
                continue;
            }
            mQueuedBytes -= it->bytes.size();
            it = mQueue.erase(it);
        }
    }
    wake();
}

void CallbackSender::run() {
    bool broken = false;  // a connection that failed never comes back
    for (;;) {
        sdbus::IConnection::PollData pollData{-1, 0, 0};
        Update update;
        bool sending = false;
        try {
            bool backlog = false;
            if (!broken) {
                // Reads what the bus sent and writes out what the connection still holds.
                while (mConnection->processPendingRequest()) {
                }
                // POLLOUT wanted: the connection still holds bytes it could not write.
                pollData = mConnection->getEventLoopPollData();
                backlog = (pollData.events & POLLOUT) != 0;
            }
            std::lock_guard<std::mutex> guard(mLock);
            if (mStopping) return;
            for (const std::string& client : mForgotten) {
                for (auto it = mProxies.begin(); it != mProxies.end();) {
                    it = it->first.first == client ? mProxies.erase(it) : std::next(it);
                }
            }
            mForgotten.clear();
            if (!broken && !backlog && !mQueue.empty()) {
                update = std::move(mQueue.front());
                mQueue.pop_front();
                mQueuedBytes -= update.bytes.size();
                sending = true;
            }
        } catch (const std::exception& e) {
            ALOGE("the callback connection failed: %s; updates to clients are dropped", e.what());
            std::lock_guard<std::mutex> guard(mLock);
            // The stop's wake-up may be spent already: waiting now would be for ever.
            if (mStopping) return;
            broken = mBroken = true;
            mQueue.clear();
            mQueuedBytes = 0;
            pollData = sdbus::IConnection::PollData{-1, 0, 0};
        }
        if (sending) {
            send(update);
            continue;
        }
        // Nothing to send, or the bus must take what it has first: wait for the
        // bus or for new work (once broken, only for the end).
        struct pollfd fds[2] = {{pollData.fd, static_cast<short>(pollData.events), 0},
                                {mWakeFd, POLLIN, 0}};
        int timeout = pollData.fd < 0 ? -1 : pollData.getPollTimeout();
        if (poll(fds, 2, timeout) > 0 && (fds[1].revents & POLLIN) != 0) {
            uint64_t count;
            if (read(mWakeFd, &count, sizeof(count)) < 0) {
                // Nothing to read: another wake-up took it.
            }
        }
    }
}

sdbus::IProxy& CallbackSender::proxyFor(const std::string& client, const std::string& path) {
    auto key = std::make_pair(client, path);
    auto found = mProxies.find(key);
    if (found != mProxies.end()) return *found->second;
    if (mProxies.size() >= kMaxProxies) mProxies.clear();
    return *mProxies.emplace(key, sdbus::createProxy(*mConnection, client, path)).first->second;
}

void CallbackSender::send(const Update& update) {
    try {
        sdbus::IProxy& proxy = proxyFor(update.client, update.path);
        sdbus::MethodCall call =
                proxy.createMethodCall(CallbacksInterface::INTERFACE_NAME, "onAupParamUpdate");
        call.openContainer("y");
        for (uint8_t byte : update.bytes) call << byte;
        call.closeContainer();
        // One-way: the client's answer is never waited for.
        call.dontExpectReply();
        proxy.callMethod(call);
    } catch (const std::exception& e) {
        if (sFailures.admit("cannot call " + update.client)) {
            ALOGW("cannot call %s%s: %s", update.client.c_str(), update.path.c_str(), e.what());
        }
    }
}

}  // namespace vessa
