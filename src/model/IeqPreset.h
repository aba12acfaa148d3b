#pragma once

#include <string>

#include "model/ParameterValues.h"
#include "model/Vocabulary.h"

namespace vessa {

// Target curve of the intelligent equaliser for one preset type. The type is
// mirrored into the map under ieq_id so the merged device view carries it.
class IeqPreset : public ParameterValues {
public:
    static const ParamSet kValidParams;

    explicit IeqPreset(PresetType type);
    // From the database; ends dirty all the same, because the ieq_id write marks it.
    IeqPreset(long long id, PresetType type);

    int64_t getId() const override;
    const ParamSet& getValidParams() const override;

    PresetType getType() const { return mType; }
    std::string toString() const;

private:
    PresetType mType;
};

}  // namespace vessa
