#pragma once

#include "model/IeqPreset.h"
#include "model/ParamChangeObserver.h"
#include "model/ParameterValues.h"
#include "model/Profile.h"
#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"

namespace vessa {

// Merged device-level parameters of one output: its tuning, the current
// profile's endpoint settings and the selected IEQ preset.
class DeviceParameters : public ParameterValues {
public:
    static const ParamSet kValidParams;

    explicit DeviceParameters(ParamChangeObserver* observer);

    // Never stored: always -1.
    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    // Merges nothing (no profile parameter is device-level); kept so the view knows it.
    void setProfile(Profile& profile);
    void setProfileEndpoint(ProfileEndpoint& endpoint);
    void setIeqPreset(IeqPreset& preset);
    // Re-announces the source (endpoint, mono) before merging the tuning.
    void setTuning(Tuning& tuning);

    Profile* getProfile() const { return mProfile; }
    ProfileEndpoint* getProfileEndpoint() const { return mProfileEndpoint; }
    IeqPreset* getIeqPreset() const { return mIeqPreset; }
    Tuning* getTuning() const { return mTuning; }

    void updateParams(ParameterValues& source);

private:
    Profile* mProfile = nullptr;
    ProfileEndpoint* mProfileEndpoint = nullptr;
    IeqPreset* mIeqPreset = nullptr;
    Tuning* mTuning = nullptr;
    ParamChangeObserver* mObserver;
};

}  // namespace vessa
