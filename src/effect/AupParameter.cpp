#include "effect/AupParameter.h"

#include <cstring>

namespace vessa {

namespace {
// clang-format off
const char* const kAupParameterCodes[kNumAupParameters] = {
        "VOL",  "PSTG", "PREG", "PLB",  "NGON", "DEON", "DEA",  "DED",  "VMB",  "DVME",
        "DVMC", "DVLE", "DVLA", "DVLI", "DVLO", "DVLC", "IEON", "IEA",  "AROD", "ARTP",
        "GEON", "AOON", "VCNB", "VCBF", "VER",  "IEBS", "ARDS", "ARON", "ARDE", "ARSA",
        "ARBS", "ARTI", "DOM",  "DSB",  "GEBS", "BEON", "BEB",  "BECF", "BEW",  "VBON",
        "VBM",  "VBSF", "VBOG", "VBSG", "VBHG", "VBMF", "VBBG", "VBCT", "VBHM", "VBHB",
        "VBMX", "VBRG", "AOBS", "MSCE", "MIEE", "MDLE", "MDEE", "MAVE", "VCBS", "VNBS",
        "DMC",  "DHFM", "DFSA", "DSA",  "DHSA", "SVSB", "CEON", "CEQT", "DPLP", "MVBE",
        "RSSE", "RSSA", "IEID", "DRCM", "HPON", "HPTW", "HPAT", "HPAA", "HPAR", "BMDE",
        "BMDT", "RVSE", "RVSA", "VSSD",
};
// clang-format on

constexpr size_t kMaxCodeLength = 4;
}  // namespace

const char* aupParameterCode(AupParameter p) {
    const int index = static_cast<int>(p);
    return (index >= 0 && index < kNumAupParameters) ? kAupParameterCodes[index] : "";
}

uint32_t packParameterCode(const char* code) {
    const size_t length = std::strlen(code);
    if (length == 0 || length > kMaxCodeLength) return 0;
    uint32_t id = 0;
    for (size_t i = 0; i < length; ++i) {
        uint32_t c = static_cast<unsigned char>(code[i]);
        if (c >= 'A' && c <= 'Z') c += 'a' - 'A';
        id += c << (8 * i);
    }
    return id;
}

std::string unpackParameterCode(uint32_t id) {
    std::string code;
    for (size_t i = 0; i < kMaxCodeLength; ++i) {
        char c = static_cast<char>((id >> (8 * i)) & 0xff);
        if (c == 0) break;
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        code += c;
    }
    return code;
}

int32_t aupParameterId(AupParameter p) {
    return static_cast<int32_t>(packParameterCode(aupParameterCode(p)));
}

}  // namespace vessa
