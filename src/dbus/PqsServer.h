#pragma once

#include <sdbus-c++/IConnection.h>
#include <utils/RefBase.h>

#include <memory>
#include <string>

#include "dbus/BusLoop.h"
#include "dbus/CallbackSender.h"
#include "dbus/ClientDeathWatch.h"
#include "dbus/PqsAdaptor.h"
#include "service/IPqs.h"

namespace vessa {

// The service on a bus: one connection receives requests and watches clients
// (its bus thread runs every request handler), a second one, owned by the
// callback sender and its thread, only carries the one-way calls back to
// clients. The service calls clients back while holding its lock, and request
// handlers may wait for that lock: the callbacks must never wait for the bus.
class PqsServer {
  public:
    explicit PqsServer(android::sp<android::IPqs> service);
    ~PqsServer();
    PqsServer(const PqsServer&) = delete;
    PqsServer& operator=(const PqsServer&) = delete;

    // Connects to `bus` ("session", "system" or an address), exports the object,
    // owns the service name and starts serving. False, with `error` set, on failure.
    // `onLost` is called once, from the bus thread, if the bus goes away later.
    bool start(const std::string& bus, std::string* error, BusLoop::Lost onLost = nullptr);
    // Stops serving and lets go of the service; clients may still hold callback
    // proxies, which keep the callback sender running until released.
    void stop();

    // The unique name of the request connection (":1.N"), empty when stopped.
    std::string uniqueName() const;

  private:
    // Whether someone else owns the service name (why requesting it failed).
    bool nameTaken();

    android::sp<android::IPqs> mService;
    std::unique_ptr<sdbus::IConnection> mRequests;
    std::unique_ptr<BusLoop> mLoop;
    std::shared_ptr<CallbackSender> mSender;
    android::sp<ClientDeathWatch> mWatch;
    std::unique_ptr<PqsAdaptor> mAdaptor;
    bool mServing = false;
};

}  // namespace vessa
