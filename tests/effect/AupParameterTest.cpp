#include <gtest/gtest.h>

#include <set>
#include <string>

#include "effect/AupParameter.h"

namespace vessa {
namespace {

TEST(AupParameterTest, CodeTableFollowsTheEnumeration) {
    std::set<std::string> codes;
    for (int i = 0; i < kNumAupParameters; ++i) {
        const std::string code = aupParameterCode(static_cast<AupParameter>(i));
        EXPECT_GE(code.size(), 3u) << i;
        EXPECT_LE(code.size(), 4u) << i;
        codes.insert(code);
    }
    EXPECT_EQ(84u, codes.size());
    EXPECT_STREQ("VOL", aupParameterCode(AupParameter::VOL));
    EXPECT_STREQ("DOM", aupParameterCode(static_cast<AupParameter>(32)));
    EXPECT_STREQ("AOBS", aupParameterCode(static_cast<AupParameter>(52)));
    EXPECT_STREQ("MDEE", aupParameterCode(static_cast<AupParameter>(56)));
    EXPECT_STREQ("RSSA", aupParameterCode(static_cast<AupParameter>(71)));
    EXPECT_STREQ("BMDT", aupParameterCode(static_cast<AupParameter>(80)));
    EXPECT_STREQ("VSSD", aupParameterCode(AupParameter::VSSD));
    EXPECT_EQ(83, static_cast<int>(AupParameter::VSSD));
    EXPECT_STREQ("", aupParameterCode(static_cast<AupParameter>(84)));
    EXPECT_STREQ("", aupParameterCode(static_cast<AupParameter>(-1)));
}

TEST(AupParameterTest, IdentifierIsTheLowerCasedCodeLittleEndian) {
    EXPECT_EQ(0x656C7664u, packParameterCode("DVLE"));
    EXPECT_EQ(0x006C6F76u, packParameterCode("VOL"));
    EXPECT_EQ(0x656C7664u, packParameterCode("dvle"));
    EXPECT_EQ(0x656C7664u, packParameterCode("DvLe"));
    // Only A-Z fold; digits and punctuation stay as they are.
    EXPECT_EQ(0x5Fu << 24 | 0x62u << 16 | 0x31u << 8 | 0x61u, packParameterCode("A1b_"));
    EXPECT_EQ(0x61u, packParameterCode("A"));
    EXPECT_EQ(0u, packParameterCode(""));
    EXPECT_EQ(0u, packParameterCode("DVLEX"));

    EXPECT_EQ(0x656C7664, aupParameterId(AupParameter::DVLE));
    EXPECT_EQ(0x006D6F64, aupParameterId(AupParameter::DOM));
    for (AupParameter p : {AupParameter::VOL, AupParameter::DEA, AupParameter::DOM,
                           AupParameter::DSA, AupParameter::VBM, AupParameter::DMC}) {
        EXPECT_EQ(0, aupParameterId(p) >> 24) << aupParameterCode(p);
        EXPECT_NE(0, aupParameterId(p)) << aupParameterCode(p);
    }
}

}  // namespace
}  // namespace vessa
