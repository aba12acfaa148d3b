#define LOG_TAG "PqsServer"

#include "dbus/PqsServer.h"

#include <log/log.h>
#include <sdbus-c++/Error.h>
#include <sdbus-c++/IProxy.h>

#include "dbus/BusConnection.h"
#include "dbus/PqsNames.h"

namespace vessa {

PqsServer::PqsServer(android::sp<android::IPqs> service) : mService(std::move(service)) {}

PqsServer::~PqsServer() {
    stop();
}

bool PqsServer::start(const std::string& bus, std::string* error, BusLoop::Lost onLost) {
    mRequests = BusConnection::open(bus, error);
    std::unique_ptr<sdbus::IConnection> callbacks = BusConnection::open(bus, error);
    if (mRequests == nullptr || callbacks == nullptr) {
        mRequests.reset();
        return false;
    }
    mSender = std::make_shared<CallbackSender>(std::move(callbacks));
    mWatch = new ClientDeathWatch(*mRequests);
    if (!mWatch->start(error)) {
        stop();
        return false;
    }
    try {
        mAdaptor =
                std::make_unique<PqsAdaptor>(*mRequests, kPqsObjectPath, mService, mSender, mWatch);
        mRequests->requestName(kPqsServiceName);
    } catch (const sdbus::Error& e) {
        *error = std::string("cannot serve ") + kPqsServiceName + " on " +
                 BusConnection::describe(bus) + ": " +
                 (nameTaken() ? "the name has an owner already (another vessad?)" : e.getMessage());
        stop();
        return false;
    }
    mLoop = std::make_unique<BusLoop>(*mRequests, std::move(onLost));
    mLoop->start();
    mServing = true;
    ALOGI("serving %s on %s as %s", kPqsServiceName, BusConnection::describe(bus).c_str(),
          uniqueName().c_str());
    return true;
}

void PqsServer::stop() {
    if (mRequests != nullptr) {
        // Joins the bus thread: no request handler runs after this.
        mLoop.reset();
        mAdaptor.reset();
        if (mWatch != nullptr) mWatch->stop();
        try {
            if (mServing) mRequests->releaseName(kPqsServiceName);
        } catch (const sdbus::Error&) {
            // The bus is gone already; the name went with it.
        }
        mRequests.reset();
    }
    mServing = false;
    mService.clear();
    // Callback proxies the service still holds share the sender.
    mSender.reset();
}

bool PqsServer::nameTaken() {
    try {
        bool owned = false;
        sdbus::createProxy(*mRequests, "org.freedesktop.DBus", "/org/freedesktop/DBus")
                ->callMethod("NameHasOwner")
                .onInterface("org.freedesktop.DBus")
                .withArguments(std::string(kPqsServiceName))
                .storeResultsTo(owned);
        return owned;
    } catch (const sdbus::Error&) {
        return false;
    }
}

std::string PqsServer::uniqueName() const {
    return mRequests == nullptr ? "" : mRequests->getUniqueName();
}

}  // namespace vessa
