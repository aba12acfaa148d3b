#include <android/log.h>
#include <gtest/gtest.h>

#include "EffectTestUtil.h"
#include "effect/AupEffect.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

const char* const kInvalidMessage = "sendSharedStore() Invalid data for setting parameter values.";

class AupEffectTest : public ::testing::Test {
  protected:
    void SetUp() override { mStore.reset(); }

    AupParamStore& mStore = AupParamStore::getInstance();
    AupEffect mEffect{7, android::String16("ignored")};
};

TEST_F(AupEffectTest, ValidBatchIsStoredInOrderAndCommittedOnce) {
    LogCapture log;
    const uint32_t dvle = packParameterCode("DVLE");
    const uint32_t geon = packParameterCode("GEON");
    // Two devices, and the same pair twice: the later entry must win.
    const int dvleWord = static_cast<int>(dvle);
    const int geonWord = static_cast<int>(geon);
    // clang-format off
    std::vector<int> words = {0x40000000, 4,
                              0x8, dvleWord, 1, 1,
                              0x2, geonWord, 2, 5, 6,
                              0x2, dvleWord, 0,
                              0x8, dvleWord, 1, 0};
    // clang-format on
    EXPECT_EQ(-22, mEffect.send(99, words));

    EXPECT_EQ(1u, mStore.getCommitCount());
    const std::vector<AupParamCache> expected = {
            AupParamCache(0x2, dvle, {}),
            AupParamCache(0x2, geon, {5, 6}),
            AupParamCache(0x8, dvle, {0}),
    };
    EXPECT_EQ(expected, mStore.storedParams(true));
    EXPECT_TRUE(mStore.storedParams(false).empty());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(AupEffectTest, MalformedBatchIsRefusedWhole) {
    const int id = static_cast<int>(packParameterCode("DVLE"));
    const std::vector<std::vector<int>> malformed = {
            {0x2},                         // no entry count
            {0x2, 2, 0x2, id, 1, 1},       // fewer entries than counted
            {0x2, 1, 0x2, id, 3, 1, 2},    // values run past the end
            {0x2, 1, 0x2, id, 1, 1, 0x8},  // words left after the last entry
            {0x2, -1},                     // negative entry count
            {0x2, 1, 0x2, id, -1},         // negative value count
    };
    for (std::vector<int> words : malformed) {
        LogCapture log;
        EXPECT_EQ(-22, mEffect.send(0, words));
        EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "AupEffect", kInvalidMessage));
        EXPECT_EQ(1u, log.lines().size());
    }
    // A size that is not a whole number of words.
    std::vector<int> words = {0x2, 1, 0x2, id, 1, 1};
    LogCapture log;
    mEffect.sendSharedStore(words.data(), static_cast<unsigned int>(words.size() * 4 - 2));
    EXPECT_EQ(1u, log.count("AupEffect", kInvalidMessage));

    EXPECT_EQ(0u, mStore.getCommitCount());
    EXPECT_TRUE(mStore.storedParams(true).empty());
    EXPECT_TRUE(mStore.storedParams(false).empty());
}

TEST_F(AupEffectTest, AlwaysControllableAndReadsNothing) {
    EXPECT_TRUE(mEffect.hasControl());
    EXPECT_EQ(0, mEffect.setEnabled(true));
    EXPECT_EQ(0, mEffect.setEnabled(false));
    std::vector<int> out = {1, 2};
    EXPECT_EQ(0, mEffect.receive(3, out));
    EXPECT_EQ((std::vector<int>{1, 2}), out);
    EXPECT_EQ(0u, mStore.getCommitCount());
}

}  // namespace
}  // namespace vessa
