// The parameter-set blob decoder: any bytes as a setAupParam blob, applied by the
// event thread to a running service.

#include "FuzzService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vessa::fuzz::FuzzService& fuzz = vessa::fuzz::FuzzService::get();
    fuzz.applied([&] { return fuzz.service->setAupParam(data, static_cast<uint32_t>(size)) == 0; });
    return 0;
}
