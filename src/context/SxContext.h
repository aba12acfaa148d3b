#pragma once

#include <utils/Mutex.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "context/ContextLock.h"
#include "context/OnSxContextChange.h"
#include "context/ProfileContext.h"
#include "context/SxContextChangeObservable.h"

namespace vessa {

class Provider;

// The live state of the audio processing: the on/off switch, the selected
// profile, one ProfileContext per profile and the tuning selected per port.
// Setters change memory only; the save operations write through the provider.
// Notifications are raised after the lock is released, so observers may read
// the context back through its locking getters. The per-port selection is
// read by binder threads while the event thread changes it, so its getters
// and reloadTuning take the lock as well.
class SxContext {
  public:
    static const std::set<Port> kSupportedPorts;

    SxContext(Provider* provider, SxContextChangeObservable* observable);
    ~SxContext();
    SxContext(const SxContext&) = delete;
    SxContext& operator=(const SxContext&) = delete;

    void load();
    void reloadAllProfile();
    void reloadTuning();
    // Registers the observer and brings it up to date with its own onLoad.
    void registerObserver(OnSxContextChange* observer);
    void unregisterObserver(OnSxContextChange* observer);

    // Profiles.
    int getNumOfProfiles() const { return mNumOfProfiles; }
    bool isSelected(int id) const;
    // Fatal for an unknown id. Callers hold the lock or run serialised.
    ProfileContext* getContext(int id);
    Profile* getSelectedProfile();
    void setSelectedProfile(int id);
    Profile* getDefaultProfile(int id);
    Profile* getProfile(int id);
    GeqPreset* getProfileGeq(int id);
    GeqPreset* getSelectedProfileGeq();
    ProfileEndpoint* getProfileEndpoint(Endpoint endpoint);
    ProfileEndpoint* getProfileEndpoint(int id, Endpoint endpoint);
    bool isProfileModified(int id);
    bool isProfileGeqModified(int id);
    bool isProfileSpecificSettingsModified(int id);
    void resetProfile(int id);
    void resetProfileGeq(int id);

    // Parameters. The references point into live records: copy them before
    // the next call.
    std::vector<int>& getProfileParameter(int id, Parameter p);
    std::vector<int>& getProfileParameter(int id, Endpoint endpoint, Parameter p);
    std::vector<int>& getProfileGeqParameter(int id, Parameter p);
    std::vector<int>& getSelectedTuningParameter(Port port, Parameter p);
    void setProfileParameter(int id, Parameter p, std::vector<int>& values);
    void setProfileParameter(int id, Endpoint endpoint, Parameter p, std::vector<int>& values);
    void setProfileGeqParameter(int id, Parameter p, std::vector<int>& values);

    // Effect switch and per-port selection.
    bool getAupOn();
    void setAupOn(bool on);
    Tuning* getSelectedTuning(Port port);
    std::string getSelectedTuningDevice(Port port);
    // Null while the port has no tuning loaded.
    ProfileEndpoint* getSelectedProfileEndpoint(Port port);
    IeqPreset* getSelectedProfileIeq(Port port);
    std::vector<std::string> getAvailableTuningDevice(Port port);
    std::string getDefaultTuningDevice(Port port);
    bool setSelectedTuning(Port port, const std::string& device, bool force);
    void selectDefaultTuning(Port port);

    // Persistence.
    void save();
    void saveSxState();
    void saveSxProfile();
    void saveSxProfileSettings();

  private:
    // The common write rule; true when a change was made.
    static bool setParameter(ParameterValues& values, Parameter p, std::vector<int>& v);
    void loadProfiles(int selectedId);
    // The ports of one endpoint, in port order, without a heap allocation: a change
    // asks for them every time.
    struct PortList {
        std::array<Port, kNumPortNames> ports;
        size_t count = 0;
        void push_back(Port port) { ports[count++] = port; }
        const Port* begin() const { return ports.data(); }
        const Port* end() const { return ports.data() + count; }
    };
    PortList portsOnEndpoint(Endpoint endpoint) const;
    Tuning* selectedTuningLocked(Port port) const;
    std::vector<std::string> availableTuningDevicesLocked(Port port);
    std::string defaultTuningDeviceLocked(Port port);
    void saveProfilesLocked();
    void setIeqPresetLocked(ContextLock& lock, int id, Endpoint endpoint, ProfileEndpoint* pe,
                            std::vector<int>& values);

    Provider* mProvider;
    SxContextChangeObservable* mObservable;
    int mNumOfProfiles;
    std::set<ProfileContext*> mProfileContexts;
    std::map<Port, std::string> mSelectedTuningDevices;
    std::map<Port, Tuning*> mSelectedTunings;
    bool mAupOn = false;
    ProfileContext* mSelectedProfile = nullptr;
    android::Mutex mLock;
    // Answer for reads of a port that has no tuning loaded.
    std::vector<int> mNoValues;
};

}  // namespace vessa
