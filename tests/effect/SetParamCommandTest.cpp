#include "EffectTestUtil.h"

namespace vessa::test {
namespace {

constexpr int kTarget = 0x40000000;

class ACommandToTheEffect : public StoreTest {
  protected:
    // Adds an entry of every form, over three device changes.
    void fill() {
        mCmd.add(A::DVLE, 7);  // before any setDeviceId: device -1
        mCmd.setDeviceId(0x2);
        mCmd.add(A::DVLA, &a);
        mCmd.add(A::GEON, {&a, &empty, &b});
        mCmd.setDeviceId(0x8);
        mCmd.add(A::GEBS, 3, {&a, &b});
        mCmd.add(A::IEBS, 0, {});
        mCmd.add(A::VOL, &empty);
        mCmd.addParts(A::DOM, {a, 9, empty, b});
        mCmd.setDeviceId(0x2);
        mCmd.add(A::DVLA, 8);  // the same pair again: the later entry wins
    }

    const V a = {1, 2, 3}, b = {-4}, empty;
    SetParamCommand mCmd{kTarget};
    AupEffect mEffect{7, android::String16("ignored")};
    // clang-format off
    const std::vector<Entry> mFilled = {
            {A::DVLE, {7}, -1},                  {A::DVLA, {1, 2, 3}},
            {A::GEON, {1, 2, 3, -4}},            {A::GEBS, {3, 1, 2, 3, -4}, 0x8},
            {A::IEBS, {0}, 0x8},                 {A::VOL, {}, 0x8},
            {A::DOM, {1, 2, 3, 9, -4}, 0x8},     {A::DVLA, {8}}};
    // clang-format on
};

TEST_F(ACommandToTheEffect, SendsNothingWhileEmpty) {
    EXPECT_EQ(0, mCmd.execute(mEffect));
    EXPECT_EQ(0u, mStore.getCommitCount());
}

// Each entry carries the device set before it was added.
TEST_F(ACommandToTheEffect, CountsItsEntriesAndSendsTheBatchInOneCommit) {
    LogCapture log;
    fill();
    EXPECT_EQ(-22, mCmd.execute(mEffect));
    V words = batchWords(kTarget, mFilled);
    words[1] = 8;
    EXPECT_EQ(words, mCmd.buffer());

    EXPECT_EQ(1u, mStore.getCommitCount());
    const auto id = [](A code) { return static_cast<uint32_t>(aupParameterId(code)); };
    // In first-write order; the pair written twice holds its later value.
    // clang-format off
    const std::vector<AupParamCache> written = {
            {0xFFFFFFFF, id(A::DVLE), {7}},      {0x2, id(A::DVLA), {8}},
            {0x2, id(A::GEON), {1, 2, 3, -4}},   {0x8, id(A::GEBS), {3, 1, 2, 3, -4}},
            {0x8, id(A::IEBS), {0}},             {0x8, id(A::VOL), {}},
            {0x8, id(A::DOM), {1, 2, 3, 9, -4}}};
    // clang-format on
    EXPECT_EQ(written, mStore.lastCommit());
    EXPECT_TRUE(mStore.storedParams(false).empty());
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace vessa::test
