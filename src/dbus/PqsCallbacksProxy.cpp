#include "dbus/PqsCallbacksProxy.h"

#include <android/log.h>
#include <sdbus-c++/Error.h>
#include <sdbus-c++/Message.h>

#include "pqs360/IPqs_proxy.h"

namespace vessa {

namespace {

constexpr const char* kTag = "PqsCallbacksProxy";
using CallbacksInterface = vendor::vessa_v3_6::hardware::pqs360::IPqsCallbacks_proxy;

}  // namespace

PqsCallbacksProxy::PqsCallbacksProxy(std::shared_ptr<sdbus::IConnection> connection,
                                     std::string client, std::string path,
                                     android::sp<ClientDeathWatch> watch)
    : mConnection(std::move(connection)),
      mProxy(sdbus::createProxy(*mConnection, client, path)),
      mClient(std::move(client)),
      mPath(std::move(path)),
      mWatch(std::move(watch)) {}

bool PqsCallbacksProxy::onAupParamUpdate(const uint8_t* data, size_t length) {
    if (mGone) return false;
    try {
        sdbus::MethodCall call =
                mProxy->createMethodCall(CallbacksInterface::INTERFACE_NAME, "onAupParamUpdate");
        // The bytes go straight into the message; no intermediate vector.
        call.openContainer("y");
        for (size_t i = 0; i < length; ++i) call << data[i];
        call.closeContainer();
        // One-way: sending never waits for the client.
        call.dontExpectReply();
        mProxy->callMethod(call);
        return true;
    } catch (const sdbus::Error& e) {
        __android_log_print(ANDROID_LOG_WARN, kTag, "cannot call %s%s: %s", mClient.c_str(),
                            mPath.c_str(), e.getMessage().c_str());
        return false;
    }
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
