#pragma once

#include <sdbus-c++/sdbus-c++.h>
#include <utils/RefBase.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "dbus/CallbackSender.h"
#include "dbus/ClientDeathWatch.h"
#include "dbus/PqsCallbacksProxy.h"
#include "pqs360/IPqs_adaptor.h"
#include "service/IPqs.h"

namespace vessa {

// Serves IPqs on the bus: unpacks every method's arguments, calls the service
// and packs its answer. Bad input gets the service's neutral answer; nothing a
// client sends can make it write outside a buffer or allocate without bound, and
// no exception leaves a method: the caller gets an error reply instead.
class PqsAdaptor final
    : public sdbus::AdaptorInterfaces<vendor::vessa_v3_6::hardware::pqs360::IPqs_adaptor> {
  public:
    using Bytes = std::vector<uint8_t>;
    using StoredEntry = sdbus::Struct<uint32_t, uint32_t, std::vector<int32_t>>;

    // Clients one bus connection may have registered at a time (a process
    // registers once per client type).
    static constexpr size_t kMaxClientsPerConnection = 16;

    // `sender` carries the calls back to clients, on a connection of its own.
    PqsAdaptor(sdbus::IConnection& connection, std::string path, android::sp<android::IPqs> service,
               std::shared_ptr<CallbackSender> sender, android::sp<ClientDeathWatch> watch);
    ~PqsAdaptor();

  private:
    int64_t getIntParam(const uint32_t& code) override;
    void setIntParam(const uint32_t& code, const int64_t& value) override;
    int32_t setAupParam(const Bytes& blob) override;
    std::tuple<int32_t, Bytes> getAupParam(const Bytes& in, const uint32_t& outLen) override;
    int32_t setParam(const uint32_t& device, const uint32_t& paramId,
                     const std::vector<int32_t>& values) override;
    int32_t commitChange() override;
    std::tuple<int32_t, std::vector<StoredEntry>> getStoredParams(const bool& committed) override;
    std::string getProfileName(const int32_t& id) override;
    int32_t getAvailableTuningDevicesLen(const int32_t& port) override;
    Bytes getAvailableTuningDevices(const int32_t& port, const int32_t& len) override;
    std::string getSelectedTuningDevice(const int32_t& port) override;
    void setSelectedTuningDevice(const int32_t& port, const Bytes& name) override;
    void registerClient(const sdbus::ObjectPath& callbacks, const int32_t& type,
                        const uint32_t& uid) override;
    void unregisterClient(const sdbus::ObjectPath& callbacks, const int32_t& type,
                          const uint32_t& uid) override;
    void dump(const sdbus::UnixFd& fd, const std::vector<std::string>& args) override;
    bool hasDecCP() override;
    bool getAupEnabled() override;
    bool isMobilityProfileSelected() override;
    bool isMonoInternalSpeaker() override;
    bool isSpeakerPortraitMode() override;
    int32_t getVolumeLevelerAount() override;
    int32_t getTuningParamDSA() override;
    int32_t getTuningParamDHSA() override;
    int32_t getTuningParamDFSA() override;
    int32_t getDialogEnhancerAmount() override;
    int32_t getActiveDevice() override;
    int64_t getDefaultXmlFormatVersion() override;
    std::string SaveError() override;

    // The callback object of the calling client at `path`; null for "/". The
    // same client and path get the same object while the service holds it.
    android::sp<android::IPqsCallbacks> callbacksOf(const sdbus::ObjectPath& path);
    // Runs one request; an exception is logged and becomes the caller's error reply.
    template <typename Request>
    static auto serve(const char* method, Request request) -> decltype(request());

    android::sp<android::IPqs> mService;
    std::shared_ptr<CallbackSender> mSender;
    android::sp<ClientDeathWatch> mWatch;
    std::mutex mProxiesLock;
    std::map<std::pair<std::string, std::string>, android::wp<PqsCallbacksProxy>> mProxies;
};

}  // namespace vessa
