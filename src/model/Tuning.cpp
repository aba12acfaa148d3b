#include "model/Tuning.h"

namespace vessa {

const ParamSet Tuning::kValidParams =
        makeParamSet({0,  1,  2,  3,  4,  5,  6,  7,  9,  10, 11, 12, 13, 15, 16, 17, 18, 19, 33,
                      44, 45, 46, 48, 49, 50, 51, 52, 53, 54, 55, 56, 57, 58, 59, 60, 61, 62, 67,
                      68, 70, 71, 72, 73, 74, 75, 76, 77, 78, 79, 80, 81, 84, 85, 87, 90, 94});

const std::map<std::string, Endpoint>& Tuning::kEndpNameToEndpoint = endpointNameToEndpoint();

Tuning::Tuning(const std::string& name, Endpoint endpoint, bool isMono)
    : mName(name), mEndpoint(endpoint), mIsMono(isMono), mReadonly(true) {
    mId = -1;
    mDirty = true;
}

Tuning::Tuning(long id, const std::string& name, Endpoint endpoint, bool isMono, bool readonly)
    : mName(name), mEndpoint(endpoint), mIsMono(isMono), mReadonly(readonly) {
    mId = static_cast<int32_t>(id);
    mDirty = false;
}

int64_t Tuning::getId() const { return mId; }

const ParamSet& Tuning::getValidParams() const { return kValidParams; }

void Tuning::setEndpoint(const std::string& endpointName) {
    auto it = kEndpNameToEndpoint.find(endpointName);
    if (it != kEndpNameToEndpoint.end()) mEndpoint = it->second;
}

std::string Tuning::toString() const {
    std::string out = "id=" + std::to_string(mId) + "\n";
    out += "name=" + mName + "\n";
    out += std::string("endpoint=") + endpointName(mEndpoint) + "\n";
    out += std::string("mono=") + (mIsMono ? "true" : "false") + "\n";
    out += std::string("readonly=") + (mReadonly ? "true" : "false") + "\n";
    return out + valuesToString();
}

}  // namespace vessa
