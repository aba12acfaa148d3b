// The tuning-device calls on any port, length and name: listing, reading and
// selecting (the selection applied by the event thread).

#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vessa::fuzz::FuzzService& fuzz = vessa::fuzz::FuzzService::get();
    const uint32_t head = vessa::fuzz::takeHead(data, size);  // the rest is the name
    int port = static_cast<int8_t>(head & 0xff);              // mostly small, some negative
    int length = static_cast<int16_t>(head >> 16);
    fuzz.service->getAvailableTuningDevicesLen(port);
    std::vector<char> names(length > 0 ? static_cast<size_t>(length) : 0, '#');
    fuzz.service->getAvailableTuningDevices(port, length > 0 ? names.data() : nullptr, length);
    if (fuzz.service->getSelectedTuningDevice(port).find('\0') != std::string::npos) abort();
    fuzz.applied([&] {
        fuzz.service->setSelectedTuningDevice(port, data, static_cast<int>(size));
        // Only a valid port is posted, and so answered.
        return port >= 0 && port < 7;
    });
    return 0;
}
