#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include "ChildProcess.h"

namespace vessa::test {

// A dbus-daemon of the test's own, listening on a socket in `dir`, with the
// session configuration or `config`.
class PrivateBus {
  public:
    explicit PrivateBus(const std::string& dir, const std::string& config = "")
        : mDaemon({"/usr/bin/dbus-daemon", config.empty() ? "--session" : "--config-file=" + config,
                   "--nofork", "--nopidfile", "--address=unix:path=" + dir + "/bus",
                   "--print-address=1"},
                  dir) {
        // The daemon prints its address once it listens; empty on failure (see error()).
        if (mDaemon.waitForOutput("\n"))
            mAddress = mDaemon.out().substr(0, mDaemon.out().find('\n'));
    }

    const std::string& address() const { return mAddress; }
    std::string error() const { return mDaemon.err(); }

    // Polls the bus until `name` has an owner (or, with `owned` false, has none).
    bool waitForOwner(const std::string& name, bool owned = true) const {
        auto connection = sdbus::createSessionBusConnectionWithAddress(mAddress);
        auto daemon =
                sdbus::createProxy(*connection, "org.freedesktop.DBus", "/org/freedesktop/DBus");
        return eventually(
                [&] {
                    bool hasOwner = false;
                    daemon->callMethod("NameHasOwner")
                            .onInterface("org.freedesktop.DBus")
                            .withArguments(name)
                            .storeResultsTo(hasOwner);
                    return hasOwner == owned;
                },
                std::chrono::seconds(10));
    }

  private:
    ChildProcess mDaemon;
    std::string mAddress;
};

}  // namespace vessa::test
