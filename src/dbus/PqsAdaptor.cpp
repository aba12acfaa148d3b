#define LOG_TAG "PqsAdaptor"

#include "dbus/PqsAdaptor.h"

#include <log/log.h>

#include <algorithm>
#include <cerrno>
#include <exception>

#include "dbus/PqsNames.h"
#include "platform/AupParamStore.h"
#include "platform/LogRepeats.h"
#include "protocol/ClientBuffer.h"

namespace vessa {

namespace {

// The largest answer buffer a client may ask for; the service refuses larger blobs too.
constexpr size_t kMaxAnswer = vessa::ClientBuffer::kMaxSize;
constexpr const char* kLimitsExceeded = "org.freedesktop.DBus.Error.LimitsExceeded";
constexpr const char* kFailed = "org.freedesktop.DBus.Error.Failed";

// A client repeating a refused request must not write the log full.
LogRepeats sRefusals(LOG_TAG, ANDROID_LOG_ERROR);

bool refuseAnswerSize(const char* method, int64_t length) {
    if (length >= 0 && static_cast<uint64_t>(length) <= kMaxAnswer) return false;
    if (sRefusals.admit(std::string(method) + ": answer length refused")) {
        ALOGE("%s: answer length %lld refused", method, static_cast<long long>(length));
    }
    return true;
}

}  // namespace

template <typename Request>
auto PqsAdaptor::serve(const char* method, Request request) -> decltype(request()) {
    try {
        return request();
    } catch (const sdbus::Error&) {
        throw;  // already meant for the caller
    } catch (const std::exception& e) {
        if (sRefusals.admit(std::string(method) + ": failed")) {
            ALOGE("%s failed: %s", method, e.what());
        }
        throw sdbus::Error(kFailed, std::string(method) + " failed: " + e.what());
    }
}

PqsAdaptor::PqsAdaptor(sdbus::IConnection& connection, std::string path,
                       android::sp<android::IPqs> service, std::shared_ptr<CallbackSender> sender,
                       android::sp<ClientDeathWatch> watch)
    : AdaptorInterfaces(connection, std::move(path)),
      mService(std::move(service)),
      mSender(std::move(sender)),
      mWatch(std::move(watch)) {
    registerAdaptor();
}

PqsAdaptor::~PqsAdaptor() {
    unregisterAdaptor();
}

int64_t PqsAdaptor::getIntParam(const uint32_t& code) {
    return serve("getIntParam", [&] { return mService->getIntParam(code); });
}

void PqsAdaptor::setIntParam(const uint32_t& code, const int64_t& value) {
    serve("setIntParam", [&] { mService->setIntParam(code, value); });
}

int32_t PqsAdaptor::setAupParam(const Bytes& blob) {
    return serve("setAupParam", [&] {
        return mService->setAupParam(blob.data(), static_cast<uint32_t>(blob.size()));
    });
}

std::tuple<int32_t, PqsAdaptor::Bytes> PqsAdaptor::getAupParam(const Bytes& in,
                                                               const uint32_t& outLen) {
    return serve("getAupParam", [&]() -> std::tuple<int32_t, Bytes> {
        if (refuseAnswerSize("getAupParam", outLen)) return {-EINVAL, {}};
        Bytes out(outLen, 0);
        int32_t status = mService->getAupParam(in.data(), static_cast<uint32_t>(in.size()),
                                               out.data(), outLen);
        return {status, std::move(out)};
    });
}

int32_t PqsAdaptor::setParam(const uint32_t& device, const uint32_t& paramId,
                             const std::vector<int32_t>& values) {
    return serve("setParam", [&] {
        return mService->setParam(device, static_cast<android::AupParameterId>(paramId),
                                  values.data(), static_cast<uint32_t>(values.size()));
    });
}

int32_t PqsAdaptor::commitChange() {
    return serve("commitChange", [&] { return mService->commitChange(); });
}

// The store is bounded (AupParamStore::kMaxEntries of kMaxValues each), so the
// answer stays far below a bus message's limit.
std::tuple<int32_t, std::vector<PqsAdaptor::StoredEntry>> PqsAdaptor::getStoredParams(
        const bool& committed) {
    return serve("getStoredParams", [&] {
        android::KeyedVector<uint32_t, AupParamCache*> caches;
        int count = 0;
        int32_t status = mService->getStoredParams(&caches, committed, &count);
        std::vector<StoredEntry> entries;
        entries.reserve(caches.size());
        for (size_t i = 0; i < caches.size(); ++i) {
            const AupParamCache* cache = caches.valueAt(i);
            if (cache == nullptr) continue;
            entries.emplace_back(cache->getDevice(), cache->getParameterId(), cache->getValues());
        }
        AupParamStore::releaseStoredParams(&caches);
        // The answer's order is part of the interface, whatever the store's keys.
        std::sort(entries.begin(), entries.end(), [](const StoredEntry& a, const StoredEntry& b) {
            return std::make_pair(a.get<0>(), a.get<1>()) < std::make_pair(b.get<0>(), b.get<1>());
        });
        return std::make_tuple(status, std::move(entries));
    });
}

std::string PqsAdaptor::getProfileName(const int32_t& id) {
    return serve("getProfileName", [&] { return mService->getProfileName(id); });
}

int32_t PqsAdaptor::getAvailableTuningDevicesLen(const int32_t& port) {
    return serve("getAvailableTuningDevicesLen",
                 [&] { return mService->getAvailableTuningDevicesLen(port); });
}

PqsAdaptor::Bytes PqsAdaptor::getAvailableTuningDevices(const int32_t& port, const int32_t& len) {
    return serve("getAvailableTuningDevices", [&]() -> Bytes {
        if (len < 0) {
            // The service logs the refusal of a negative length itself.
            mService->getAvailableTuningDevices(port, nullptr, len);
            return {};
        }
        if (refuseAnswerSize("getAvailableTuningDevices", len)) return {};
        Bytes names(static_cast<size_t>(len), 0);
        mService->getAvailableTuningDevices(port, names.data(), len);
        return names;
    });
}

std::string PqsAdaptor::getSelectedTuningDevice(const int32_t& port) {
    return serve("getSelectedTuningDevice",
                 [&] { return mService->getSelectedTuningDevice(port); });
}

void PqsAdaptor::setSelectedTuningDevice(const int32_t& port, const Bytes& name) {
    serve("setSelectedTuningDevice", [&] {
        mService->setSelectedTuningDevice(port, name.data(), static_cast<int>(name.size()));
    });
}

android::sp<android::IPqsCallbacks> PqsAdaptor::callbacksOf(const sdbus::ObjectPath& path) {
    if (path == kNullCallbacksPath) return nullptr;
    std::string client = getObject().getCurrentlyProcessedMessage()->getSender();
    std::lock_guard<std::mutex> guard(mProxiesLock);
    auto key = std::make_pair(client, std::string(path));
    auto it = mProxies.find(key);
    if (it != mProxies.end()) {
        android::sp<PqsCallbacksProxy> known = it->second.promote();
        if (known != nullptr) return known;
    }
    // Forget proxies the service has let go of, so the table stays small.
    for (auto stale = mProxies.begin(); stale != mProxies.end();) {
        stale = stale->second.promote() == nullptr ? mProxies.erase(stale) : std::next(stale);
    }
    android::sp<PqsCallbacksProxy> proxy = new PqsCallbacksProxy(mSender, client, path, mWatch);
    mProxies[key] = proxy;
    return proxy;
}

void PqsAdaptor::registerClient(const sdbus::ObjectPath& callbacks, const int32_t& type,
                                const uint32_t& uid) {
    serve("registerClient", [&] {
        // Each registered client holds one death link on its connection's name.
        std::string client = getObject().getCurrentlyProcessedMessage()->getSender();
        size_t registered = mWatch->linkCount(client);
        if (callbacks != kNullCallbacksPath && registered >= kMaxClientsPerConnection) {
            if (sRefusals.admit("registerClient: too many clients on " + client)) {
                ALOGE("registerClient(type = %d, uid = %u) refused: %s has %zu clients already",
                      type, uid, client.c_str(), registered);
            }
            throw sdbus::Error(kLimitsExceeded, "this connection has " +
                                                        std::to_string(registered) +
                                                        " clients registered already");
        }
        mService->registerClient(callbacksOf(callbacks), type, uid);
    });
}

void PqsAdaptor::unregisterClient(const sdbus::ObjectPath& callbacks, const int32_t& type,
                                  const uint32_t& uid) {
    serve("unregisterClient",
          [&] { mService->unregisterClient(callbacksOf(callbacks), type, uid); });
}

void PqsAdaptor::dump(const sdbus::UnixFd& fd, const std::vector<std::string>& args) {
    serve("dump", [&] { mService->dump(fd.get(), args); });
}

bool PqsAdaptor::hasDecCP() {
    return serve("hasDecCP", [&] { return mService->hasDecCP(); });
}

bool PqsAdaptor::getAupEnabled() {
    return serve("getAupEnabled", [&] { return mService->getAupEnabled(); });
}

bool PqsAdaptor::isMobilityProfileSelected() {
    return serve("isMobilityProfileSelected",
                 [&] { return mService->isMobilityProfileSelected(); });
}

bool PqsAdaptor::isMonoInternalSpeaker() {
    return serve("isMonoInternalSpeaker", [&] { return mService->isMonoInternalSpeaker(); });
}

bool PqsAdaptor::isSpeakerPortraitMode() {
    return serve("isSpeakerPortraitMode", [&] { return mService->isSpeakerPortraitMode(); });
}

int32_t PqsAdaptor::getVolumeLevelerAount() {
    return serve("getVolumeLevelerAount", [&] { return mService->getVolumeLevelerAount(); });
}

int32_t PqsAdaptor::getTuningParamDSA() {
    return serve("getTuningParamDSA", [&] { return mService->getTuningParamDSA(); });
}

int32_t PqsAdaptor::getTuningParamDHSA() {
    return serve("getTuningParamDHSA", [&] { return mService->getTuningParamDHSA(); });
}

int32_t PqsAdaptor::getTuningParamDFSA() {
    return serve("getTuningParamDFSA", [&] { return mService->getTuningParamDFSA(); });
}

int32_t PqsAdaptor::getDialogEnhancerAmount() {
    return serve("getDialogEnhancerAmount", [&] { return mService->getDialogEnhancerAmount(); });
}

int32_t PqsAdaptor::getActiveDevice() {
    return serve("getActiveDevice", [&] { return mService->getActiveDevice(); });
}

int64_t PqsAdaptor::getDefaultXmlFormatVersion() {
    return serve("getDefaultXmlFormatVersion",
                 [&] { return mService->getDefaultXmlFormatVersion(); });
}

std::string PqsAdaptor::SaveError() {
    return serve("SaveError", [&] { return mService->getSaveError(); });
}

}  // namespace vessa
