#pragma once

#include <string>

#include "ChildProcess.h"

namespace vessa::test {

// A dbus-daemon of the test's own, listening on a socket in the test's directory.
class PrivateBus {
  public:
    // Starts the daemon with the session configuration, or with `config`;
    // empty address on failure (the reason is in error()).
    explicit PrivateBus(const std::string& dir, const std::string& config = "");
    ~PrivateBus();

    const std::string& address() const { return mAddress; }
    // Polls the bus until `name` has an owner (or no longer has one).
    bool waitForOwner(const std::string& name, std::chrono::milliseconds timeout,
                      bool owned = true) const;
    std::string error() const { return mDaemon.err(); }
    void stop();

  private:
    ChildProcess mDaemon;
    std::string mAddress;
};

}  // namespace vessa::test
