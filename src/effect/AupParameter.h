#pragma once

#include <cstdint>
#include <string>

namespace vessa {

// The effect's own parameter codes, numbered in the order of the code table.
// clang-format off
enum class AupParameter : int32_t {
    VOL, PSTG, PREG, PLB, NGON, DEON, DEA, DED, VMB, DVME,
    DVMC, DVLE, DVLA, DVLI, DVLO, DVLC, IEON, IEA, AROD, ARTP,
    GEON, AOON, VCNB, VCBF, VER, IEBS, ARDS, ARON, ARDE, ARSA,
    ARBS, ARTI, DOM, DSB, GEBS, BEON, BEB, BECF, BEW, VBON,
    VBM, VBSF, VBOG, VBSG, VBHG, VBMF, VBBG, VBCT, VBHM, VBHB,
    VBMX, VBRG, AOBS, MSCE, MIEE, MDLE, MDEE, MAVE, VCBS, VNBS,
    DMC, DHFM, DFSA, DSA, DHSA, SVSB, CEON, CEQT, DPLP, MVBE,
    RSSE, RSSA, IEID, DRCM, HPON, HPTW, HPAT, HPAA, HPAR, BMDE,
    BMDT, RVSE, RVSA, VSSD,
};
// clang-format on

constexpr int kNumAupParameters = 84;

// The code string of a parameter ("DVLE"); empty for a value outside the table.
const char* aupParameterCode(AupParameter p);

// The identifier the effect receives for a code: the code lower-cased (ASCII
// A-Z only) with character i in bits 8i..8i+7, so "DVLE" is 0x656C7664. An
// empty code or one longer than four characters gives 0.
uint32_t packParameterCode(const char* code);

// The code an identifier stands for, read back from its bytes and shown in
// upper case ("DVLE" for 0x656C7664); stops at the first zero byte.
std::string unpackParameterCode(uint32_t id);
// packParameterCode of the parameter's code, as the 32-bit word of a batch.
int32_t aupParameterId(AupParameter p);

}  // namespace vessa
