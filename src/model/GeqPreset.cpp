#include "model/GeqPreset.h"

namespace vessa {

const ParamSet GeqPreset::kValidParams = makeParamSet({24, 25});

GeqPreset::GeqPreset(int profileId) : mProfileId(profileId) {
    mId = -1;
    mDirty = true;
}

GeqPreset::GeqPreset(long long id, int profileId) : mProfileId(profileId) {
    mId = id;
    mDirty = false;
}

int64_t GeqPreset::getId() const { return mId; }

const ParamSet& GeqPreset::getValidParams() const { return kValidParams; }

bool GeqPreset::equals(const GeqPreset& other) const {
    if (this == &other) return true;
    if (mProfileId != other.mProfileId) return false;
    return ParameterValues::equals(other);
}

std::string GeqPreset::toString() const {
    return "id=" + std::to_string(mId) + "\nprofileId=" + std::to_string(mProfileId) + "\n" +
           valuesToString();
}

}  // namespace vessa
