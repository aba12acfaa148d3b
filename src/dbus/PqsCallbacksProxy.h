#pragma once

#include <sdbus-c++/IConnection.h>
#include <sdbus-c++/IProxy.h>

#include <atomic>
#include <memory>
#include <string>

#include "dbus/ClientDeathWatch.h"
#include "service/IPqsCallbacks.h"

namespace vessa {

// A client's callback object as the service sees it: onAupParamUpdate becomes a
// one-way D-Bus call to the client's unique name and object path, and a death
// link becomes an entry in the death watch.
class PqsCallbacksProxy : public android::IPqsCallbacks {
  public:
    // `connection` carries only these one-way calls, never a request: the
    // service calls back under its lock, which request handlers may wait for.
    PqsCallbacksProxy(std::shared_ptr<sdbus::IConnection> connection, std::string client,
                      std::string path, android::sp<ClientDeathWatch> watch);

    // False when the client has left the bus or the call could not be sent.
    bool onAupParamUpdate(const uint8_t* data, size_t length) override;
    bool linkToDeath(const android::sp<android::PqsDeathRecipient>& recipient,
                     uint64_t cookie) override;
    bool unlinkToDeath(const android::sp<android::PqsDeathRecipient>& recipient) override;

    const std::string& client() const { return mClient; }
    const std::string& path() const { return mPath; }
    // Called by the death watch once the client's name has left the bus.
    void markGone() { mGone = true; }

  private:
    // Declared first: the proxy below must go before its connection.
    std::shared_ptr<sdbus::IConnection> mConnection;
    std::unique_ptr<sdbus::IProxy> mProxy;
    std::string mClient;
    std::string mPath;
    android::sp<ClientDeathWatch> mWatch;
    std::atomic<bool> mGone{false};
};

}  // namespace vessa
