#pragma once

#include "model/GeqPreset.h"
#include "model/ParamChangeObserver.h"
#include "model/ParameterValues.h"
#include "model/Profile.h"

namespace vessa {

// Merged profile-wide parameters: the current profile and its GEQ preset.
// Every real change is reported to the observer; nothing is ever dropped.
class ProfileParameters : public ParameterValues {
public:
    static const ParamSet kValidParams;

    explicit ProfileParameters(ParamChangeObserver* observer);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    void setProfile(Profile& profile);
    void setGeqPreset(GeqPreset& preset);
    Profile* getProfile() const { return mProfile; }
    GeqPreset* getGeqPreset() const { return mGeqPreset; }

    // Merges the source in ascending parameter order, reporting each change at once.
    void updateParams(ParameterValues& source);

private:
    Profile* mProfile = nullptr;
    GeqPreset* mGeqPreset = nullptr;
    ParamChangeObserver* mObserver;
};

}  // namespace vessa
