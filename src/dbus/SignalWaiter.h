#pragma once

#include <signal.h>

namespace vessa {

// SIGINT and SIGTERM as a request to stop, for a program with bus threads:
// block them before any thread starts (threads inherit the mask), so that only
// wait() receives them, whichever thread the kernel would have picked.
class StopSignals {
  public:
    // Resets them to their default action first: a shell may start a background
    // program with SIGINT ignored, and an ignored signal is never waited for.
    StopSignals();
    // Blocks until one arrives; returns its number.
    int wait();

  private:
    sigset_t mSet;
};

}  // namespace vessa
