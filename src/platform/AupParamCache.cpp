#include "platform/AupParamCache.h"

#include <ostream>
#include <utility>

namespace vessa {

AupParamCache::AupParamCache(uint32_t device, uint32_t parameterId, std::vector<int32_t> values)
    : mDevice(device), mParameterId(parameterId), mValues(std::move(values)) {}

bool AupParamCache::operator==(const AupParamCache& other) const {
    return mDevice == other.mDevice && mParameterId == other.mParameterId &&
           mValues == other.mValues;
}

std::ostream& operator<<(std::ostream& os, const AupParamCache& cache) {
    os << std::hex << "device=0x" << cache.getDevice() << " id=0x" << cache.getParameterId()
       << std::dec << " values=";
    const char* separator = "";
    for (int32_t v : cache.getValues()) {
        os << separator << v;
        separator = ",";
    }
    return os;
}

}  // namespace vessa
