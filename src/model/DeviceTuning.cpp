#include "model/DeviceTuning.h"

namespace vessa {

DeviceTuning::DeviceTuning(const std::string& device, const std::string& port,
                           const std::string& tuning)
    : DeviceTuning(-1, device, port, tuning) {}

DeviceTuning::DeviceTuning(long long id, const std::string& device, const std::string& port,
                           const std::string& tuning)
    : mId(id), mDevice(device), mPort(port), mTuning(tuning), mDirty(true) {}

DeviceTuning::~DeviceTuning() = default;

int64_t DeviceTuning::getId() const { return mId; }

bool DeviceTuning::isDirty() const { return mDirty; }

void DeviceTuning::setDirty(bool dirty) { mDirty = dirty; }

std::string DeviceTuning::toString() const {
    return "id=" + std::to_string(mId) + "\ndevice=" + mDevice + "\nport=" + mPort +
           "\ntuning=" + mTuning;
}

}  // namespace vessa
