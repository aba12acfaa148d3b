#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "model/DeviceTuning.h"
#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
#include "model/Vocabulary.h"
#include "storage/DatabaseHelper.h"
#include "storage/RecordOrder.h"

namespace vessa {

// The persistence front of the live context. It owns every profile, profile endpoint
// and preset record (a factory "default" copy and a user "custom" copy per profile),
// the device tunings of each port and the tunings loaded so far; callers get raw
// pointers they never delete. No lock of its own: callers serialise access.
class Provider {
  public:
    // Origins written into every row's custom_name.
    static const std::string kDefaultName;
    static const std::string kOemName;
    static const std::string kCustomName;
    // Keys of the configuration table.
    static const std::string kSignature;
    static const std::string kFormatVersion;
    static const std::string kSelectedProfile;
    static const std::string kAupState;

    static constexpr const char* kDatabaseName = "zan_sqlite3.db";

    Provider();
    virtual ~Provider();
    Provider(const Provider&) = delete;
    Provider& operator=(const Provider&) = delete;

    // -1 when no profile is stored.
    virtual int getSelectedProfile();
    virtual int getNumOfProfiles();
    virtual bool isAupOn();
    // The tuning the device names, shared by every device naming it; null for an
    // unknown device.
    virtual Tuning* loadTuningForDevice(const std::string& device);
    // The port's device tunings; read from the database only while the port's cache
    // is empty (see reloadCachedDeviceTunings).
    virtual DeviceTuningSet loadDeviceTuningsForPort(Port port);
    virtual void initDatabase();
    virtual void setAupOn(bool on);
    virtual void updateDeviceTuning(const std::string& key, const std::string& device);
    virtual Profile* loadDefaultProfile(int id);
    virtual void setSelectedProfile(int id);
    virtual ProfileEndpointSet loadDefaultProfileEndpoints(int id);
    virtual ProfileEndpointSet loadProfileEndpoints(int id);
    virtual Profile* loadProfile(int id);
    virtual ProfileEndpoint* loadProfileEndpoint(int id, Endpoint endpoint);
    // Write the user copy; factory rows are never touched.
    virtual void save(Profile* profile);
    virtual void save(ProfileEndpoint* endpoint);
    virtual void save(GeqPreset* preset);
    // Re-read the record in place from its factory row and return it.
    virtual Profile* reset(Profile* profile);
    virtual ProfileEndpoint* reset(ProfileEndpoint* endpoint);
    virtual GeqPreset* reset(GeqPreset* preset);
    virtual void create(IeqPreset* preset);
    // Profile-level records are stored twice: the factory copy, then the user copy.
    virtual void create(GeqPreset* preset);
    virtual void create(Profile* profile);
    virtual void create(ProfileEndpoint* endpoint);
    virtual void create(Tuning* tuning, const std::string& origin);
    virtual void create(DeviceTuning* deviceTuning, const std::string& origin);
    virtual void clearOemTunings();
    virtual void clearOemDeviceTunings();
    // Deletes the cached device tunings so the next port load reads the database again,
    // and reads the cached tunings again in place.
    virtual void reloadCachedDeviceTunings();
    virtual void clear();
    virtual void beginTransaction();
    // False when the transaction was rolled back.
    virtual bool commitTransaction();
    // Also stores profile 0 as selected and processing as on: a new default tuning
    // file starts from that state.
    virtual void setDefaultXmlSignature(const std::string& signature);
    virtual std::string getDefaultXmlSignature();
    virtual void setDefaultXmlFormatVersion(const std::string& version);
    virtual std::string getDefaultXmlFormatVersion();
    virtual void setDeviceTuning(const std::string& key, const std::string& device);
    virtual std::string getDeviceTuning(const std::string& key);
    virtual IeqPreset* loadIeqPreset(PresetType type);

    // Builds the records of the profiles stored under "default", both copies read in
    // one pass per table: the first load of each record is served from that pass.
    // 0 on success; NO_INIT (-19) when the database holds no profile (or cannot be
    // read), leaving every per-profile table empty.
    int init();
    // The names the default file took: its tunings' names and its devices.
    void readDefaultNames(std::set<std::string>* tunings, std::set<std::string>* devices);
    // Reads in between see one state of the database (see DatabaseHelper::beginRead).
    void beginRead();
    void endRead();

    // What a start does before it reads the database. A usable one gets back the user
    // rows it lost, from their factory rows. One that cannot be used is moved aside as
    // "<name>.damaged-<UTC time>" and a new one opened in its place, to be refilled
    // from the tuning files; what could still be read of the user's settings is kept
    // for restoreUserSettings. 0, or NO_INIT while another connection holds the
    // database locked beyond the busy timeout (the caller tries again later).
    int checkDatabase();
    // After a refill: writes back what checkDatabase kept of the user's settings.
    void restoreUserSettings();
    // Why the last save was rolled back; empty while saves succeed.
    std::string getSaveError() const;
    GeqPreset* loadDefaultGeqPreset(int id);
    GeqPreset* loadGeqPreset(int id);

  private:
    // Both copies of one profile's records, and which of them init's pass filled
    // and no load has handed out yet.
    struct ProfileCopy {
        Profile* profile = nullptr;
        ProfileEndpointSet endpoints;
        GeqPreset* geqPreset = nullptr;
        bool profileRead = false;
        unsigned endpointsRead = 0;  // a bit per Endpoint
        bool geqRead = false;
    };

    bool validProfile(int id, const char* caller) const;
    ProfileCopy* copyOf(int id, const char* origin);
    void readEveryCopy();
    Profile* loadProfileCopy(int id, ProfileCopy& copy, const std::string& origin);
    ProfileEndpointSet loadEndpointCopies(int id, ProfileCopy& copy, const std::string& origin);
    GeqPreset* loadGeqCopy(int id, ProfileCopy& copy, const std::string& origin);
    void releaseRecords();
    void releaseDeviceTunings(bool log);

    std::unique_ptr<DatabaseHelper> mDatabase;
    // The user's settings read from a database that was moved aside, until restored.
    std::unique_ptr<DatabaseHelper::UserSettings> mSalvage;
    int mNumOfProfiles = 0;
    std::vector<ProfileCopy> mDefaults;
    std::vector<ProfileCopy> mCustoms;
    std::vector<ProfileEndpoint*> mProfileEndpointSlots;
    IeqPreset* mIeqPresets[kNumPresetTypes] = {};
    bool mIeqPresetLoaded[kNumPresetTypes] = {};
    std::map<Port, DeviceTuningSet> mDeviceTunings;
    std::set<Tuning*> mTunings;
};

}  // namespace vessa
