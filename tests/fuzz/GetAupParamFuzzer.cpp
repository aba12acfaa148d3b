// getAupParam on any request: the input's first four bytes choose the answer's
// length, the rest is the request. The answer lands between guard words, which
// must stay untouched.

#include <cstdlib>
#include <vector>

#include "FuzzService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    constexpr uint8_t kGuard = 0xA5;
    constexpr size_t kMargin = 16;
    const uint32_t outLength = vessa::fuzz::takeHead(data, size) % 4097;
    std::vector<uint8_t> out(outLength + 2 * kMargin, kGuard);
    vessa::fuzz::FuzzService::get().service->getAupParam(data, uint32_t(size), out.data() + kMargin,
                                                         outLength);
    for (size_t i = 0; i < kMargin; ++i) {
        if (out[i] != kGuard || out[kMargin + outLength + i] != kGuard) abort();
    }
    return 0;
}
