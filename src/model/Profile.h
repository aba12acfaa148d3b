#pragma once

#include <string>

#include "model/ParameterValues.h"

namespace vessa {

// A sound profile the user selects, with its profile-wide parameters.
class Profile : public ParameterValues {
public:
    static const ParamSet kValidParams;

    Profile(int profileId, const std::string& name, bool mobility);
    Profile(long long id, int profileId, const std::string& name, bool mobility);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    int getProfileId() const { return mProfileId; }
    std::string getName() const { return mName; }
    bool isMobility() const { return mMobility; }
    int getSelectedGeqPreset() const { return mSelectedGeqPreset; }

    // Marks the record dirty, even when the name is unchanged.
    void setName(const std::string& name);
    // Leaves the dirty flag alone.
    void setMobility(bool mobility) { mMobility = mobility; }
    void setSelectedGeqPreset(int preset);

    using ParameterValues::equals;
    // Same object, or same profile id and equal maps; name, mobility and GEQ
    // selection do not count.
    bool equals(const Profile& other) const;
    std::string toString() const;

private:
    int32_t mProfileId;
    std::string mName;
    bool mMobility;
    int32_t mSelectedGeqPreset;
};

}  // namespace vessa
