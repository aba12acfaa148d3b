#pragma once

#include <utils/RefBase.h>

#include <cstddef>
#include <cstdint>

namespace android {

class IPqsCallbacks;

// Told when the process behind a callback interface has gone away.
class PqsDeathRecipient : public virtual RefBase {
  public:
    virtual void serviceDied(uint64_t cookie, const wp<IPqsCallbacks>& who) = 0;
};

// A client's callback interface, as the transport hands it to the service.
class IPqsCallbacks : public virtual RefBase {
  public:
    // The bytes are only borrowed for the call. False on a transport failure.
    virtual bool onAupParamUpdate(const uint8_t* data, size_t length) = 0;
    // Arranges for recipient->serviceDied(cookie, this) when the client dies.
    // The recipient is held weakly, as platform death links are: it holds the
    // callbacks itself, and a strong link back would keep both alive forever.
    virtual bool linkToDeath(const sp<PqsDeathRecipient>& recipient, uint64_t cookie) = 0;
    virtual bool unlinkToDeath(const sp<PqsDeathRecipient>& recipient) = 0;
};

}  // namespace android
