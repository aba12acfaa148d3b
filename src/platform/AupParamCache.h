#pragma once

#include <cstdint>
#include <iosfwd>
#include <vector>

namespace vessa {

// The values of one effect parameter for one device, as the parameter store
// holds them and hands them out.
class AupParamCache {
  public:
    AupParamCache(uint32_t device, uint32_t parameterId, std::vector<int32_t> values);

    uint32_t getDevice() const { return mDevice; }
    uint32_t getParameterId() const { return mParameterId; }
    int getCount() const { return static_cast<int>(mValues.size()); }
    const std::vector<int32_t>& getValues() const { return mValues; }

    bool operator==(const AupParamCache& other) const;
    bool operator!=(const AupParamCache& other) const { return !(*this == other); }

  private:
    uint32_t mDevice;
    uint32_t mParameterId;
    std::vector<int32_t> mValues;
};

// "device=0x2 id=0x656c7664 values=1,2", for diagnostics.
std::ostream& operator<<(std::ostream& os, const AupParamCache& cache);

}  // namespace vessa
