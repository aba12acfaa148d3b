#include "model/IeqPreset.h"

namespace vessa {

const ParamSet IeqPreset::kValidParams = makeParamSet({36, 37, 38});

IeqPreset::IeqPreset(PresetType type) : IeqPreset(-1, type) {}

IeqPreset::IeqPreset(long long id, PresetType type) : mType(type) {
    mId = id;
    mDirty = false;
    set(Parameter::IEQ_ID, {static_cast<int>(type)});
}

int64_t IeqPreset::getId() const { return mId; }

const ParamSet& IeqPreset::getValidParams() const { return kValidParams; }

std::string IeqPreset::toString() const {
    return "id=" + std::to_string(mId) + "\ntype=" + presetTypeName(mType) + "\n" +
           valuesToString();
}

}  // namespace vessa
