#include "model/ProfileEndpoint.h"

namespace vessa {

const ParamSet ProfileEndpoint::kValidParams =
        makeParamSet({8,  14, 21, 22, 23, 26, 27, 28, 29, 30, 31, 32, 34,
                      35, 43, 47, 65, 66, 69, 83, 86, 88, 89, 91, 92, 93});

ProfileEndpoint::ProfileEndpoint(int profileId, Endpoint endpoint, PresetType selectedIeqPreset)
    : ProfileEndpoint(-1L, profileId, endpoint, selectedIeqPreset) {
    mDirty = true;
}

ProfileEndpoint::ProfileEndpoint(long id, int profileId, Endpoint endpoint,
                                 PresetType selectedIeqPreset)
    : mProfileId(profileId), mEndpoint(endpoint), mSelectedIeqPreset(selectedIeqPreset) {
    mId = static_cast<int32_t>(id);
    mDirty = false;
}

int64_t ProfileEndpoint::getId() const { return mId; }

const ParamSet& ProfileEndpoint::getValidParams() const { return kValidParams; }

void ProfileEndpoint::setSelectedIeqPreset(PresetType preset) {
    mSelectedIeqPreset = preset;
    mDirty = true;
}

bool ProfileEndpoint::equals(const ProfileEndpoint& other) const {
    if (this == &other) return true;
    if (mEndpoint != other.mEndpoint) return false;
    if (mProfileId != other.mProfileId) return false;
    if (mSelectedIeqPreset != other.mSelectedIeqPreset) return false;
    return ParameterValues::equals(other);
}

std::string ProfileEndpoint::toString() const {
    std::string out = "id=" + std::to_string(mId) + "\n";
    out += "profileId=" + std::to_string(mProfileId) + "\n";
    out += std::string("endpoint=") + endpointName(mEndpoint) + "\n";
    out += std::string("selectedIeqPreset=") + presetTypeName(mSelectedIeqPreset) + "\n";
    return out + valuesToString();
}

}  // namespace vessa
