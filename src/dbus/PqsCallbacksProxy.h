#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "dbus/CallbackSender.h"
#include "dbus/ClientDeathWatch.h"
#include "service/IPqsCallbacks.h"

namespace vessa {

// A client's callback object as the service sees it: onAupParamUpdate becomes a
// one-way D-Bus call to the client's unique name and object path, handed to the
// callback sender, and a death link becomes an entry in the death watch.
class PqsCallbacksProxy : public android::IPqsCallbacks {
  public:
    PqsCallbacksProxy(std::shared_ptr<CallbackSender> sender, std::string client, std::string path,
                      android::sp<ClientDeathWatch> watch);

    // False when the client has left the bus or the sender's queue is full; the
    // call itself is made later, on the sender's thread.
    bool onAupParamUpdate(const uint8_t* data, size_t length) override;
    bool linkToDeath(const android::sp<android::PqsDeathRecipient>& recipient,
                     uint64_t cookie) override;
    bool unlinkToDeath(const android::sp<android::PqsDeathRecipient>& recipient) override;

    const std::string& client() const { return mClient; }
    const std::string& path() const { return mPath; }
    // Called by the death watch once the client's name has left the bus.
    void markGone();

  private:
    std::shared_ptr<CallbackSender> mSender;
    std::string mClient;
    std::string mPath;
    android::sp<ClientDeathWatch> mWatch;
    std::atomic<bool> mGone{false};
};

}  // namespace vessa
