#include "dbus/SignalWaiter.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>

namespace vessa {

SignalWaiter::SignalWaiter(std::initializer_list<int> signals) {
    sigemptyset(&mSet);
    for (int sig : signals) {
        signal(sig, SIG_DFL);
        sigaddset(&mSet, sig);
    }
    pthread_sigmask(SIG_BLOCK, &mSet, nullptr);
    mSignalFd = signalfd(-1, &mSet, SFD_CLOEXEC);
    mWakeFd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

SignalWaiter::~SignalWaiter() {
    if (mSignalFd >= 0) close(mSignalFd);
    if (mWakeFd >= 0) close(mWakeFd);
}

void SignalWaiter::wake() {
    uint64_t one = 1;
    if (write(mWakeFd, &one, sizeof(one)) < 0) {
        // The counter is full: a wake-up is pending anyway.
    }
}

int SignalWaiter::wait() {
    for (;;) {
        struct pollfd fds[2] = {{mSignalFd, POLLIN, 0}, {mWakeFd, POLLIN, 0}};
        if (poll(fds, 2, -1) < 0 && errno != EINTR) return 0;
        if ((fds[0].revents & POLLIN) != 0) {
            struct signalfd_siginfo info;
            if (read(mSignalFd, &info, sizeof(info)) == sizeof(info)) {
                return static_cast<int>(info.ssi_signo);
            }
        }
        uint64_t count;
        if ((fds[1].revents & POLLIN) != 0 && read(mWakeFd, &count, sizeof(count)) > 0) return 0;
    }
}

}  // namespace vessa
