#pragma once

#include <signal.h>

#include <initializer_list>

namespace vessa {

// Signals as events, for a program with bus threads. The chosen signals are blocked
// before any thread starts (threads inherit the mask) and read from a descriptor,
// so only wait() receives them, whichever thread the kernel would have picked;
// beside them, any thread can wake wait() (the bus is gone, a service left).
class SignalWaiter {
  public:
    // Resets the signals to their default action first: a shell may start a
    // background program with SIGINT ignored, and an ignored signal never arrives.
    explicit SignalWaiter(std::initializer_list<int> signals);
    ~SignalWaiter();
    SignalWaiter(const SignalWaiter&) = delete;
    SignalWaiter& operator=(const SignalWaiter&) = delete;

    // From any thread: the next wait() returns 0.
    void wake();
    // Blocks until one of the signals arrives (its number) or a wake-up (0).
    int wait();

  private:
    sigset_t mSet;
    int mSignalFd;
    int mWakeFd;
};

}  // namespace vessa
