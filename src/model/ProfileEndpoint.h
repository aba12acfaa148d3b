#pragma once

#include <string>

#include "model/ParameterValues.h"
#include "model/Vocabulary.h"

namespace vessa {

// One profile's settings for one endpoint kind, with its selected IEQ preset.
class ProfileEndpoint : public ParameterValues {
public:
    static const ParamSet kValidParams;

    ProfileEndpoint(int profileId, Endpoint endpoint, PresetType selectedIeqPreset);
    // From the database: the id is taken as 32-bit and sign-widened; clean.
    ProfileEndpoint(long id, int profileId, Endpoint endpoint, PresetType selectedIeqPreset);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    int getProfileId() const { return mProfileId; }
    Endpoint getEndpoint() const { return mEndpoint; }
    PresetType getSelectedIeqPreset() const { return mSelectedIeqPreset; }
    void setSelectedIeqPreset(PresetType preset);

    using ParameterValues::equals;
    // Endpoint, profile id and selected preset must match (in that order), then the maps.
    bool equals(const ProfileEndpoint& other) const;
    std::string toString() const;

private:
    int32_t mProfileId;
    Endpoint mEndpoint;
    PresetType mSelectedIeqPreset;
};

}  // namespace vessa
