#include "client/PqsClient.h"

#include "dbus/BusConnection.h"
#include "dbus/PqsNames.h"

namespace vessa {

PqsClient::Service::Service(sdbus::IConnection& connection)
    : ProxyInterfaces(connection, kPqsServiceName, kPqsObjectPath) {
    registerProxy();
}

PqsClient::Service::~Service() {
    unregisterProxy();
}

PqsClient::Callbacks::Callbacks(sdbus::IConnection& connection, PqsClient* client)
    : AdaptorInterfaces(connection, kCallbacksPath), mClient(client) {
    registerAdaptor();
}

PqsClient::Callbacks::~Callbacks() {
    unregisterAdaptor();
}

void PqsClient::Callbacks::onAupParamUpdate(const std::vector<uint8_t>& data) {
    mClient->received(data);
}

PqsClient::PqsClient(std::string bus) : mBus(std::move(bus)) {}

PqsClient::~PqsClient() {
    try {
        unregisterClient();
    } catch (const sdbus::Error&) {
        // The service is gone; it drops this client by itself.
    }
    // The bus thread may be delivering an update: stop it before the object goes.
    mLoop.reset();
    mOwnerWatch.reset();
    mCallbacks.reset();
    mService.reset();
}

bool PqsClient::connect(std::string* error) {
    mConnection = BusConnection::open(mBus, error);
    if (mConnection == nullptr) return false;
    mService = std::make_unique<Service>(*mConnection);
    return true;
}

PqsClient::ServiceCalls& PqsClient::service() {
    return *mService;
}

void PqsClient::registerClient(int type, uint32_t uid) {
    if (mCallbacks == nullptr) {
        mCallbacks = std::make_unique<Callbacks>(*mConnection, this);
        // The service leaving the bus, or coming back, shows as a new owner of its name.
        mOwnerWatch = mConnection->addMatch(
                std::string("type='signal',sender='org.freedesktop.DBus',member='NameOwnerChanged',"
                            "arg0='") +
                        kPqsServiceName + "'",
                [this](sdbus::Message& signal) {
                    std::string name, oldOwner, newOwner;
                    signal >> name >> oldOwner >> newOwner;
                    {
                        std::lock_guard<std::mutex> guard(mLock);
                        mServiceRunning = !newOwner.empty();
                    }
                    changed();
                });
        mLoop = std::make_unique<BusLoop>(*mConnection, [this](const std::string& reason) {
            {
                std::lock_guard<std::mutex> guard(mLock);
                mLost = reason;
            }
            changed();
        });
        mLoop->start();
    }
    mService->registerClient(sdbus::ObjectPath(kCallbacksPath), type, uid);
    mRegistered = true;
    mType = type;
    mUid = uid;
}

void PqsClient::registerAgain() {
    mService->registerClient(sdbus::ObjectPath(kCallbacksPath), mType, mUid);
    mRegistered = true;
}

void PqsClient::setChangeListener(std::function<void()> listener) {
    std::lock_guard<std::mutex> guard(mLock);
    mChanged = std::move(listener);
}

void PqsClient::changed() {
    std::function<void()> listener;
    {
        std::lock_guard<std::mutex> guard(mLock);
        listener = mChanged;
    }
    if (listener) listener();
}

std::string PqsClient::busLost() {
    std::lock_guard<std::mutex> guard(mLock);
    return mLost;
}

bool PqsClient::serviceRunning() {
    std::lock_guard<std::mutex> guard(mLock);
    return mServiceRunning;
}

void PqsClient::unregisterClient() {
    if (!mRegistered) return;
    mRegistered = false;
    mService->unregisterClient(sdbus::ObjectPath(kCallbacksPath), mType, mUid);
}

void PqsClient::received(const Bytes& update) {
    Listener listener;
    {
        std::lock_guard<std::mutex> guard(mLock);
        // Nobody may be waiting (a watch only listens): keep the newest ones.
        if (mUpdates.size() >= kMaxQueued) mUpdates.pop_front();
        mUpdates.push_back(update);
        listener = mListener;
    }
    mArrived.notify_all();
    if (listener) listener(update);
}

bool PqsClient::waitForUpdate(const std::function<bool(const Bytes&)>& match,
                              std::chrono::milliseconds timeout, Bytes* update) {
    auto deadline = std::chrono::steady_clock::now() + timeout;
    std::unique_lock<std::mutex> lock(mLock);
    while (true) {
        while (!mUpdates.empty()) {
            Bytes next = std::move(mUpdates.front());
            mUpdates.pop_front();
            if (match(next)) {
                if (update != nullptr) *update = std::move(next);
                return true;
            }
        }
        if (mArrived.wait_until(lock, deadline) == std::cv_status::timeout && mUpdates.empty()) {
            return false;
        }
    }
}

void PqsClient::setListener(Listener listener) {
    std::lock_guard<std::mutex> guard(mLock);
    mListener = std::move(listener);
}

}  // namespace vessa
