#include <android/log.h>
#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <thread>
#include <vector>

#include "EffectTestUtil.h"
#include "effect/AupEffect.h"
#include "effect/SetParamCommand.h"
#include "platform/AupParamStore.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

using P = AupParameter;

TEST(AupParameterTest, IdentifierIsTheLowerCasedCodeLittleEndian) {
    EXPECT_EQ(0x656C7664u, packParameterCode("DvLe"));
    EXPECT_EQ(0x006C6F76u, packParameterCode("VOL"));
    EXPECT_EQ(0x5F623161u, packParameterCode("A1b_"));  // only A-Z fold
    EXPECT_EQ(0u, packParameterCode(""));
    EXPECT_EQ(0u, packParameterCode("DVLEX"));
    // Read back for display: every code of the table survives the round trip.
    for (int i = 0; i < kNumAupParameters; ++i) {
        AupParameter p = static_cast<AupParameter>(i);
        EXPECT_EQ(aupParameterCode(p),
                  unpackParameterCode(static_cast<uint32_t>(aupParameterId(p))));
    }
    EXPECT_EQ("", unpackParameterCode(0));
    EXPECT_EQ(0x006D6F64, aupParameterId(P::DOM));
    EXPECT_STREQ("BMDT", aupParameterCode(static_cast<P>(80)));
    EXPECT_STREQ("", aupParameterCode(static_cast<P>(kNumAupParameters)));
}

class AupEffectTest : public ::testing::Test {
  protected:
    void SetUp() override { mStore.reset(); }

    AupParamStore& mStore = AupParamStore::getInstance();
    AupEffect mEffect{7, android::String16("ignored")};
};

TEST_F(AupEffectTest, BatchIsSentWholeInEntryOrderWithOneCommit) {
    LogCapture log;
    SetParamCommand cmd(0x40000000);
    EXPECT_EQ(0, cmd.execute(mEffect));  // nothing to send
    EXPECT_EQ(0u, mStore.getCommitCount());

    const std::vector<int> a = {1, 2, 3}, b = {-4}, empty;
    cmd.add(P::DVLE, 7);  // before any setDeviceId: device -1
    cmd.setDeviceId(0x2);
    cmd.add(P::DVLA, &a);
    cmd.add(P::GEON, {&a, &empty, &b});
    cmd.setDeviceId(0x8);
    cmd.add(P::GEBS, 3, {&a, &b});
    cmd.add(P::IEBS, 0, {});
    cmd.add(P::VOL, &empty);
    cmd.addParts(P::DOM, {a, 9, empty, b});
    cmd.setDeviceId(0x2);
    cmd.add(P::DVLA, 8);  // the same pair again: the later entry wins
    std::vector<int> words = test::batchWords(0x40000000, {{P::DVLE, {7}, -1},
                                                           {P::DVLA, {1, 2, 3}},
                                                           {P::GEON, {1, 2, 3, -4}},
                                                           {P::GEBS, {3, 1, 2, 3, -4}, 0x8},
                                                           {P::IEBS, {0}, 0x8},
                                                           {P::VOL, {}, 0x8},
                                                           {P::DOM, {1, 2, 3, 9, -4}, 0x8},
                                                           {P::DVLA, {8}}});
    EXPECT_EQ(words, cmd.buffer());
    EXPECT_EQ(-22, cmd.execute(mEffect));
    words[1] = 8;
    EXPECT_EQ(words, cmd.buffer());

    EXPECT_EQ(1u, mStore.getCommitCount());
    const auto id = [](P p) { return static_cast<uint32_t>(aupParameterId(p)); };
    const std::vector<AupParamCache> written = {
            {0xFFFFFFFF, id(P::DVLE), {7}},
            {0x2, id(P::DVLA), {8}},
            {0x2, id(P::GEON), {1, 2, 3, -4}},
            {0x8, id(P::GEBS), {3, 1, 2, 3, -4}},
            {0x8, id(P::IEBS), {0}},
            {0x8, id(P::VOL), {}},
            {0x8, id(P::DOM), {1, 2, 3, 9, -4}},
    };
    EXPECT_EQ(written, mStore.lastCommit());
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
    };
    LogCapture log;
    for (std::vector<int> words : malformed) EXPECT_EQ(-22, mEffect.send(0, words));
    // A well-formed batch with a size that is not a whole number of words.
    std::vector<int> words = {0x2, 1, 0x2, id, 1, 1};
    mEffect.sendSharedStore(words.data(), static_cast<unsigned int>(words.size() * 4 - 2));

    const char* const kInvalid = "sendSharedStore() Invalid data for setting parameter values.";
    EXPECT_EQ(5u, log.lines().size());
    EXPECT_EQ(5u, log.count("AupEffect", kInvalid));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, "AupEffect", kInvalid));
    EXPECT_EQ(0u, mStore.getCommitCount());
    EXPECT_TRUE(mStore.storedParams(false).empty());
}

// Another writer commits as fast as it can while the effect sends batches of
// 400 entries, each batch holding one number everywhere: every published state
// must hold a single number, never a mix of two batches.
TEST_F(AupEffectTest, ForeignCommitsNeverPublishPartOfABatch) {
    constexpr int kEntries = 400;
    const uint32_t id = packParameterCode("DVLE");
    std::atomic<bool> done{false};
    std::thread foreign([&] {
        int32_t value = -1;
        while (!done) {
            mStore.setParam(0x9, 1, &value, 1);
            mStore.commitChange();
            std::vector<AupParamCache> published = mStore.storedParams(true);
            std::set<int32_t> numbers;
            for (const AupParamCache& entry : published) {
                if (entry.getDevice() != 0x9) numbers.insert(entry.getValues()[0]);
            }
            ASSERT_LE(numbers.size(), 1u) << *numbers.begin() << " and " << *numbers.rbegin();
        }
    });
    for (int batch = 0; batch < 300; ++batch) {
        std::vector<int> words = {0x40000000, kEntries};
        for (int e = 0; e < kEntries; ++e) {
            words.insert(words.end(), {0x2, static_cast<int>(id) + e, 1, batch});
        }
        mEffect.send(0, words);
    }
    done = true;
    foreign.join();
    EXPECT_EQ(size_t(kEntries + 1), mStore.storedParams(true).size());
}

}  // namespace
}  // namespace vessa
