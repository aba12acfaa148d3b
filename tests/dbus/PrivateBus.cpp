#include "PrivateBus.h"

#include <signal.h>

namespace vessa::test {

PrivateBus::PrivateBus(const std::string& dir) {
    std::string socket = "unix:path=" + dir + "/bus";
    if (!mDaemon.start({"/usr/bin/dbus-daemon", "--session", "--nofork", "--nopidfile",
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

}  // namespace vessa::test
