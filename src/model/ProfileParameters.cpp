#include "model/ProfileParameters.h"

#include "model/ParameterMerge.h"

namespace vessa {

const ParamSet ProfileParameters::kValidParams =
        makeParamSet({20, 24, 25, 39, 40, 41, 42, 63, 64, 95});

ProfileParameters::ProfileParameters(ParamChangeObserver* observer) : mObserver(observer) {
    mId = -1;
    mDirty = false;
    if (mObserver != nullptr) mObserver->setSource(this, Endpoint::OTHER, false);
}

int64_t ProfileParameters::getId() const { return mId; }

const ParamSet& ProfileParameters::getValidParams() const { return kValidParams; }

void ProfileParameters::setProfile(Profile& profile) {
    mProfile = &profile;
    updateParams(profile);
}

void ProfileParameters::setGeqPreset(GeqPreset& preset) {
    mGeqPreset = &preset;
    updateParams(preset);
}

void ProfileParameters::updateParams(ParameterValues& source) {
    mergeParameters(*this, source, mObserver);
}

}  // namespace vessa
