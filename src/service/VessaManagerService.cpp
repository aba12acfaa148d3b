#define LOG_TAG "VessaManagerService"

#include "service/VessaManagerService.h"

#include <log/log.h>
#include <unistd.h>
#include <utils/SystemClock.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>

#include "effect/AupContext.h"
#include "platform/ABuffer.h"
#include "platform/AupParamStore.h"
#include "platform/LogRepeats.h"
#include "protocol/ClientBuffer.h"
#include "protocol/PqsProtocol.h"
#include "protocol/SettingsTable.h"

namespace android {

namespace {

constexpr const char* kLooperName = "VessaManagerService EventHandler";
constexpr const char* kPresetNames[] = {"off", "detailed", "balanced", "warm"};
using vessa::ClientBuffer;
using vessa::PqsProtocol;
using vessa::SettingsTable;
using vessa::client::IntCode;

// A client failing, or repeating a refused request, again and again must not
// write the log full.
vessa::LogRepeats sRepeats(LOG_TAG, ANDROID_LOG_ERROR);

bool refuseOversized(const char* request, size_t length) {
    if (length <= ClientBuffer::kMaxSize) return false;
    if (sRepeats.admit(std::string(request) + ": over the size limit")) {
        ALOGE("%s: %zu bytes is over the %zu byte limit", request, length, ClientBuffer::kMaxSize);
    }
    return true;
}

int firstOr(const std::vector<int>& values, int fallback) {
    return values.empty() ? fallback : values[0];
}

}  // namespace

// ---- NotificationClient ----

VessaManagerService::NotificationClient::NotificationClient(const sp<VessaManagerService>& service,
                                                            const sp<IPqsCallbacks>& callbacks,
                                                            uint32_t uid, int type)
    : mService(service), mUid(uid), mType(type), mCallbacks(callbacks) {}

void VessaManagerService::NotificationClient::serviceDied(uint64_t, const wp<IPqsCallbacks>&) {
    sp<VessaManagerService> service = mService.promote();
    if (service == nullptr) return;
    service->removeNotificationClient(mUid);
    ALOGE("binderDied : client uid %d", mUid);
}

void VessaManagerService::NotificationClient::onAupParamUpdate(const void* data, uint32_t length) {
    bool wrap = data != nullptr && length != 0;
    const uint8_t* bytes = wrap ? static_cast<const uint8_t*>(data) : nullptr;
    if (!mCallbacks->onAupParamUpdate(bytes, wrap ? length : 0)) {
        char line[48];
        snprintf(line, sizeof(line), "Call client failed on %d", mUid);
        if (sRepeats.admit(line)) ALOGE("%s", line);
    }
}

// ---- EventHandler ----

VessaManagerService::EventHandler::EventHandler(SerializedManager* manager,
                                                VessaManagerService* service)
    : mLooper(new ALooper()), mManager(manager), mService(service) {
    mLooper->setName(kLooperName);
    mSpares.reserve(kMaxSpares);
}

void VessaManagerService::EventHandler::start() {
    mLooper->registerHandler(this);
    mLooper->start();
}

void VessaManagerService::EventHandler::stop() {
    mLooper->unregisterHandler(id());
    mLooper->stop();
}

void VessaManagerService::EventHandler::sendMessage(const void* data, uint32_t length,
                                                    uint32_t what) {
    obtain(what, data, length)->post();
}

void VessaManagerService::EventHandler::sendMessage(const void* data, uint32_t length, int port,
                                                    uint32_t what) {
    sp<AMessage> msg = obtain(what, data, length);
    msg->setInt32("port", port);
    msg->post();
}

sp<AMessage> VessaManagerService::EventHandler::obtain(uint32_t what, const void* data,
                                                       uint32_t length) {
    Spare spare;
    {
        std::lock_guard<std::mutex> lock(mSparesLock);
        if (!mSpares.empty()) {
            spare = std::move(mSpares.back());
            mSpares.pop_back();
        }
    }
    if (spare.msg == nullptr) spare.msg = new AMessage();
    if (spare.buffer == nullptr || spare.buffer->capacity() < length) {
        spare.buffer = new ABuffer(length);
    }
    if (length > 0) memcpy(spare.buffer->base(), data, length);
    spare.buffer->setRange(0, length);
    spare.msg->setWhat(what);
    spare.msg->setTarget(this);
    spare.msg->setBuffer("buffer", spare.buffer);
    return spare.msg;
}

void VessaManagerService::EventHandler::recycle(const sp<AMessage>& msg) {
    Spare spare{msg, nullptr};
    msg->findBuffer("buffer", &spare.buffer);
    msg->clear();
    if (spare.buffer != nullptr && spare.buffer->capacity() > kMaxSpareCapacity) {
        spare.buffer.clear();
    }
    std::lock_guard<std::mutex> lock(mSparesLock);
    if (mSpares.size() < kMaxSpares) mSpares.push_back(std::move(spare));
}

void VessaManagerService::EventHandler::onMessageReceived(const sp<AMessage>& msg) {
    sp<ABuffer> payload;
    // Nothing a request does may end the event thread; the clients still hear of it.
    try {
        payload = apply(msg);
    } catch (const std::exception& e) {
        ALOGE("Applying message 0x%x failed: %s", msg->what(), e.what());
    }
    mService->doOnAupParamUpdate(payload != nullptr ? payload->data() : nullptr,
                                 payload != nullptr ? payload->size() : 0);
    // The clients only borrowed the bytes for their calls, so both can carry the next request.
    recycle(msg);
}

sp<ABuffer> VessaManagerService::EventHandler::apply(const sp<AMessage>& msg) {
    sp<ABuffer> buffer;
    int32_t port = 0;
    switch (msg->what()) {
        case kWhatRegisterClient:
            msg->findBuffer("buffer", &buffer);
            return buffer;
        case kWhatSetTuning:
            if (!msg->findBuffer("buffer", &buffer) || !msg->findInt32("port", &port)) {
                return nullptr;
            }
            mManager->lock()->setSelectedTuning(
                    static_cast<vessa::Port>(port),
                    std::string(reinterpret_cast<const char*>(buffer->data()), buffer->size()));
            return buffer;
        case kWhatSetParam:
            if (msg->findBuffer("buffer", &buffer)) {
                parseAndSendParam(buffer->data(), buffer->size());
            }
            return buffer;
        default:
            return nullptr;
    }
}

void VessaManagerService::EventHandler::parseAndSendParam(void* data, uint32_t length) {
    PqsProtocol::readBlob(data, length, &mBlob);
    const PqsProtocol::Blob& blob = mBlob;
    int32_t answer = 0;
    bool answered = true;
    // One access for the whole blob: readers never see half of a command.
    SerializedManager::Access manager = mManager->lock();
    switch (blob.command) {
        case PqsProtocol::kOnOff:
            answer = blob.values[0];
            manager->setSxOn(answer > 0);
            manager->saveSxState();
            break;
        case PqsProtocol::kSetParameter:
            manager->setParameter(blob.profile, blob.id, blob.values);
            answered = false;
            break;
        case PqsProtocol::kSetPortParameter:
            manager->setProfilePortParameter(blob.profile, blob.port, blob.id, blob.values);
            answered = false;
            break;
        case PqsProtocol::kSelectProfile:
            answer = blob.profile;
            if (manager->setSelectedProfile(answer) && manager->getSelectedProfile() == answer) {
                manager->saveSxProfile();
            }
            break;
        case PqsProtocol::kResetProfile:
            answer = blob.profile;
            manager->resetProfile(answer);
            break;
        default:
            answered = false;
            break;
    }
    // The answer slot carries the applied value back to the clients.
    if (answered) PqsProtocol::writeAnswer(data, length, answer);
}

// ---- VessaManagerService ----

VessaManagerService::VessaManagerService() = default;

void VessaManagerService::onFirstRef() {
    ALOGI("%s ", "onFirstRef");
    mEventHandler = new EventHandler(&mManager, this);
    mEventHandler->start();
}

VessaManagerService::~VessaManagerService() {
    ALOGI("%s ", "~VessaManagerService");
    if (mManagerReady) mManager.lock()->saveSxStateAndSettings();
    if (mEventHandler != nullptr) mEventHandler->stop();
}

bool VessaManagerService::checkReady(const char* request) {
    if (mManagerReady) return true;
    ALOGE("%s SxManager doesn't initialize!", request);
    return false;
}

bool VessaManagerService::checkPort(const char* request, int port) {
    if (static_cast<unsigned int>(port) < static_cast<unsigned int>(vessa::kNumPortNames)) {
        return true;
    }
    ALOGE("%s invalid port number, %d", request, port);
    return false;
}

vessa::Port VessaManagerService::activePort() const {
    const auto& ports = vessa::AupContext::kPortForDevice;
    auto it = ports.find(static_cast<vessa::AndroidDevice>(mActiveDevice.load()));
    return it == ports.end() ? vessa::Port::OTHER : it->second;
}

int64_t VessaManagerService::getIntParam(uint32_t code) {
    switch (static_cast<IntCode>(code)) {
        case IntCode::ACTIVE_DEVICE:
            return getActiveDevice();
        case IntCode::MOBILITY_PROFILE:
            return isMobilityProfileSelected() ? 1 : 0;
        case IntCode::CHANNEL_COUNT:
            return mChannelCount;
        case IntCode::EFFECT_ON:
            return getAupEnabled() ? 1 : 0;
        case IntCode::DECODER_CLIENT:
            return hasDecCP() ? 1 : 0;
        case IntCode::SURROUND_SPEAKER_ANGLE:
            return getTuningParamDSA();
        case IntCode::DIALOG_ENHANCER_AMOUNT:
            return getDialogEnhancerAmount();
        case IntCode::FRONT_SPEAKER_ANGLE:
            return getTuningParamDFSA();
        case IntCode::HEIGHT_SPEAKER_ANGLE:
            return getTuningParamDHSA();
        case IntCode::FORMAT_VERSION:
            return getDefaultXmlFormatVersion();
        case IntCode::VOLUME_LEVELER_AMOUNT:
            return getVolumeLevelerAount();
        case IntCode::GAME_CLIENT:
            return mGameClientRegistered;
        case IntCode::LAST_DECODER_TYPE:
            return mLastCodecType;
        case IntCode::LAST_DEVICE_QUERY:
            return mLastDeviceQueryTime;
        case IntCode::MONO_SPEAKER:
            return isMonoInternalSpeaker() ? 1 : 0;
        case IntCode::SPEAKER_PORTRAIT:
            return isSpeakerPortraitMode() ? 1 : 0;
        default:
            return -1;
    }
}

void VessaManagerService::setIntParam(uint32_t code, int64_t) {
    if (static_cast<IntCode>(code) != IntCode::RELOAD_TUNING) return;
    ALOGD("Notify clients that AUP params changed after reload tuning file.");
    // Reloaded under the manager's lock; clients are told after it is released.
    int result = mManager.lock()->reloadTuningXml();
    if (result == 0) doOnAupParamUpdate(nullptr, 0);
}

int VessaManagerService::reloadTuningFiles() {
    if (!mManagerReady) return -ENODEV;
    ALOGI("Reloading the tuning files.");
    int result;
    {
        SerializedManager::Access manager = mManager.lock();
        result = manager->reloadTuningFiles();
        // A start that failed leaves no context: answer as before the first client, and
        // let the next registration start again.
        if (result == -ENODEV) mManagerReady = false;
    }
    if (result == 0) doOnAupParamUpdate(nullptr, 0);
    return result;
}

std::string VessaManagerService::getSaveError() {
    return mManager.lock()->getSaveError();
}

int VessaManagerService::setAupParam(const void* data, uint32_t length) {
    if (!mManagerReady) return -ENODEV;
    if (refuseOversized("setAupParam", length)) return -EINVAL;
    mEventHandler->sendMessage(data, data == nullptr ? 0 : length, kWhatSetParam);
    return 0;
}

int VessaManagerService::getAupParam(const void* in, uint32_t inLength, void* out,
                                     uint32_t outLength) {
    if (!mManagerReady) return -ENODEV;
    if (refuseOversized("getAupParam", inLength) || refuseOversized("getAupParam", outLength)) {
        return -EINVAL;
    }
    return packAndReceiveParam(in, inLength, out, outLength);
}

int VessaManagerService::packAndReceiveParam(const void* in, uint32_t inLength, void* out,
                                             uint32_t outLength) {
    if (inLength < 4) {
        ALOGE("%s : Invalid input length!", "packAndReceiveParam");
    }
    PqsProtocol::Query query = PqsProtocol::readQuery(in, inLength);
    std::vector<int> values;
    bool oneWord = true;
    SerializedManager::Access manager = mManager.lock();
    switch (query.command) {
        case PqsProtocol::kQueryOnOff:
            values = {manager->getSxOn() ? 1 : 0};
            break;
        case PqsProtocol::kQueryParameter:
            values = manager->getParameter(query.profile, query.id);
            oneWord = false;
            break;
        case PqsProtocol::kQueryPortParameter:
            values = manager->getProfilePortParameter(query.profile, query.port, query.id);
            oneWord = false;
            break;
        case PqsProtocol::kQueryProfileCount:
            values = {manager->getNumOfProfiles()};
            break;
        case PqsProtocol::kQuerySelectedProfile:
            values = {manager->getSelectedProfile()};
            break;
        case PqsProtocol::kQueryProfileModified:
            values = {manager->isProfileModified(query.profile) ? 1 : 0};
            break;
        case PqsProtocol::kQueryMonoSpeaker:
            values = {manager->isMonoInternalSpeaker() ? 1 : 0};
            break;
        default:
            return 0;
    }
    size_t bytes = values.size() * sizeof(int);
    if (out == nullptr || bytes > outLength) {
        // One-word answers are not checked against the length by the protocol,
        // but nothing may be written outside the client's buffer.
        if (!oneWord) {
            ALOGE("%s : Invalid output length, not enough buffer!", "packAndReceiveParam");
        }
        return 0;
    }
    if (bytes > 0) memcpy(out, values.data(), bytes);
    return 0;
}

int VessaManagerService::setParam(uint32_t device, AupParameterId parameterId, const int* values,
                                  uint32_t count) {
    // The store bounds the count itself, with an error line.
    int bounded = static_cast<int>(std::min<uint32_t>(count, INT_MAX));
    return vessa::AupParamStore::getInstance().setParam(device, parameterId, values, bounded);
}

int VessaManagerService::commitChange() {
    return vessa::AupParamStore::getInstance().commitChange();
}

int VessaManagerService::getStoredParams(KeyedVector<uint32_t, vessa::AupParamCache*>* params,
                                         bool committed, int* count) {
    return vessa::AupParamStore::getInstance().getStoredParams(params, committed, count);
}

std::string VessaManagerService::getProfileName(int id) {
    if (!checkReady("getProfileName")) return "";
    // An id equal to the count passes here and is refused by the manager.
    SerializedManager::Access manager = mManager.lock();
    if (id < 0 || id > manager->getNumOfProfiles()) return "";
    return manager->getProfileName(id);
}

int VessaManagerService::getAvailableTuningDevicesLen(int port) {
    if (!checkReady("getAvailableTuningDevicesLen")) return 0;
    if (!checkPort("getAvailableTuningDevicesLen", port)) return 0;
    return mManager.lock()->getAvailableTuningDevicesLen(static_cast<vessa::Port>(port));
}

void VessaManagerService::getAvailableTuningDevices(int port, void* buffer, int length) {
    if (!checkReady("getAvailableTuningDevices")) return;
    if (!checkPort("getAvailableTuningDevices", port)) return;
    vessa::Port p = static_cast<vessa::Port>(port);
    SerializedManager::Access manager = mManager.lock();
    if (buffer == nullptr || length < 0 || manager->getAvailableTuningDevicesLen(p) > length) {
        ALOGE("%s not enough buffer for transferring device name lists for port %d",
              "getAvailableTuningDevices", port);
        return;
    }
    char* out = static_cast<char*>(buffer);
    memset(out, ' ', static_cast<size_t>(length));
    for (const std::string& device : manager->getAvailableTuningDevices(p)) {
        memcpy(out, device.data(), device.size());
        out += device.size() + 1;
    }
}

std::string VessaManagerService::getSelectedTuningDevice(int port) {
    if (!checkReady("getSelectedTuningDevice")) return "";
    if (!checkPort("getSelectedTuningDevice", port)) return "";
    return mManager.lock()->getSelectedTuningName(static_cast<vessa::Port>(port));
}

void VessaManagerService::setSelectedTuningDevice(int port, const void* name, int length) {
    if (!checkReady("setSelectedTuningDevice")) return;
    if (!checkPort("setSelectedTuningDevice", port)) return;
    if (length < 0 || refuseOversized("setSelectedTuningDevice", static_cast<size_t>(length))) {
        return;
    }
    mEventHandler->sendMessage(name, name == nullptr ? 0 : static_cast<uint32_t>(length), port,
                               kWhatSetTuning);
}

void VessaManagerService::registerClient(const sp<IPqsCallbacks>& callbacks, int type,
                                         uint32_t uid) {
    if (callbacks == nullptr) {
        ALOGW("%s got NULL client", "registerClient");
        return;
    }
    {
        // Under the manager's lock: two first registrations at once initialise once.
        SerializedManager::Access manager = mManager.lock();
        if (!mManagerReady && manager->init() == 0) mManagerReady = true;
    }
    ALOGD("%s(type = %d, uid = %u) entry", "registerClient", type, uid);
    Mutex::Autolock guard(mLock);
    uint32_t key = uid + static_cast<uint32_t>(type);
    if (mClients.indexOfKey(key) < 0) {
        sp<NotificationClient> client = new NotificationClient(this, callbacks, key, type);
        mClients.add(key, client);
        callbacks->linkToDeath(client, 0);
        ALOGV("registerClient() client %p, uid %d", static_cast<void*>(client.get()), key);
        if (isDecoderType(type)) ++mDecoderClientCount;
    } else {
        ALOGW("register uid already existing 0x%x", key);
    }
    sendRegistrationNotice();
    if (isDecoderType(type)) {
        mLastCodecType = type;
        ALOGD("Last registered codec type is %d", type);
    } else if (type == kGameClientType) {
        mGameClientRegistered = 1;
        ALOGD("Game AUP registered");
    }
    ALOGD("%s(type = %d, uid = %u) exit", "registerClient", type, uid);
}

void VessaManagerService::unregisterClient(const sp<IPqsCallbacks>& callbacks, int type,
                                           uint32_t uid) {
    ALOGD("%s(type = %d, uid = %u) entry", "unregisterClient", type, uid);
    Mutex::Autolock guard(mLock);
    uint32_t key = uid + static_cast<uint32_t>(type);
    ssize_t index = mClients.indexOfKey(key);
    if (index < 0) {
        ALOGE("unregisterClient() client %p, uid %d does not exist in Vessa Server",
              static_cast<void*>(callbacks.get()), key);
        return;
    }
    sp<NotificationClient> client = mClients.valueAt(index);
    if (isDecoderType(client->type())) --mDecoderClientCount;
    client->callbacks()->unlinkToDeath(client);
    mClients.removeItemsAt(index);
    if (client->type() == kGameClientType) {
        int64_t stillThere = 0;
        for (size_t i = 0; i < mClients.size(); ++i) {
            if (mClients.valueAt(i)->type() == kGameClientType) stillThere = 1;
        }
        mGameClientRegistered = stillThere;
        ALOGD("Game AUP registered status: %d", static_cast<int>(stillThere));
    }
    // An ordinary (user-interface) client leaving persists the whole state.
    if (mManagerReady && !isDecoderType(client->type()) && client->type() != kGameClientType) {
        mManager.lock()->saveSxStateAndSettings();
    }
    sendRegistrationNotice();
    ALOGD("%s(type = %d, uid = %u) exit", "unregisterClient", type, uid);
}

void VessaManagerService::sendRegistrationNotice() {
    static const PqsProtocol::Bytes kNotice = PqsProtocol::registrationNotice();
    mEventHandler->sendMessage(kNotice.data(), static_cast<uint32_t>(kNotice.size()),
                               kWhatRegisterClient);
}

void VessaManagerService::removeNotificationClient(uint32_t key) {
    ALOGD("%s(uid = %u) entry", "removeNotificationClient", key);
    {
        Mutex::Autolock guard(mLock);
        ssize_t index = mClients.indexOfKey(key);
        if (index >= 0) {
            if (isDecoderType(mClients.valueAt(index)->type())) --mDecoderClientCount;
            mClients.removeItemsAt(index);
        }
    }
    ALOGD("%s(uid = %u) exit", "removeNotificationClient", key);
}

void VessaManagerService::doOnAupParamUpdate(const void* data, uint32_t length) {
    ALOGV("%s() entry", "doOnAupParamUpdate");
    {
        Mutex::Autolock guard(mLock);
        for (size_t i = 0; i < mClients.size(); ++i) {
            mClients.valueAt(i)->onAupParamUpdate(data, length);
        }
    }
    ALOGV("%s() exit", "doOnAupParamUpdate");
}

bool VessaManagerService::hasDecCP() {
    return mDecoderClientCount != 0;
}

bool VessaManagerService::getAupEnabled() {
    return mManagerReady && mManager.lock()->getSxOn();
}

bool VessaManagerService::isMobilityProfileSelected() {
    return mManagerReady && mManager.lock()->isMobilityProfileSelected();
}

bool VessaManagerService::isMonoInternalSpeaker() {
    return mManagerReady && mManager.lock()->isMonoInternalSpeaker();
}

bool VessaManagerService::isSpeakerPortraitMode() {
    return mManagerReady && mManager.lock()->isSpeakerPortraitMode();
}

int VessaManagerService::getVolumeLevelerAount() {
    return mManagerReady ? mManager.lock()->getVolumeLevelerAount(activePort()) : 0;
}

int VessaManagerService::getTuningParamDSA() {
    return mManagerReady ? mManager.lock()->getTuningParamDSA(activePort()) : -1;
}

int VessaManagerService::getTuningParamDHSA() {
    return mManagerReady ? mManager.lock()->getTuningParamDHSA(activePort()) : -1;
}

int VessaManagerService::getTuningParamDFSA() {
    return mManagerReady ? mManager.lock()->getTuningParamDFSA(activePort()) : -1;
}

int VessaManagerService::getDialogEnhancerAmount() {
    if (!mManagerReady) return -1;
    SerializedManager::Access manager = mManager.lock();
    int profile = manager->getSelectedProfile();
    int port = static_cast<int>(activePort());
    std::vector<int> enable =
            manager->getProfilePortParameter(profile, port, SettingsTable::kDialogEnhancer);
    std::vector<int> amount =
            manager->getProfilePortParameter(profile, port, SettingsTable::kDialogEnhancerAmount);
    if (enable.empty() || amount.empty()) return -1;
    return enable[0] != 0 ? amount[0] : 0;
}

int VessaManagerService::getActiveDevice() {
    mLastDeviceQueryTime = uptimeMillis();
    return mActiveDevice;
}

int64_t VessaManagerService::getDefaultXmlFormatVersion() {
    if (!mManagerReady) return -ENODEV;
    return parseFormatVersion(mManager.lock()->getDefaultXmlFormatVersion());
}

// Parts are read digit by digit and saturate at INT_MAX: a part too long for
// any integer is simply too large, never an overflow.
int64_t VessaManagerService::parseFormatVersion(const std::string& version) {
    int parts[3] = {0, 0, 0};
    size_t part = 0;
    bool digits = false;
    bool wellFormed = true;
    for (char c : version) {
        if (c == '.' && digits && part < 2) {
            ++part;
            digits = false;
        } else if (c >= '0' && c <= '9') {
            int digit = c - '0';
            parts[part] = parts[part] > (INT_MAX - digit) / 10 ? INT_MAX : parts[part] * 10 + digit;
            digits = true;
        } else {
            wellFormed = false;
            break;
        }
    }
    if (!wellFormed || part != 2 || !digits) {
        ALOGE("XML version %s is not in Major.Minor.Maintain format!", version.c_str());
        return -EINVAL;
    }
    for (int value : parts) {
        if (value >= 1000) {
            ALOGE("XML version %d.%d.%d is invalid!\n", parts[0], parts[1], parts[2]);
            return -EINVAL;
        }
    }
    return parts[0] * 1000000LL + parts[1] * 1000LL + parts[2];
}

std::string VessaManagerService::dumpText() {
    std::string text = "VessaManagerService Information dump:\n";
    char line[256];
    auto append = [&](const char* format, auto... args) {
        memset(line, 0, sizeof(line));
        snprintf(line, sizeof(line), format, args...);
        text += line;
    };
    SerializedManager::Access manager = mManager.lock();
    int profile = manager->getSelectedProfile();
    int preset = firstOr(manager->getParameter(profile, SettingsTable::kIeqPreset), 0);
    if (preset < 0 || preset > 3) preset = 0;
    int dialogEnhancer = firstOr(manager->getParameter(profile, SettingsTable::kDialogEnhancer), 0);
    append("ZAN Status : %s\n", manager->getSxOn() ? "on" : "off");
    append("Profile ID : %d\n", profile);
    append("Profile IEQ Preset : %s\n", kPresetNames[preset]);
    append("Dialog Enhance state : %s\n", dialogEnhancer != 0 ? "on" : "off");
    append("Is Mono Speaker : %s\n", manager->isMonoInternalSpeaker() ? "true" : "false");
    return text;
}

// The text is built under the manager's lock; the write happens after, and
// never waits on the reader (see DumpWriter).
void VessaManagerService::dump(int fd, const std::vector<std::string>&) {
    mDumpWriter.write(fd, dumpText());
}

void VessaManagerService::dumpPermissionDenial(int fd) {
    char line[256] = {};
    snprintf(line, sizeof(line),
             "Permission Denial: can't dump VessaManagerService from pid=%d, uid=%d\n", getpid(),
             static_cast<int>(getuid()));
    if (write(fd, line, strlen(line)) < 0) return;
}

}  // namespace android
