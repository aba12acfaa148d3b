#include "PrivateBus.h"

#include <sdbus-c++/sdbus-c++.h>
#include <signal.h>

#include <thread>

namespace vessa::test {

PrivateBus::PrivateBus(const std::string& dir, const std::string& config) {
    std::string socket = "unix:path=" + dir + "/bus";
    std::string configuration = config.empty() ? "--session" : "--config-file=" + config;
    if (!mDaemon.start({"/usr/bin/dbus-daemon", configuration, "--nofork", "--nopidfile",
                        "--address=" + socket, "--print-address=1"},
                       dir, "dbus-daemon")) {
        return;
    }
    // The daemon prints its address once it listens.
    if (mDaemon.waitForOutput("\n", std::chrono::seconds(10))) {
        mAddress = mDaemon.out();
        mAddress.erase(mAddress.find('\n'));
    }
}

PrivateBus::~PrivateBus() {
    stop();
}

void PrivateBus::stop() {
    mDaemon.stop(SIGTERM);
}

bool PrivateBus::waitForOwner(const std::string& name, std::chrono::milliseconds timeout,
                              bool owned) const {
    try {
        auto connection = sdbus::createSessionBusConnectionWithAddress(mAddress);
        auto daemon =
                sdbus::createProxy(*connection, "org.freedesktop.DBus", "/org/freedesktop/DBus");
        auto deadline = std::chrono::steady_clock::now() + timeout;
        while (true) {
            bool hasOwner = false;
            daemon->callMethod("NameHasOwner")
                    .onInterface("org.freedesktop.DBus")
                    .withArguments(name)
                    .storeResultsTo(hasOwner);
            if (hasOwner == owned) return true;
            if (std::chrono::steady_clock::now() >= deadline) return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    } catch (const sdbus::Error&) {
        return false;
    }
}

}  // namespace vessa::test
