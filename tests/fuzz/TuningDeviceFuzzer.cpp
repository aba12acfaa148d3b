// The tuning-device calls on any port, length and name: listing, reading and
// selecting (the selection applied by the event thread).

#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzService.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    vessa::fuzz::FuzzService& fuzz = vessa::fuzz::FuzzService::get();
    android::VessaManagerService& service = fuzz.service();
    uint32_t head = vessa::fuzz::FuzzService::head(data, size);
    int port = static_cast<int8_t>(head & 0xff);  // mostly small, some negative
    int length = static_cast<int16_t>(head >> 16);
    size_t skip = size < 4 ? size : 4;
    const uint8_t* name = data + skip;
    int nameLength = static_cast<int>(size - skip);

    service.getAvailableTuningDevicesLen(port);
    std::vector<char> names(length > 0 ? static_cast<size_t>(length) : 0, '#');
    service.getAvailableTuningDevices(port, length > 0 ? names.data() : nullptr, length);
    std::string selected = service.getSelectedTuningDevice(port);
    if (selected.find('\0') != std::string::npos) abort();
    fuzz.applied([&] {
        service.setSelectedTuningDevice(port, name, nameLength);
        // Only a valid port is posted, and so answered.
        return port >= 0 && port < 7;
    });
    return 0;
}
