#include "EffectTestUtil.h"

namespace vessa::test {
namespace {

TEST(AnEffectCode, PacksIntoItsLowerCasedBytesLittleEndian) {
    EXPECT_EQ(0x656C7664u, packParameterCode("DvLe"));
    EXPECT_EQ(0x006C6F76u, packParameterCode("VOL"));
    EXPECT_EQ(0x5F623161u, packParameterCode("A1b_"));  // only A-Z fold
    EXPECT_EQ(0u, packParameterCode(""));
    EXPECT_EQ(0u, packParameterCode("DVLEX"));
    EXPECT_EQ(0x006D6F64, aupParameterId(A::DOM));
}

TEST(EveryEffectCode, ReadsBackFromItsIdentifier) {
    for (int i = 0; i < kNumAupParameters; ++i) {
        const A code = static_cast<A>(i);
        EXPECT_EQ(aupParameterCode(code),
                  unpackParameterCode(static_cast<uint32_t>(aupParameterId(code))));
    }
    EXPECT_EQ("", unpackParameterCode(0));
    EXPECT_STREQ("BMDT", aupParameterCode(static_cast<A>(80)));
    EXPECT_STREQ("", aupParameterCode(static_cast<A>(kNumAupParameters)));
}

}  // namespace
}  // namespace vessa::test
