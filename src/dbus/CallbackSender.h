#pragma once

#include <sdbus-c++/IConnection.h>
#include <sdbus-c++/IProxy.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vessa {

// Carries the service's one-way calls to its clients, on a bus connection of its own
// and from a thread of its own, which is the only one to touch that connection.
//
// The service hands an update over and goes on at once, whatever the clients do. A
// call is written to the bus only when the previous one has left the process
// entirely, so nothing piles up inside the connection; the updates waiting here are
// bounded (kMaxQueued, kMaxQueuedBytes), and one that does not fit is refused,
// which the service reports as a failed call. A client that floods or stops reading
// thus costs a bounded amount of memory and some dropped updates of its own, and
// the calls to everyone else keep flowing as soon as the bus takes them again.
class CallbackSender {
  public:
    static constexpr size_t kMaxQueued = 4096;
    static constexpr size_t kMaxQueuedBytes = 8 << 20;
    // Proxies kept for clients seen; beyond it they are built again on demand.
    static constexpr size_t kMaxProxies = 256;

    explicit CallbackSender(std::unique_ptr<sdbus::IConnection> connection);
    // Stops the thread; updates still waiting are dropped.
    ~CallbackSender();
    CallbackSender(const CallbackSender&) = delete;
    CallbackSender& operator=(const CallbackSender&) = delete;

    // Queues onAupParamUpdate(data) for the object `path` of `client`; false when
    // the queue is full and the update is dropped.
    bool post(const std::string& client, const std::string& path, const uint8_t* data,
              size_t length);
    // The client has left the bus: its waiting updates and its proxies go.
    void forget(const std::string& client);

  private:
    struct Update {
        std::string client;
        std::string path;
        std::vector<uint8_t> bytes;
    };

    void run();
    void send(const Update& update);
    sdbus::IProxy& proxyFor(const std::string& client, const std::string& path);
    void wake();

    std::unique_ptr<sdbus::IConnection> mConnection;
    int mWakeFd = -1;

    std::mutex mLock;
    std::deque<Update> mQueue;
    size_t mQueuedBytes = 0;
    std::set<std::string> mForgotten;
    bool mStopping = false;
    bool mBroken = false;  // the connection failed: nothing is queued any more

    // Touched by the sender thread only.
    std::map<std::pair<std::string, std::string>, std::unique_ptr<sdbus::IProxy>> mProxies;

    std::thread mThread;  // last: starts once everything above exists
};

}  // namespace vessa
