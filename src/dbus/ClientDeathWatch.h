#pragma once

#include <sdbus-c++/IConnection.h>
#include <utils/RefBase.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "service/IPqsCallbacks.h"

namespace vessa {

class PqsCallbacksProxy;

// Tells the service when a client process is gone. The bus announces every
// name that loses its owner (NameOwnerChanged); when a client's unique name
// vanishes, each death recipient linked for it hears serviceDied once.
class ClientDeathWatch : public android::RefBase {
  public:
    explicit ClientDeathWatch(sdbus::IConnection& connection);
    ~ClientDeathWatch() override;

    // Subscribes to the bus's announcements. False, with `error` set, on failure.
    bool start(std::string* error);
    // Drops the subscription; must happen before the connection is closed.
    void stop();

    void link(const std::string& client, const android::sp<android::PqsDeathRecipient>& recipient,
              uint64_t cookie, const android::wp<PqsCallbacksProxy>& who);
    // False when the recipient was not linked for this client.
    bool unlink(const std::string& client,
                const android::sp<android::PqsDeathRecipient>& recipient);
    // Number of live links for a client name (for diagnostics and tests).
    size_t linkCount(const std::string& client);

    // The client's name has left the bus: marks its callbacks gone and tells
    // the recipients, outside the watch's lock (they take the service's lock).
    void clientVanished(const std::string& client);

  private:
    struct Link {
        android::wp<android::PqsDeathRecipient> recipient;
        uint64_t cookie;
        android::wp<PqsCallbacksProxy> who;
    };

    sdbus::IConnection& mConnection;
    sdbus::Slot mSubscription;
    std::mutex mLock;
    std::map<std::string, std::vector<Link>> mLinks;
};

}  // namespace vessa
