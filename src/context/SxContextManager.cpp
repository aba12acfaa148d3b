#define LOG_TAG "SxContextManager"

#include "context/SxContextManager.h"

#include <errno.h>
#include <fcntl.h>
#include <log/log.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <set>
#include <vector>

#include "platform/FileSystemRoot.h"
#include "storage/Provider.h"
#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

ANDROID_SINGLETON_STATIC_INSTANCE(vessa::SxContextManager);

namespace vessa {

namespace {

bool fileExists(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

// Records in the order of their own keys: the parsed sets are ordered by
// address, but profile ids follow the order in which profiles are stored.
template <typename T, typename Key>
std::vector<T*> sortedBy(const std::set<T*>& records, Key key) {
    std::vector<T*> out(records.begin(), records.end());
    std::stable_sort(out.begin(), out.end(), [&](T* a, T* b) { return key(a) < key(b); });
    return out;
}

}  // namespace

const char* const SxContextManager::kDefaultTuningFile =
        "/odm/etc/vessa/multimedia_vessa_zan_default.xml";
const char* const SxContextManager::kOemTuningFile = "/data/vendor/vessa/zan-extra.xml";

SxContextManager::SxContextManager() {
    init();
}

SxContextManager::~SxContextManager() {
    release();
}

void SxContextManager::init() {
    android::Mutex::Autolock guard(mLock);
    initLocked();
}

void SxContextManager::initLocked() {
    std::string path = FileSystemRoot::resolve(kDefaultTuningFile);
    if (!fileExists(path)) {
        ALOGE("Default XML Tuning file doesn't exist!!");
        return;
    }
    mProvider = std::make_unique<Provider>();
    // The start's reads see one state of the file and take its lock once, not once
    // per statement; a refill writes in between.
    mProvider->beginRead();
    loadLocked(path);
    if (mProvider != nullptr) mProvider->endRead();
}

void SxContextManager::loadLocked(const std::string& path) {
    // A locked database is tried again at the next start (startContext).
    if (mProvider->checkDatabase() != 0) {
        mProvider.reset();
        return;
    }
    initDatabase(mProvider.get(), path);
    if (mProvider->init() != 0) return;
    mObservable = std::make_unique<SxContextChangeObservable>();
    mContext = std::make_unique<SxContext>(mProvider.get(), mObservable.get());
    mContext->load();
    // The database now holds everything the parse produced.
    const bool parsed = mParser != nullptr;
    mParser.reset();
    // A fill frees most of what it allocated; hand it back rather than keep it
    // resident for the life of the process.
    if (parsed) malloc_trim(0);
}

SxContext* SxContextManager::getSxContext() {
    android::Mutex::Autolock guard(mLock);
    return mContext.get();
}

SxContext* SxContextManager::startContext() {
    android::Mutex::Autolock guard(mLock);
    if (mContext == nullptr && !mReleased) {
        releaseLocked();
        initLocked();
    }
    return mContext.get();
}

bool SxContextManager::defaultFileChanged() {
    android::Mutex::Autolock guard(mLock);
    return mProvider != nullptr &&
           !getChangedSignature(FileSystemRoot::resolve(kDefaultTuningFile), mProvider.get())
                    .empty();
}

SxContext* SxContextManager::restart() {
    android::Mutex::Autolock guard(mLock);
    releaseLocked();
    initLocked();
    return mContext.get();
}

std::string SxContextManager::getSaveError() {
    android::Mutex::Autolock guard(mLock);
    return mProvider == nullptr ? std::string() : mProvider->getSaveError();
}

int SxContextManager::loadOemTuning() {
    android::Mutex::Autolock guard(mLock);
    int result = loadOemTuningLocked();
    if (result == 0 && mContext != nullptr) mContext->reloadTuning();
    return result;
}

std::string SxContextManager::getDefaultXmlFormatVersion() {
    android::Mutex::Autolock guard(mLock);
    return mProvider == nullptr ? std::string() : mProvider->getDefaultXmlFormatVersion();
}

void SxContextManager::release() {
    android::Mutex::Autolock guard(mLock);
    releaseLocked();
    mReleased = true;
}

void SxContextManager::releaseLocked() {
    mProvider.reset();
    mParser.reset();
    mObservable.reset();
    mContext.reset();
}

int SxContextManager::initDatabase(Provider* provider, const std::string& path) {
    DeviceData* data = loadXmlIfChanged(path, provider);
    if (data == nullptr) return 0;
    data->validateData();
    // One fill: the refill, the OEM merge and the user settings carried over from a
    // damaged database commit together or not at all.
    provider->beginTransaction();
    populateDatabase(data, provider);
    loadOemTuningLocked();
    ALOGI("Load OEM tuning XML after default tuning XML is reloaded");
    provider->restoreUserSettings();
    provider->commitTransaction();
    return 0;
}

std::string SxContextManager::getSignature(const std::string& path) {
    int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return "";
    struct stat st;
    int rc = fstat(fd, &st);
    close(fd);
    if (rc != 0) return "";
    std::string signature = std::to_string(st.st_mtim.tv_sec);
    ALOGD("%s(): XML file time string %s", "getSignature", signature.c_str());
    return signature;
}

std::string SxContextManager::getChangedSignature(const std::string& path, Provider* provider) {
    std::string signature = getSignature(path);
    return signature == provider->getDefaultXmlSignature() ? std::string() : signature;
}

DeviceData* SxContextManager::loadXmlIfChanged(const std::string& path, Provider* provider) {
    std::string signature = getChangedSignature(path, provider);
    if (signature.empty()) return nullptr;
    ALOGD("Tuning XML file has been updated");
    mParser = std::make_unique<TuningFileParser>();
    if (mParser->setTuningFile(path) != 0) {
        ALOGE("XML parses error!!");
        return nullptr;
    }
    DeviceData* data = mParser->getDeviceData();
    data->setSignature(signature);
    return data;
}

void SxContextManager::populateDatabase(DeviceData* data, Provider* provider) {
    provider->beginTransaction();
    provider->clear();
    provider->initDatabase();
    for (IeqPreset* preset : sortedBy(data->getIeqPresets(), [](IeqPreset* p) {
             return static_cast<int>(p->getType());
         })) {
        provider->create(preset);
    }
    for (GeqPreset* preset :
         sortedBy(data->getGeqPresets(), [](GeqPreset* p) { return p->getProfileId(); })) {
        provider->create(preset);
    }
    for (Profile* profile :
         sortedBy(data->getProfiles(), [](Profile* p) { return p->getProfileId(); })) {
        provider->create(profile);
    }
    for (ProfileEndpoint* endpoint : sortedBy(data->getProfileEndpoints(), [](ProfileEndpoint* p) {
             return std::make_pair(p->getProfileId(), static_cast<int>(p->getEndpoint()));
         })) {
        provider->create(endpoint);
    }
    for (Tuning* tuning : data->getTunings()) provider->create(tuning, Provider::kDefaultName);
    for (DeviceTuning* deviceTuning : data->getDeviceTunings()) {
        provider->create(deviceTuning, Provider::kDefaultName);
    }
    for (Port port : SxContext::kSupportedPorts) {
        provider->setDeviceTuning(portName(port), std::string("default_") + portName(port));
    }
    provider->setDefaultXmlSignature(data->getSignature());
    provider->setDefaultXmlFormatVersion(data->getFormatVersion());
    provider->commitTransaction();
}

int SxContextManager::loadOemTuningLocked() {
    if (mProvider == nullptr) return -ENODEV;
    int result = 0;
    std::unique_ptr<TuningFileParser> oemParser = parseOemFile(&result);
    if (oemParser == nullptr) return result;
    DeviceData* oem = oemParser->getDeviceData();
    // The default file's names as the database holds them: the file is not read twice.
    std::set<std::string> defaultTunings, defaultDevices;
    mProvider->readDefaultNames(&defaultTunings, &defaultDevices);
    mProvider->beginTransaction();
    std::set<std::string> accepted = mergeOemTunings(*oem, defaultTunings);
    mergeOemDeviceTunings(*oem, accepted, defaultDevices);
    bool saved = mProvider->commitTransaction();
    ALOGD("Tell database to reload cached device tuning mappings.");
    mProvider->reloadCachedDeviceTunings();
    // Rolled back: the database keeps the previous OEM rows, and so does the effect.
    return saved ? 0 : -EIO;
}

std::unique_ptr<TuningFileParser> SxContextManager::parseOemFile(int* result) {
    std::string oemPath = FileSystemRoot::resolve(kOemTuningFile);
    if (!fileExists(oemPath)) {
        ALOGE("OEM Tuning XML doesn't exist!");
        *result = -ENOENT;
        return nullptr;
    }
    ALOGD("Try to load OEM tuning XML file from %s", oemPath.c_str());
    auto parser = std::make_unique<TuningFileParser>();
    if (parser->setTuningFile(oemPath) != 0 || parser->getDeviceData() == nullptr) {
        ALOGE("OEM Tuning XML parses error!");
        *result = -EINVAL;
        return nullptr;
    }
    DeviceData* oem = parser->getDeviceData();
    ALOGD("OEM tuning XML file completed deviceData = %p", static_cast<void*>(oem));
    std::string oemVersion = oem->getFormatVersion();
    std::string currentVersion = mProvider->getDefaultXmlFormatVersion();
    if (oemVersion != currentVersion) {
        ALOGE("OEM tuning format V=%s is not consistent with current V=%s, abort "
              "loading OEM tuning XML.",
              oemVersion.c_str(), currentVersion.c_str());
        *result = -EINVAL;
        return nullptr;
    }
    return parser;
}

std::set<std::string> SxContextManager::mergeOemTunings(DeviceData& oem,
                                                        const std::set<std::string>& taken) {
    mProvider->clearOemTunings();
    std::set<std::string> accepted;
    ALOGD("Num of parsed OEM tuning = %zu", oem.getTunings().size());
    for (Tuning* tuning : oem.getTunings()) {
        std::string name = tuning->getName();
        if (taken.count(name) != 0) {
            ALOGE("Found OEM tuning [%s] already exists in the default tuning XML, "
                  "drop it.",
                  name.c_str());
            continue;
        }
        ALOGI("Add OEM Tuning %s", name.c_str());
        mProvider->create(tuning, Provider::kOemName);
        accepted.insert(name);
    }
    return accepted;
}

void SxContextManager::mergeOemDeviceTunings(DeviceData& oem,
                                             const std::set<std::string>& acceptedTunings,
                                             const std::set<std::string>& takenDevices) {
    mProvider->clearOemDeviceTunings();
    ALOGD("Num of parsed OEM device tuning = %zu", oem.getDeviceTunings().size());
    for (DeviceTuning* deviceTuning : oem.getDeviceTunings()) {
        std::string device = deviceTuning->getDevice();
        std::string tuningName = deviceTuning->getTuning();
        if (acceptedTunings.count(tuningName) == 0) {
            ALOGE("Drop OEM Device Tuning with tuning.name [%s] (duplicate in "
                  "default xml)",
                  tuningName.c_str());
            continue;
        }
        if (takenDevices.count(device) != 0) {
            ALOGE("Found OEM device ID [%s] already exists in the default tuning "
                  "XML, drop it.",
                  device.c_str());
            continue;
        }
        ALOGI("Add OEM Device Tuning Port[%s] : Device[%s] with tuning.name [%s]",
              deviceTuning->getPort().c_str(), device.c_str(), tuningName.c_str());
        mProvider->create(deviceTuning, Provider::kOemName);
    }
}

}  // namespace vessa
