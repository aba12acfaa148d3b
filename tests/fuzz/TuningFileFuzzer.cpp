// The tuning file parser on any bytes, as a file on disk, the way the service reads it.

#include <android/log.h>
#include <libxml/xmlerror.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

namespace {
void quiet(void*, const char*, ...) {}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const std::string path = [] {
        __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
        // libxml2's own complaints about malformed input would drown the fuzzer's output.
        xmlSetGenericErrorFunc(nullptr, quiet);
        const char* dir = getenv("TMPDIR");
        return std::string(dir ? dir : "/tmp") + "/vessa-fuzz-" + std::to_string(getpid()) + ".xml";
    }();
    FILE* out = fopen(path.c_str(), "wb");
    if (out == nullptr) return 0;
    fwrite(data, 1, size, out);
    fclose(out);
    vessa::TuningFileParser parser;
    if (parser.setTuningFile(path) == 0 && parser.getDeviceData() != nullptr) {
        parser.getDeviceData()->validateData();
    }
    unlink(path.c_str());
    return 0;
}
