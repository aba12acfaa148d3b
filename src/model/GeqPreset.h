#pragma once

#include <string>

#include "model/ParameterValues.h"

namespace vessa {

// The graphic-equaliser bands of one profile.
class GeqPreset : public ParameterValues {
public:
    static const ParamSet kValidParams;

    explicit GeqPreset(int profileId);
    GeqPreset(long long id, int profileId);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    int getProfileId() const { return mProfileId; }
    using ParameterValues::equals;
    // Same object, or same profile id and equal bands.
    bool equals(const GeqPreset& other) const;
    std::string toString() const;

private:
    int32_t mProfileId;
};

}  // namespace vessa
