#pragma once

#include <sdbus-c++/sdbus-c++.h>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "dbus/BusLoop.h"
#include "pqs360/IPqs_adaptor.h"
#include "pqs360/IPqs_proxy.h"

namespace vessa {

// A client of the vessa service on one bus connection: the generated IPqs calls,
// plus, once registered, a callback object receiving the service's updates.
// The calls throw sdbus::Error; the public Client turns that into results.
class PqsClient {
  public:
    using Bytes = std::vector<uint8_t>;
    using Listener = std::function<void(const Bytes&)>;
    using ServiceCalls = vendor::vessa_v3_6::hardware::pqs360::IPqs_proxy;

    // The object path of this client's callback object.
    static constexpr const char* kCallbacksPath = "/vessa/client/callbacks";

    explicit PqsClient(std::string bus);
    ~PqsClient();
    PqsClient(const PqsClient&) = delete;
    PqsClient& operator=(const PqsClient&) = delete;

    const std::string& bus() const { return mBus; }
    // False, with `error` set, when the bus cannot be reached.
    bool connect(std::string* error);

    // The service's methods.
    ServiceCalls& service();

    // Exports the callback object and registers it as client (type, uid).
    void registerClient(int type, uint32_t uid);
    // Unregisters if registered; an ordinary client leaving makes the service save.
    void unregisterClient();
    bool registered() const { return mRegistered; }

    // Waits for an update that `match` accepts; earlier ones are dropped.
    bool waitForUpdate(const std::function<bool(const Bytes&)>& match,
                       std::chrono::milliseconds timeout, Bytes* update = nullptr);
    // Also hands every update to `listener`, on the bus thread.
    void setListener(Listener listener);

    // Once registered: called, from the bus thread, when the bus is lost or the
    // service leaves the bus or comes back.
    void setChangeListener(std::function<void()> changed);
    // Why the bus was lost; empty while it is there.
    std::string busLost();
    // Whether the service owns its name, as the bus last said.
    bool serviceRunning();
    // Registers again as before, after the service came back.
    void registerAgain();

  private:
    class Service final : public sdbus::ProxyInterfaces<ServiceCalls> {
      public:
        explicit Service(sdbus::IConnection& connection);
        ~Service();
    };
    class Callbacks final : public sdbus::AdaptorInterfaces<
                                    vendor::vessa_v3_6::hardware::pqs360::IPqsCallbacks_adaptor> {
      public:
        Callbacks(sdbus::IConnection& connection, PqsClient* client);
        ~Callbacks();

      private:
        void onAupParamUpdate(const std::vector<uint8_t>& data) override;
        PqsClient* mClient;
    };

    void received(const Bytes& update);
    static constexpr size_t kMaxQueued = 1024;

    void changed();

    std::string mBus;
    std::unique_ptr<sdbus::IConnection> mConnection;
    std::unique_ptr<Service> mService;
    std::unique_ptr<Callbacks> mCallbacks;
    sdbus::Slot mOwnerWatch;
    std::unique_ptr<BusLoop> mLoop;
    bool mRegistered = false;
    int mType = 0;
    uint32_t mUid = 0;

    std::mutex mLock;
    std::condition_variable mArrived;
    std::deque<Bytes> mUpdates;
    Listener mListener;
    std::function<void()> mChanged;
    std::string mLost;
    bool mServiceRunning = true;
};

}  // namespace vessa
