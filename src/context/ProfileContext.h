#pragma once

#include <memory>

#include "model/GeqPreset.h"
#include "model/IeqPreset.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "storage/RecordOrder.h"

namespace vessa {

class Provider;

// The live working set of one sound profile. Every record it points at is
// owned by the provider; the context only borrows them.
class ProfileContext {
  public:
    // The factory state of the profile, loaded once and kept for the modified checks.
    struct Defaults {
        Defaults(Provider* provider, int id);

        Profile* profile;
        ProfileEndpointSet profileEndpoints;
        GeqPreset* geqPreset;
    };

    ProfileContext(Provider* provider, int id);
    ~ProfileContext();
    ProfileContext(const ProfileContext&) = delete;
    ProfileContext& operator=(const ProfileContext&) = delete;

    int getId() const { return mId; }

    void load();
    void save();
    void reset();
    void resetGeq();

    Profile* getProfile() const { return mProfile; }
    GeqPreset* getSelectedGeqPreset() const { return mGeqPreset; }
    // Fatal when the profile has no endpoint of that kind.
    ProfileEndpoint* getProfileEndpoint(Endpoint endpoint) const;
    // The preset selected for the endpoint, or the "off" preset while its IEQ is disabled.
    IeqPreset* getSelectedIeqPreset(Endpoint endpoint) const;

    bool isModified() const;
    bool isProfileSpecificSettingsModified() const;
    bool isGeqModified() const;

  private:
    bool endpointsDifferFromDefaults() const;

    Provider* mProvider;
    int mId;
    Profile* mProfile = nullptr;
    ProfileEndpointSet mProfileEndpoints;
    GeqPreset* mGeqPreset = nullptr;
    std::unique_ptr<Defaults> mDefaults;
};

}  // namespace vessa
