#include "dbus/PqsCallbacksProxy.h"

namespace vessa {

PqsCallbacksProxy::PqsCallbacksProxy(std::shared_ptr<CallbackSender> sender, std::string client,
                                     std::string path, android::sp<ClientDeathWatch> watch)
    : mSender(std::move(sender)),
      mClient(std::move(client)),
      mPath(std::move(path)),
      mWatch(std::move(watch)) {}

bool PqsCallbacksProxy::onAupParamUpdate(const uint8_t* data, size_t length) {
    return !mGone && mSender->post(mClient, mPath, data, length);
}

void PqsCallbacksProxy::markGone() {
    mGone = true;
    mSender->forget(mClient);
}

bool PqsCallbacksProxy::linkToDeath(const android::sp<android::PqsDeathRecipient>& recipient,
                                    uint64_t cookie) {
    if (recipient == nullptr) return false;
    mWatch->link(mClient, recipient, cookie, this);
    return true;
}

bool PqsCallbacksProxy::unlinkToDeath(const android::sp<android::PqsDeathRecipient>& recipient) {
    return recipient != nullptr && mWatch->unlink(mClient, recipient);
}

}  // namespace vessa
