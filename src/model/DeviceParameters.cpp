#include "model/DeviceParameters.h"

#include "model/ParameterMerge.h"

namespace vessa {

namespace {
ParamSet allButProfileLevel() {
    static const ParamSet profileLevel = makeParamSet({20, 24, 25, 39, 40, 41, 42, 63, 64, 95});
    ParamSet set;
    for (int i = 0; i < kNumParameters; ++i) {
        if (profileLevel.count(toParameter(i)) == 0) set.insert(toParameter(i));
    }
    return set;
}
}  // namespace

const ParamSet DeviceParameters::kValidParams = allButProfileLevel();

DeviceParameters::DeviceParameters(ParamChangeObserver* observer) : mObserver(observer) {
    mId = -1;
    mDirty = false;
    if (mObserver != nullptr) mObserver->setSource(this, Endpoint::OTHER, false);
}

int64_t DeviceParameters::getId() const { return -1; }

const ParamSet& DeviceParameters::getValidParams() const { return kValidParams; }

void DeviceParameters::setProfile(Profile& profile) {
    mProfile = &profile;
    updateParams(profile);
}

void DeviceParameters::setProfileEndpoint(ProfileEndpoint& endpoint) {
    mProfileEndpoint = &endpoint;
    updateParams(endpoint);
}

void DeviceParameters::setIeqPreset(IeqPreset& preset) {
    mIeqPreset = &preset;
    updateParams(preset);
}

void DeviceParameters::setTuning(Tuning& tuning) {
    mTuning = &tuning;
    if (mObserver != nullptr) mObserver->setSource(this, tuning.getEndpoint(), tuning.isMono());
    updateParams(tuning);
}

void DeviceParameters::updateParams(ParameterValues& source) {
    mergeParameters(*this, source, mObserver);
}

}  // namespace vessa
