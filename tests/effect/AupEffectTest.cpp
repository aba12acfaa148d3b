#include <android/log.h>

#include <atomic>
#include <set>
#include <thread>

#include "EffectTestUtil.h"

namespace vessa::test {
namespace {

// Tests that write into the process's one parameter store start from an empty one.
class TheEffect : public ::testing::Test {
  protected:
    void SetUp() override { mStore.reset(); }
    AupParamStore& mStore = AupParamStore::getInstance();
    AupEffect mEffect{7, android::String16("ignored")};
    const int mId = static_cast<int>(packParameterCode("DVLE"));
};

// Which shapes are malformed is the batch parser's to decide (its own tests
// list them); here a batch whose first entry is good must still leave nothing.
TEST_F(TheEffect, RefusesAMalformedBatchWholeWithAnErrorLine) {
    LogCapture log;
    V words = {0x2, 2, 0x2, mId, 1, 1};  // fewer entries than counted
    EXPECT_EQ(-22, mEffect.send(0, words));
    words[1] = 1;  // well-formed, but given with a size that is not whole words
    mEffect.sendSharedStore(words.data(), static_cast<unsigned int>(words.size() * 4 - 2));

    const char* const kInvalid = "sendSharedStore() Invalid data for setting parameter values.";
    EXPECT_EQ(2u, log.lines().size());
    EXPECT_EQ(2u, log.count("AupEffect", kInvalid));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "AupEffect", kInvalid));
    EXPECT_EQ(0u, mStore.getCommitCount());
    EXPECT_TRUE(mStore.storedParams(false).empty());
}

// Another writer commits as fast as it can while the effect sends batches of
// 400 entries, each batch holding one number everywhere: every published state
// must hold a single number, never a mix of two batches.
TEST_F(TheEffect, NeverPublishesPartOfABatchToConcurrentCommits) {
    constexpr int kEntries = 400;
    std::atomic<bool> done{false};
    std::thread foreign([&] {
        int32_t value = -1;
        while (!done) {
            mStore.setParam(0x9, 1, &value, 1);
            mStore.commitChange();
            std::set<int32_t> numbers;
            for (const AupParamCache& entry : mStore.storedParams(true)) {
                if (entry.getDevice() != 0x9) numbers.insert(entry.getValues()[0]);
            }
            ASSERT_LE(numbers.size(), 1u) << *numbers.begin() << " and " << *numbers.rbegin();
        }
    });
    for (int batch = 0; batch < 300; ++batch) {
        V words = {0x40000000, kEntries};
        for (int e = 0; e < kEntries; ++e) words.insert(words.end(), {0x2, mId + e, 1, batch});
        mEffect.send(0, words);
    }
    done = true;
    foreign.join();
    EXPECT_EQ(size_t(kEntries + 1), mStore.storedParams(true).size());
}

constexpr int kTarget = 0x40000000;

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

class ACommandToTheEffect : public TheEffect {
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
    // clang-format off
    const std::vector<Entry> mFilled = {
            {A::DVLE, {7}, -1},                  {A::DVLA, {1, 2, 3}},
            {A::GEON, {1, 2, 3, -4}},            {A::GEBS, {3, 1, 2, 3, -4}, 0x8},
            {A::IEBS, {0}, 0x8},                 {A::VOL, {}, 0x8},
            {A::DOM, {1, 2, 3, 9, -4}, 0x8},     {A::DVLA, {8}}};
    // clang-format on
};

// Nothing is sent while it is empty. Each entry carries the device set before it was added.
TEST_F(ACommandToTheEffect, CountsItsEntriesAndSendsTheBatchInOneCommit) {
    LogCapture log;
    EXPECT_EQ(0, mCmd.execute(mEffect));
    EXPECT_EQ(0u, mStore.getCommitCount());
    fill();
    EXPECT_EQ(-22, mCmd.execute(mEffect));
    V words = batchWords(kTarget, mFilled);
    words[1] = 8;
    EXPECT_EQ(words, mCmd.buffer());

    // How the effect parses the words and how the store keeps them is their own tests';
    // here the eight entries, one pair written twice, arrive in a single commit.
    EXPECT_EQ(1u, mStore.getCommitCount());
    EXPECT_EQ(7u, mStore.lastCommit().size());
    EXPECT_EQ((AupParamCache{0x2, uint32_t(aupParameterId(A::DVLA)), {8}}), mStore.lastCommit()[1]);
    EXPECT_TRUE(mStore.storedParams(false).empty());
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace vessa::test
