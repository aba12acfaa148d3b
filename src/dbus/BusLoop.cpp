#include "dbus/BusLoop.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <exception>

namespace vessa {

BusLoop::BusLoop(sdbus::IConnection& connection, Lost onLost)
    : mConnection(connection),
      mOnLost(std::move(onLost)),
      mWakeFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

BusLoop::~BusLoop() {
    stop();
    if (mWakeFd >= 0) close(mWakeFd);
}

void BusLoop::start() {
    if (mThread.joinable()) return;
    mStopping = false;
    mThread = std::thread([this] { run(); });
}

void BusLoop::stop() {
    if (!mThread.joinable()) return;
    mStopping = true;
    uint64_t one = 1;
    if (write(mWakeFd, &one, sizeof(one)) < 0) {
        // The counter is full: a wake-up is pending anyway.
    }
    mThread.join();
    uint64_t count;
    if (read(mWakeFd, &count, sizeof(count)) < 0) {
        // Nothing was left to take.
    }
}

void BusLoop::run() {
    try {
        while (!mStopping) {
            while (mConnection.processPendingRequest()) {
                if (mStopping) return;
            }
            sdbus::IConnection::PollData data = mConnection.getEventLoopPollData();
            struct pollfd fds[2] = {{data.fd, static_cast<short>(data.events), 0},
                                    {mWakeFd, POLLIN, 0}};
            int timeout = data.getPollTimeout();
            if (timeout < 0 || timeout > kMaxSleepMs) timeout = kMaxSleepMs;
            poll(fds, 2, timeout);
        }
    } catch (const std::exception& e) {
        if (!mStopping && mOnLost) mOnLost(e.what());
    }
}

}  // namespace vessa
