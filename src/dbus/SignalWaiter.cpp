#include "dbus/StopSignals.h"

#include <pthread.h>

namespace vessa {

StopSignals::StopSignals() {
    signal(SIGINT, SIG_DFL);
    signal(SIGTERM, SIG_DFL);
    sigemptyset(&mSet);
    sigaddset(&mSet, SIGINT);
    sigaddset(&mSet, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &mSet, nullptr);
}

int StopSignals::wait() {
    int received = 0;
    sigwait(&mSet, &received);
    return received;
}

}  // namespace vessa
