#pragma once

#include <utils/Mutex.h>
#include <utils/Singleton.h>

#include <memory>
#include <set>
#include <string>

#include "context/SxContext.h"
#include "context/SxContextChangeObservable.h"

namespace vessa {

class DeviceData;
class Provider;
class TuningFileParser;

// Owns the provider, the observable and the live context. At start it refills
// the database from the default tuning file only when the file changed since
// the last fill, merges the OEM file, then builds and loads the context. One
// mutex serialises loading, reloading and tear-down.
class SxContextManager : public android::Singleton<SxContextManager> {
  public:
    static const char* const kDefaultTuningFile;
    static const char* const kOemTuningFile;

    // The service reaches the manager through getInstance(); a manager can also
    // be built directly, which is how tests run several process lives.
    SxContextManager();
    ~SxContextManager();
    SxContextManager(const SxContextManager&) = delete;
    SxContextManager& operator=(const SxContextManager&) = delete;

    SxContext* getSxContext();
    // The context, starting again first when the last start found the database
    // locked; null while it cannot be had.
    SxContext* startContext();
    // Merges the OEM file again and, on success, reloads the context's tunings.
    int loadOemTuning();
    // Whether the default tuning file's signature differs from the stored one.
    bool defaultFileChanged();
    // Everything again as at a start (refill, OEM merge, a new context); the
    // previous context is deleted, so its holders must let go of it first.
    SxContext* restart();
    std::string getDefaultXmlFormatVersion();
    // Why the last save was rolled back; empty while saves succeed.
    std::string getSaveError();
    void release();

  private:
    void init();
    void initLocked();
    // The start once the provider exists: the database checked, refilled if the
    // default file changed, and the context loaded from it.
    void loadLocked(const std::string& path);
    void releaseLocked();
    int initDatabase(Provider* provider, const std::string& path);
    DeviceData* loadXmlIfChanged(const std::string& path, Provider* provider);
    std::string getChangedSignature(const std::string& path, Provider* provider);
    std::string getSignature(const std::string& path);
    void populateDatabase(DeviceData* data, Provider* provider);
    // Merges the OEM file into the database in one transaction.
    int loadOemTuningLocked();
    // The parsed OEM file, or null with `result` set: missing, unreadable, or of
    // another format version than the stored default.
    std::unique_ptr<TuningFileParser> parseOemFile(int* result);
    // Stores the OEM tunings whose names are not taken; returns the names stored.
    std::set<std::string> mergeOemTunings(DeviceData& oem, const std::set<std::string>& taken);
    // Stores the OEM device ids that point to a stored OEM tuning and are not taken.
    void mergeOemDeviceTunings(DeviceData& oem, const std::set<std::string>& acceptedTunings,
                               const std::set<std::string>& takenDevices);

    std::unique_ptr<Provider> mProvider;
    std::unique_ptr<SxContextChangeObservable> mObservable;
    std::unique_ptr<SxContext> mContext;
    std::unique_ptr<TuningFileParser> mParser;
    bool mReleased = false;
    android::Mutex mLock;
};

}  // namespace vessa
