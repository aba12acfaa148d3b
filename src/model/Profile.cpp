#include "model/Profile.h"

namespace vessa {

const ParamSet Profile::kValidParams = makeParamSet({20, 39, 40, 41, 42, 63, 64, 95});

Profile::Profile(int profileId, const std::string& name, bool mobility)
    : Profile(-1LL, profileId, name, mobility) {
    mDirty = true;
}

Profile::Profile(long long id, int profileId, const std::string& name, bool mobility)
    : mProfileId(profileId), mName(name), mMobility(mobility), mSelectedGeqPreset(profileId) {
    mId = id;
    mDirty = false;
}

int64_t Profile::getId() const { return mId; }

const ParamSet& Profile::getValidParams() const { return kValidParams; }

void Profile::setName(const std::string& name) {
    mName = name;
    mDirty = true;
}

void Profile::setSelectedGeqPreset(int preset) {
    mSelectedGeqPreset = preset;
    mDirty = true;
}

bool Profile::equals(const Profile& other) const {
    if (this == &other) return true;
    if (mProfileId != other.mProfileId) return false;
    return ParameterValues::equals(other);
}

std::string Profile::toString() const {
    std::string out = "id=" + std::to_string(mId) + "\n";
    out += "profileId=" + std::to_string(mProfileId) + "\n";
    out += "name=" + mName + "\n";
    out += std::string("mobility=") + (mMobility ? "true" : "false") + "\n";
    out += "selectedGeqPreset=" + std::to_string(mSelectedGeqPreset) + "\n";
    return out + valuesToString();
}

}  // namespace vessa
