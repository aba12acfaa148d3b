#define LOG_TAG "VessaManagerService"

#include "service/DumpWriter.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <log/log.h>
#include <poll.h>
#include <signal.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>

namespace android {

namespace {

// Blocks SIGPIPE on this thread for a scope. A write to a pipe whose reader is
// gone then fails with EPIPE, and the signal it raised stays pending for this
// thread only; it is taken off before the mask is restored.
class SigpipeBlock {
  public:
    SigpipeBlock() {
        sigemptyset(&mPipe);
        sigaddset(&mPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &mPipe, &mPrevious);
    }
    ~SigpipeBlock() {
        if (mRaised) {
            const struct timespec now = {0, 0};
            while (sigtimedwait(&mPipe, nullptr, &now) == SIGPIPE) {
            }
        }
        pthread_sigmask(SIG_SETMASK, &mPrevious, nullptr);
    }
    void raised() { mRaised = true; }

  private:
    sigset_t mPipe;
    sigset_t mPrevious;
    bool mRaised = false;
};

}  // namespace

DumpWriter::~DumpWriter() {
    std::lock_guard<std::mutex> guard(mLock);
    if (mThread.joinable()) mThread.join();
}

size_t DumpWriter::writeAvailable(int fd, const std::string& text, size_t offset, int* error) {
    SigpipeBlock sigpipe;
    while (offset < text.size()) {
        const char* data = text.data() + offset;
        size_t left = text.size() - offset;
        ssize_t n = send(fd, data, left, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (n < 0 && errno == ENOTSOCK) {
            // A pipe or a file: once poll reports room, a write of at most
            // PIPE_BUF bytes does not block.
            struct pollfd room = {fd, POLLOUT, 0};
            if (poll(&room, 1, 0) <= 0) return offset;
            if ((room.revents & (POLLERR | POLLNVAL)) != 0) {
                *error = (room.revents & POLLNVAL) != 0 ? EBADF : EPIPE;
                return offset;
            }
            n = ::write(fd, data, std::min(left, static_cast<size_t>(PIPE_BUF)));
        }
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return offset;
        if (n <= 0) {
            *error = n < 0 ? errno : EIO;
            if (*error == EPIPE) sigpipe.raised();
            return offset;
        }
        offset += static_cast<size_t>(n);
    }
    return offset;
}

void DumpWriter::write(int fd, std::string text) {
    int error = 0;
    size_t offset = writeAvailable(fd, text, 0, &error);
    if (error != 0) {
        ALOGE("dump: cannot write to fd %d: %s", fd, strerror(error));
        return;
    }
    if (offset == text.size()) return;

    std::lock_guard<std::mutex> guard(mLock);
    if (mBusy) {
        ALOGE("dump: an earlier dump still waits for its reader; %zu bytes dropped",
              text.size() - offset);
        return;
    }
    int copy = fcntl(fd, F_DUPFD_CLOEXEC, 0);
    if (copy < 0) {
        ALOGE("dump: cannot keep fd %d: %s", fd, strerror(errno));
        return;
    }
    if (mThread.joinable()) mThread.join();
    mBusy = true;
    mThread = std::thread([this, copy, text = std::move(text), offset]() mutable {
        finish(copy, std::move(text), offset);
        mBusy = false;
    });
}

void DumpWriter::finish(int fd, std::string text, size_t offset) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(kMaxWaitMs);
    int error = 0;
    while (offset < text.size() && error == 0) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        if (left.count() <= 0) break;
        struct pollfd room = {fd, POLLOUT, 0};
        if (poll(&room, 1, static_cast<int>(left.count())) < 0 && errno != EINTR) break;
        offset = writeAvailable(fd, text, offset, &error);
    }
    if (offset < text.size()) {
        ALOGE("dump: the reader took %zu of %zu bytes within %d ms; the rest is "
              "dropped",
              offset, text.size(), kMaxWaitMs);
    }
    close(fd);
}

}  // namespace android
