// The tuning file parser on any bytes, as a file on disk, the way the service reads it.

#include <android/log.h>
#include <libxml/xmlerror.h>

#include <string>

#include "TempDir.h"
#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

namespace {
void quiet(void*, const char*, ...) {}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const vessa::test::TempDir dir;  // removed at exit
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    // libxml2's own complaints about malformed input would drown the fuzzer's output.
    xmlSetGenericErrorFunc(nullptr, quiet);
    vessa::TuningFileParser parser;
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (parser.setTuningFile(dir.write("tuning.xml", text)) == 0 && parser.getDeviceData()) {
        parser.getDeviceData()->validateData();
    }
    return 0;
}
