#pragma once

#include <sdbus-c++/IConnection.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>

namespace vessa {

// Runs a connection's event loop on a thread of its own, as sdbus-c++'s
// enterEventLoopAsync does, but survives the bus: when the connection fails (the bus
// daemon went away, or dropped this connection), the loop ends and says so once
// through `onLost`. sdbus-c++'s own loop ends the whole process with an uncaught
// exception instead.
class BusLoop {
  public:
    using Lost = std::function<void(const std::string& reason)>;

    BusLoop(sdbus::IConnection& connection, Lost onLost);
    // Stops the loop.
    ~BusLoop();
    BusLoop(const BusLoop&) = delete;
    BusLoop& operator=(const BusLoop&) = delete;

    void start();
    // Ends the loop and waits for its thread: no handler runs after this returns.
    // Never from the loop's own thread.
    void stop();

  private:
    // A synchronous call made from another thread can take a message meant for this
    // loop off the socket just before the loop goes to sleep; it would then not wake
    // until the next message. Waking at least this often bounds that delay.
    static constexpr int kMaxSleepMs = 100;

    void run();

    sdbus::IConnection& mConnection;
    Lost mOnLost;
    int mWakeFd;
    std::atomic<bool> mStopping{false};
    std::thread mThread;
};

}  // namespace vessa
