#pragma once

#include <utils/KeyedVector.h>
#include <utils/Mutex.h>
#include <utils/RefBase.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "manager/SxManager.h"
#include "platform/ABuffer.h"
#include "platform/AHandler.h"
#include "platform/ALooper.h"
#include "platform/AMessage.h"
#include "protocol/PqsProtocol.h"
#include "service/DumpWriter.h"
#include "service/IPqs.h"
#include "service/SerializedManager.h"

namespace android {

// The service object behind IPqs. Reads go straight to the manager; changes of
// the parameter blob and of tuning-device selection are applied in order on
// one event thread, which then sends the request's bytes to every client.
// Every path to the manager goes through SerializedManager: see the rule there.
class VessaManagerService : public IPqs {
  public:
    // Message codes of the event thread.
    static constexpr uint32_t kWhatRegisterClient = 0x72656763;  // "regc"
    static constexpr uint32_t kWhatSetTuning = 0x73657474;       // "sett"
    static constexpr uint32_t kWhatSetParam = 0x73657470;        // "setp"

    // A registered client: its callbacks and the death link that removes it.
    class NotificationClient : public PqsDeathRecipient {
      public:
        NotificationClient(const sp<VessaManagerService>& service,
                           const sp<IPqsCallbacks>& callbacks, uint32_t uid, int type);
        void serviceDied(uint64_t cookie, const wp<IPqsCallbacks>& who) override;
        void onAupParamUpdate(const void* data, uint32_t length);
        uint32_t uid() const { return mUid; }
        int type() const { return mType; }
        const sp<IPqsCallbacks>& callbacks() const { return mCallbacks; }

      private:
        wp<VessaManagerService> mService;
        uint32_t mUid;
        int mType;
        sp<IPqsCallbacks> mCallbacks;
    };

    // Applies posted requests on the thread "VessaManagerService EventHandler".
    class EventHandler : public AHandler {
      public:
        EventHandler(SerializedManager* manager, VessaManagerService* service);
        void start();
        void stop();
        void sendMessage(const void* data, uint32_t length, uint32_t what);
        void sendMessage(const void* data, uint32_t length, int port, uint32_t what);
        // Applies a parameter-set blob and writes the applied value into word 1. Only
        // on the event thread.
        void parseAndSendParam(void* blob, uint32_t length);

      protected:
        void onMessageReceived(const sp<AMessage>& msg) override;

      private:
        // A delivered message and its buffer, kept to carry a later request: a request
        // in the steady state allocates nothing on its way to the event thread.
        struct Spare {
            sp<AMessage> msg;
            sp<ABuffer> buffer;
        };
        static constexpr size_t kMaxSpares = 8;
        // A larger buffer is not kept: one big request must not pin its memory.
        static constexpr size_t kMaxSpareCapacity = 4096;

        // Applies one message; the bytes the clients are then sent, or null.
        sp<ABuffer> apply(const sp<AMessage>& msg);
        // A spare message, or a new one, addressed here and carrying a copy of the bytes.
        sp<AMessage> obtain(uint32_t what, const void* data, uint32_t length);
        void recycle(const sp<AMessage>& msg);

        sp<ALooper> mLooper;
        SerializedManager* mManager;
        VessaManagerService* mService;
        std::mutex mSparesLock;
        std::vector<Spare> mSpares;
        // The blob being applied, kept with its room; only the event thread uses it.
        vessa::PqsProtocol::Blob mBlob;
    };

    VessaManagerService();
    ~VessaManagerService() override;

    int64_t getIntParam(uint32_t code) override;
    void setIntParam(uint32_t code, int64_t value) override;
    int setAupParam(const void* data, uint32_t length) override;
    int getAupParam(const void* in, uint32_t inLength, void* out, uint32_t outLength) override;
    int setParam(uint32_t device, AupParameterId parameterId, const int* values,
                 uint32_t count) override;
    int commitChange() override;
    int getStoredParams(KeyedVector<uint32_t, vessa::AupParamCache*>* params, bool committed,
                        int* count) override;
    std::string getProfileName(int id) override;
    int getAvailableTuningDevicesLen(int port) override;
    void getAvailableTuningDevices(int port, void* buffer, int length) override;
    std::string getSelectedTuningDevice(int port) override;
    void setSelectedTuningDevice(int port, const void* name, int length) override;
    void registerClient(const sp<IPqsCallbacks>& callbacks, int type, uint32_t uid) override;
    void unregisterClient(const sp<IPqsCallbacks>& callbacks, int type, uint32_t uid) override;
    void dump(int fd, const std::vector<std::string>& args) override;
    bool hasDecCP() override;
    bool getAupEnabled() override;
    bool isMobilityProfileSelected() override;
    bool isMonoInternalSpeaker() override;
    bool isSpeakerPortraitMode() override;
    int getVolumeLevelerAount() override;
    int getTuningParamDSA() override;
    int getTuningParamDHSA() override;
    int getTuningParamDFSA() override;
    int getDialogEnhancerAmount() override;
    int getActiveDevice() override;
    int64_t getDefaultXmlFormatVersion() override;
    std::string getSaveError() override;

    // Re-reads the tuning files as a start would (a daemon's SIGHUP) and, when the
    // effect got their values, tells every client with an empty update, as "RLTF"
    // does. -19 before the first registration started the manager.
    int reloadTuningFiles();

    // "Major.Minor.Maintain" as major * 1000000 + minor * 1000 + maintain; -22,
    // with an error line, when it is not three numbers each below 1000.
    static int64_t parseFormatVersion(const std::string& version);

    void removeNotificationClient(uint32_t key);
    // Tells every client that the set of clients changed.
    void sendRegistrationNotice();
    // Sends the bytes to every registered client, one at a time, under the lock.
    void doOnAupParamUpdate(const void* data, uint32_t length);
    void dumpPermissionDenial(int fd);

  protected:
    void onFirstRef() override;

  private:
    static bool isDecoderType(int type) { return type >= 1 && type <= 4; }
    static constexpr int kGameClientType = 7;

    // Logs "<request> SxManager doesn't initialize!" and returns false when not ready.
    bool checkReady(const char* request);
    bool checkPort(const char* request, int port);
    vessa::Port activePort() const;
    int packAndReceiveParam(const void* in, uint32_t inLength, void* out, uint32_t outLength);
    std::string dumpText();

    KeyedVector<uint32_t, sp<NotificationClient>> mClients;
    sp<EventHandler> mEventHandler;
    Mutex mLock;
    std::atomic<int> mDecoderClientCount{0};
    SerializedManager mManager;
    // Set once, under the manager's lock, when init() succeeded; read without it.
    std::atomic<bool> mManagerReady{false};
    std::atomic<int> mActiveDevice{2};
    std::atomic<int> mChannelCount{2};
    std::atomic<int64_t> mLastCodecType{-1};
    std::atomic<int64_t> mLastDeviceQueryTime{-1000};
    std::atomic<int64_t> mGameClientRegistered{0};
    DumpWriter mDumpWriter;
};

}  // namespace android
