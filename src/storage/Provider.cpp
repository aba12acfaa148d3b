#define LOG_TAG "VsaDatabaseProvider"

#include "storage/Provider.h"

#include <log/log.h>
#include <utils/Errors.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <iterator>

#include "model/StringUtils.h"
#include "storage/DatabaseHelper.h"

namespace vessa {

const std::string Provider::kDefaultName = "default";
const std::string Provider::kOemName = "oem";
const std::string Provider::kCustomName = "custom";
const std::string Provider::kSignature = "signature";
const std::string Provider::kFormatVersion = "version";
const std::string Provider::kSelectedProfile = "Profile";
const std::string Provider::kAupState = "State";

Provider::Provider() : mDatabase(std::make_unique<DatabaseHelper>(kDatabaseName)) {}

Provider::~Provider() {
    releaseRecords();
    releaseDeviceTunings(false);
    for (Tuning* tuning : mTunings) delete tuning;
    mTunings.clear();
}

void Provider::releaseRecords() {
    for (auto* copies : {&mDefaults, &mCustoms}) {
        for (ProfileCopy& copy : *copies) {
            delete copy.profile;
            for (ProfileEndpoint* endpoint : copy.endpoints) delete endpoint;
            delete copy.geqPreset;
        }
        copies->clear();
    }
    for (ProfileEndpoint* slot : mProfileEndpointSlots) delete slot;
    mProfileEndpointSlots.clear();
    for (IeqPreset*& preset : mIeqPresets) {
        delete preset;
        preset = nullptr;
    }
    std::fill(std::begin(mIeqPresetLoaded), std::end(mIeqPresetLoaded), false);
    mNumOfProfiles = 0;
}

int Provider::init() {
    releaseRecords();
    std::vector<std::string> names;
    mDatabase->queryProfileNames(names, kDefaultName);
    if (names.empty()) {
        ALOGE("%s(): No profiles found from the database", "init");
        return android::NO_INIT;
    }
    mNumOfProfiles = static_cast<int>(names.size());
    ALOGD("%s(): Altogether %d profiles found", "init", mNumOfProfiles);
    mDefaults.resize(mNumOfProfiles);
    mCustoms.resize(mNumOfProfiles);
    mProfileEndpointSlots.assign(mNumOfProfiles, nullptr);
    for (int id = 0; id < mNumOfProfiles; ++id) {
        for (auto* copies : {&mDefaults, &mCustoms}) {
            ProfileCopy& copy = (*copies)[id];
            copy.profile = new Profile(id, names[id], false);
            for (int e = 0; e < kNumEndpoints; ++e) {
                copy.endpoints.insert(
                        new ProfileEndpoint(id, static_cast<Endpoint>(e), PresetType::OFF));
            }
            copy.geqPreset = new GeqPreset(id);
        }
    }
    for (int t = 0; t < kNumPresetTypes; ++t) mIeqPresets[t] = new IeqPreset(PresetType(t));
    readEveryCopy();
    return 0;
}

Provider::ProfileCopy* Provider::copyOf(int id, const char* origin) {
    if (id < 0 || id >= mNumOfProfiles) return nullptr;
    if (kDefaultName == origin) return &mDefaults[id];
    if (kCustomName == origin) return &mCustoms[id];
    return nullptr;
}

// The rows come newest first: a record takes the first row that is its own, the
// one a query of that record alone would read. A record without a row is left to
// its load, which reads it (and reports it missing) as before.
void Provider::readEveryCopy() {
    mDatabase->queryEveryProfile([this](int id, Endpoint, const char* origin) -> Profile* {
        ProfileCopy* copy = copyOf(id, origin);
        if (copy == nullptr || copy->profileRead) return nullptr;
        copy->profileRead = true;
        return copy->profile;
    });
    mDatabase->queryEveryEndpoint(
            [this](int id, Endpoint endpoint, const char* origin) -> ProfileEndpoint* {
                ProfileCopy* copy = copyOf(id, origin);
                const unsigned bit = 1u << static_cast<unsigned>(endpoint);
                if (copy == nullptr || (copy->endpointsRead & bit) != 0) return nullptr;
                for (ProfileEndpoint* record : copy->endpoints) {
                    if (record->getEndpoint() != endpoint) continue;
                    copy->endpointsRead |= bit;
                    return record;
                }
                return nullptr;
            });
    mDatabase->queryEveryGeqPreset([this](int id, Endpoint, const char* origin) -> GeqPreset* {
        ProfileCopy* copy = copyOf(id, origin);
        if (copy == nullptr || copy->geqRead) return nullptr;
        copy->geqRead = true;
        return copy->geqPreset;
    });
    // The factory IEQ presets are read once in any case (see loadIeqPreset).
    mDatabase->queryEveryIeqPreset([this](PresetType type, const char* origin) -> IeqPreset* {
        const int index = static_cast<int>(type);
        if (kDefaultName != origin || index < 0 || index >= kNumPresetTypes ||
            mIeqPresetLoaded[index]) {
            return nullptr;
        }
        mIeqPresetLoaded[index] = true;
        return mIeqPresets[index];
    });
}

void Provider::readDefaultNames(std::set<std::string>* tunings, std::set<std::string>* devices) {
    mDatabase->queryColumn(TableType::TUNINGS, "name", kDefaultName, *tunings);
    mDatabase->queryColumn(TableType::DEVICE_TUNINGS, "device", kDefaultName, *devices);
}

void Provider::beginRead() {
    mDatabase->beginRead();
}

void Provider::endRead() {
    mDatabase->endRead();
}

namespace {

// "20261123T061500Z": sorts by time, and fits a file name.
std::string utcStamp() {
    char stamp[32];
    time_t now = time(nullptr);
    struct tm utc;
    gmtime_r(&now, &utc);
    strftime(stamp, sizeof(stamp), "%Y%m%dT%H%M%SZ", &utc);
    return stamp;
}

}  // namespace

int Provider::checkDatabase() {
    std::string reason;
    switch (mDatabase->checkHealth(&reason)) {
        case DatabaseHelper::Health::kLocked:
            ALOGE("%s is locked (%s); trying again later", mDatabase->getPath().c_str(),
                  reason.c_str());
            return android::NO_INIT;
        case DatabaseHelper::Health::kUsable:
            mDatabase->restoreMissingCustomRows();
            return 0;
        case DatabaseHelper::Health::kDamaged:
            break;
    }
    const std::string path = mDatabase->getPath();
    std::string aside = std::string(kDatabaseName) + ".damaged-" + utcStamp();
    const std::string directory = path.substr(0, path.size() - strlen(kDatabaseName));
    // Never over an earlier damaged file of the same second.
    std::error_code ec;
    for (int n = 2; std::filesystem::exists(directory + aside, ec); ++n) {
        aside = std::string(kDatabaseName) + ".damaged-" + utcStamp() + "-" + std::to_string(n);
    }
    const std::string asidePath = directory + aside;
    mDatabase.reset();
    // The journal belongs to the file it was written for: left behind, SQLite would
    // play it back into the new database.
    for (const char* suffix : {"-journal", "-wal", "-shm"}) {
        std::filesystem::rename(path + suffix, asidePath + suffix, ec);
    }
    std::filesystem::rename(path, asidePath, ec);
    if (ec) {
        ALOGE("Settings database %s cannot be used (%s) nor moved aside: %s", path.c_str(),
              reason.c_str(), ec.message().c_str());
        mDatabase = std::make_unique<DatabaseHelper>(kDatabaseName);
        return 0;
    }
    mSalvage = std::make_unique<DatabaseHelper::UserSettings>();
    {
        DatabaseHelper damaged(aside, true);
        damaged.readUserSettings(mSalvage.get());
    }
    mDatabase = std::make_unique<DatabaseHelper>(kDatabaseName);
    ALOGE("Settings database %s cannot be used (%s): moved aside as %s, rebuilding "
          "it from the tuning files with the user's settings that can be read",
          path.c_str(), reason.c_str(), asidePath.c_str());
    return 0;
}

void Provider::restoreUserSettings() {
    if (mSalvage == nullptr) return;
    int carried = mDatabase->writeUserSettings(*mSalvage);
    ALOGI("Carried %d of the user's settings over", carried);
    mSalvage.reset();
}

std::string Provider::getSaveError() const {
    return mDatabase->getSaveError();
}

bool Provider::validProfile(int id, const char* caller) const {
    if (id >= 0 && id < mNumOfProfiles) return true;
    ALOGE("%s(): Invalid profile id %d", caller, id);
    return false;
}

// ---- configuration ----

int Provider::getSelectedProfile() {
    std::vector<int> value;
    string2IntVector(mDatabase->querySelectedProfile(kSelectedProfile), value);
    return value.empty() ? -1 : value.front();
}

int Provider::getNumOfProfiles() {
    return mNumOfProfiles;
}

bool Provider::isAupOn() {
    return mDatabase->queryAupStatus(kAupState);
}

void Provider::setAupOn(bool on) {
    mDatabase->updateAupStatus(kAupState, on);
}

void Provider::setSelectedProfile(int id) {
    mDatabase->updateSelectedProfile(kSelectedProfile, int2String(id));
}

void Provider::setDefaultXmlSignature(const std::string& signature) {
    mDatabase->insertConfigurationValue(kSignature, signature);
    mDatabase->insertConfigurationValue(kSelectedProfile, "0");
    mDatabase->insertConfigurationValue(kAupState, "true");
}

std::string Provider::getDefaultXmlSignature() {
    return mDatabase->queryConfigurationValue(kSignature);
}

void Provider::setDefaultXmlFormatVersion(const std::string& version) {
    mDatabase->insertConfigurationValue(kFormatVersion, version);
}

std::string Provider::getDefaultXmlFormatVersion() {
    return mDatabase->queryConfigurationValue(kFormatVersion);
}

void Provider::setDeviceTuning(const std::string& key, const std::string& device) {
    mDatabase->insertConfigurationValue(key, device);
}

std::string Provider::getDeviceTuning(const std::string& key) {
    return mDatabase->queryConfigurationValue(key);
}

void Provider::updateDeviceTuning(const std::string& key, const std::string& device) {
    mDatabase->updateTuningDevice(key, device);
}

// ---- records ----

Profile* Provider::loadProfileCopy(int id, ProfileCopy& copy, const std::string& origin) {
    if (!copy.profileRead) mDatabase->queryProfileValue(int2String(id), origin, copy.profile);
    copy.profileRead = false;
    return copy.profile;
}

ProfileEndpointSet Provider::loadEndpointCopies(int id, ProfileCopy& copy,
                                                const std::string& origin) {
    for (ProfileEndpoint* endpoint : copy.endpoints) {
        const unsigned bit = 1u << static_cast<unsigned>(endpoint->getEndpoint());
        if ((copy.endpointsRead & bit) != 0) continue;
        mDatabase->queryEndpointValue(int2String(id), endpointName(endpoint->getEndpoint()), origin,
                                      endpoint);
    }
    copy.endpointsRead = 0;
    return copy.endpoints;
}

GeqPreset* Provider::loadGeqCopy(int id, ProfileCopy& copy, const std::string& origin) {
    if (!copy.geqRead) mDatabase->queryGeqValue(int2String(id), origin, copy.geqPreset);
    copy.geqRead = false;
    return copy.geqPreset;
}

Profile* Provider::loadDefaultProfile(int id) {
    if (!validProfile(id, "loadDefaultProfile")) return nullptr;
    return loadProfileCopy(id, mDefaults[id], kDefaultName);
}

Profile* Provider::loadProfile(int id) {
    if (!validProfile(id, "loadProfile")) return nullptr;
    return loadProfileCopy(id, mCustoms[id], kCustomName);
}

ProfileEndpointSet Provider::loadDefaultProfileEndpoints(int id) {
    if (!validProfile(id, "loadDefaultProfileEndpoints")) return {};
    return loadEndpointCopies(id, mDefaults[id], kDefaultName);
}

ProfileEndpointSet Provider::loadProfileEndpoints(int id) {
    if (!validProfile(id, "loadProfileEndpoints")) return {};
    return loadEndpointCopies(id, mCustoms[id], kCustomName);
}

GeqPreset* Provider::loadDefaultGeqPreset(int id) {
    if (!validProfile(id, "loadDefaultGeqPreset")) return nullptr;
    return loadGeqCopy(id, mDefaults[id], kDefaultName);
}

GeqPreset* Provider::loadGeqPreset(int id) {
    if (!validProfile(id, "loadGeqPreset")) return nullptr;
    return loadGeqCopy(id, mCustoms[id], kCustomName);
}

ProfileEndpoint* Provider::loadProfileEndpoint(int id, Endpoint endpoint) {
    if (!validProfile(id, "loadProfileEndpoint")) return nullptr;
    ProfileEndpoint*& slot = mProfileEndpointSlots[id];
    // A fresh shell each time, so a missing row cannot leave another endpoint's values.
    if (slot == nullptr) {
        slot = new ProfileEndpoint(id, endpoint, PresetType::OFF);
    } else {
        *slot = ProfileEndpoint(id, endpoint, PresetType::OFF);
    }
    mDatabase->queryEndpointValue(int2String(id), endpointName(endpoint), kCustomName, slot);
    return slot;
}

IeqPreset* Provider::loadIeqPreset(PresetType type) {
    int index = static_cast<int>(type);
    if (index < 0 || index >= kNumPresetTypes || mIeqPresets[index] == nullptr) {
        ALOGE("%s(): No IEQ preset %d", "loadIeqPreset", index);
        return nullptr;
    }
    // Factory rows, written only by a fill before init(): read once, so that a
    // read of the selected preset never rewrites a record another thread holds.
    if (!mIeqPresetLoaded[index]) {
        mDatabase->queryIeqValue(presetTypeName(type), kDefaultName, mIeqPresets[index]);
        mIeqPresetLoaded[index] = true;
    }
    return mIeqPresets[index];
}

void Provider::save(Profile* profile) {
    mDatabase->updateProfileValue(profile, kCustomName);
}

void Provider::save(ProfileEndpoint* endpoint) {
    mDatabase->updateProfileEndpointValue(endpoint, kCustomName);
}

void Provider::save(GeqPreset* preset) {
    mDatabase->updateGeqValue(preset, kCustomName);
}

Profile* Provider::reset(Profile* profile) {
    if (profile != nullptr) {
        mDatabase->queryProfileValue(int2String(profile->getProfileId()), kDefaultName, profile);
    }
    return profile;
}

ProfileEndpoint* Provider::reset(ProfileEndpoint* endpoint) {
    if (endpoint != nullptr) {
        mDatabase->queryEndpointValue(int2String(endpoint->getProfileId()),
                                      endpointName(endpoint->getEndpoint()), kDefaultName,
                                      endpoint);
    }
    return endpoint;
}

GeqPreset* Provider::reset(GeqPreset* preset) {
    if (preset != nullptr) {
        mDatabase->queryGeqValue(int2String(preset->getProfileId()), kDefaultName, preset);
    }
    return preset;
}

void Provider::create(IeqPreset* preset) {
    mDatabase->insertValue(preset, kDefaultName);
}

void Provider::create(GeqPreset* preset) {
    if (preset == nullptr) return;
    mDatabase->insertValue(preset, kDefaultName, preset->getId());
    mDatabase->insertValue(preset, kCustomName, preset->getId());
}

void Provider::create(Profile* profile) {
    if (profile == nullptr) return;
    mDatabase->insertValue(profile, kDefaultName, profile->getId());
    mDatabase->insertValue(profile, kCustomName, profile->getId());
}

void Provider::create(ProfileEndpoint* endpoint) {
    if (endpoint == nullptr) return;
    mDatabase->insertValue(endpoint, kDefaultName, endpoint->getId());
    mDatabase->insertValue(endpoint, kCustomName, endpoint->getId());
}

void Provider::create(Tuning* tuning, const std::string& origin) {
    mDatabase->insertValue(tuning, origin);
}

void Provider::create(DeviceTuning* deviceTuning, const std::string& origin) {
    mDatabase->insertValue(deviceTuning, origin);
}

void Provider::initDatabase() {
    mDatabase->init();
}

void Provider::clearOemTunings() {
    mDatabase->clearOemTunings();
}

void Provider::clearOemDeviceTunings() {
    mDatabase->clearOemDeviceTunings();
}

void Provider::clear() {
    mDatabase->clear();
}

void Provider::beginTransaction() {
    mDatabase->beginTransaction();
}

bool Provider::commitTransaction() {
    return mDatabase->commitTransaction();
}

// ---- tuning caches ----

DeviceTuningSet Provider::loadDeviceTuningsForPort(Port port) {
    DeviceTuningSet& cached = mDeviceTunings[port];
    if (cached.empty()) mDatabase->queryDeviceTunings(portName(port), cached);
    return cached;
}

Tuning* Provider::loadTuningForDevice(const std::string& device) {
    const DeviceTuning* found = nullptr;
    for (const auto& [port, deviceTunings] : mDeviceTunings) {
        for (const DeviceTuning* deviceTuning : deviceTunings) {
            if (deviceTuning->getDevice() == device) {
                found = deviceTuning;
                break;
            }
        }
        if (found != nullptr) break;
    }
    if (found == nullptr) {
        ALOGW("Cannot find device with name %s in mDeviceTunings", device.c_str());
        return nullptr;
    }
    const std::string name = found->getTuning();
    for (Tuning* tuning : mTunings) {
        if (tuning->getName() == name) {
            ALOGD("Found existing tuning[%s] from cache device[%s]", name.c_str(), device.c_str());
            return tuning;
        }
    }
    Tuning* tuning = new Tuning(name, endpointForPortName(found->getPort()), false);
    mDatabase->queryTuning(name, tuning);
    mTunings.insert(tuning);
    ALOGD("Load tuning[%s] from cache device[%s], and put it in cached mTunings", name.c_str(),
          device.c_str());
    return tuning;
}

void Provider::reloadCachedDeviceTunings() {
    releaseDeviceTunings(true);
    // The tunings loaded so far are read again in place: an OEM file may have new values
    // for a tuning of the same name, and the context still points at these records.
    for (Tuning* tuning : mTunings) mDatabase->queryTuning(tuning->getName(), tuning);
}

void Provider::releaseDeviceTunings(bool log) {
    for (auto& [port, deviceTunings] : mDeviceTunings) {
        for (DeviceTuning* deviceTuning : deviceTunings) {
            if (log) {
                ALOGD("Clear cached device tuning Port[%s]:Device[%s]", portName(port),
                      deviceTuning->getDevice().c_str());
            }
            delete deviceTuning;
        }
        deviceTunings.clear();
    }
}

}  // namespace vessa
