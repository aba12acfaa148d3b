#include <errno.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "platform/AupParamStore.h"
#include "platform/EffectParamParser.h"
#include "platform/LogCapture.h"

namespace vessa {
namespace {

using Caches = std::vector<AupParamCache>;
const char* const kTag = "AupParamStore";

class TheParamStore : public ::testing::Test {
  protected:
    void SetUp() override { mStore.reset(); }
    int set(uint32_t device, int32_t id, std::vector<int32_t> values) {
        return mStore.setParam(device, id, values.data(), static_cast<int>(values.size()));
    }
    AupParamStore& mStore = AupParamStore::getInstance();
};

// Listings are sorted by device; the last commit lists its pairs in the order of
// their first write.
TEST_F(TheParamStore, PublishesPendingWritesAtACommitKeepingEachPairsLastWrite) {
    ASSERT_EQ(0, set(0x8, 20, {1, 2}));
    ASSERT_EQ(0, set(0x2, 30, {3}));
    EXPECT_TRUE(mStore.storedParams(true).empty());
    const Caches sorted = {{0x2, 30, {3}}, {0x8, 20, {1, 2}}};
    EXPECT_EQ(sorted, mStore.storedParams(false));
    EXPECT_EQ(0, mStore.commitChange());
    EXPECT_EQ(sorted, mStore.storedParams(true));
    EXPECT_TRUE(mStore.storedParams(false).empty());
    set(0x8, 20, {9});
    set(0x8, 20, {});
    set(0x2, 31, {4});
    mStore.commitChange();
    EXPECT_EQ((Caches{{0x2, 30, {3}}, {0x2, 31, {4}}, {0x8, 20, {}}}), mStore.storedParams(true));
    EXPECT_EQ((Caches{{0x8, 20, {}}, {0x2, 31, {4}}}), mStore.lastCommit());
}

TEST_F(TheParamStore, KeysAListingByRankInUnsignedDeviceThenIdOrder) {
    set(0xFFFFFFFF, 1, {1});
    set(0x2, static_cast<int32_t>(0x80000000), {2, 3});
    set(0x2, 5, {4});
    mStore.commitChange();
    set(0x2, 5, {6});  // pending: not listed
    android::KeyedVector<uint32_t, AupParamCache*> committed;
    int count = -1;
    ASSERT_EQ(0, mStore.getStoredParams(&committed, true, &count));
    const Caches expected = {{0x2, 5, {4}}, {0x2, 0x80000000, {2, 3}}, {0xFFFFFFFF, 1, {1}}};
    ASSERT_EQ(3, count);
    ASSERT_EQ(3u, committed.size());
    for (uint32_t rank = 0; rank < 3; ++rank) {
        EXPECT_EQ(rank, committed.keyAt(rank));
        EXPECT_EQ(expected[rank], *committed.valueAt(rank));
    }
    // Refused: a result that is not empty, or none at all.
    EXPECT_EQ(-EINVAL, mStore.getStoredParams(&committed, false, &count));
    EXPECT_EQ(-EINVAL, mStore.getStoredParams(nullptr, true, &count));
    AupParamStore::releaseStoredParams(&committed);
    EXPECT_TRUE(committed.isEmpty());
}

TEST_F(TheParamStore, LosesNothingToConcurrentWritersAndCommits) {
    constexpr int kThreads = 4;
    constexpr int kWrites = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kWrites; ++i) {
                set(static_cast<uint32_t>(t), i % 10, {t, i});
                if (i % 50 == 0) mStore.commitChange();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    mStore.commitChange();

    // Each pair holds its thread's last write for that id.
    Caches expected;
    for (int t = 0; t < kThreads; ++t) {
        for (int id = 0; id < 10; ++id) {
            expected.push_back({uint32_t(t), uint32_t(id), {t, kWrites - 10 + id}});
        }
    }
    EXPECT_EQ(expected, mStore.storedParams(true));
    EXPECT_EQ(static_cast<uint64_t>(kThreads * (kWrites / 50) + 1), mStore.getCommitCount());
}

// Null values, a negative count and more values than the limit are refused; so is a new
// entry that would fill the room kept for batches.
TEST_F(TheParamStore, RefusesBadWritesAndKeepsRoomForBatchesWhenDirectWritersFillIt) {
    LogCapture log;
    int32_t value = 1;
    EXPECT_EQ(-EINVAL, mStore.setParam(0x8, 1, nullptr, 2));
    EXPECT_EQ(-EINVAL, mStore.setParam(0x8, 1, &value, -1));
    std::vector<int32_t> many(AupParamStore::kMaxValues + 1, 7);
    EXPECT_EQ(-E2BIG, mStore.setParam(0x8, 1, many.data(), static_cast<int>(many.size())));
    EXPECT_EQ(0, mStore.setParam(0x8, 1, many.data(), AupParamStore::kMaxValues));
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag,
                             "setParam(0x8, 0x1): 1025 values refused, the limit is 1024"));
    EXPECT_EQ(1u, mStore.storedParams(false).size());
    const size_t direct = AupParamStore::kMaxEntries - AupParamStore::kReservedForBatches;
    for (size_t id = 1; id <= direct; ++id) ASSERT_EQ(0, set(0x8, static_cast<int32_t>(id), {1}));
    EXPECT_EQ(-ENOSPC, set(0x8, 0, {1}));
    EXPECT_EQ(0, set(0x8, 2, {5})) << "a known entry may still change";
    EXPECT_TRUE(log.contains(ANDROID_LOG_ERROR, kTag,
                             "setParam(0x8, 0x0): refused, the store is full (1024 entries)"));
    {
        AupParamStore::Batch batch(mStore);
        for (size_t id = 0; id < AupParamStore::kReservedForBatches; ++id) {
            ASSERT_EQ(0, set(0x4, static_cast<int32_t>(id), {2}));
        }
        EXPECT_EQ(-ENOSPC, set(0x4, -1, {2}));
        mStore.commitChange();
    }
    EXPECT_EQ(AupParamStore::kMaxEntries, mStore.storedParams(true).size());
}

// Whether the words pass as a batch; `extraBytes` changes the size given.
bool valid(std::vector<int32_t> words, int extraBytes = 0) {
    return EffectParamParser(words.data(), int(words.size() * 4) + extraBytes).validate();
}

TEST(TheBatchParser, ReadsEveryEntryInOrderOnceValidated) {
    std::vector<int32_t> words = {0x4, 2, -1, 0x656C7664, 2, 7, -8, 0x8, 0x6E6F6567, 0};
    EffectParamParser parser(words.data(), int(words.size() * 4));
    EXPECT_FALSE(parser.next());  // not validated yet
    ASSERT_TRUE(parser.validate());
    parser.begin();
    std::vector<int64_t> read = {parser.getTarget(), parser.getEntryCount()};
    while (parser.next()) {
        read.insert(read.end(), {parser.getDevice(), parser.getParameterId(), parser.getCount()});
        read.insert(read.end(), parser.getValues(), parser.getValues() + parser.getCount());
    }
    EXPECT_EQ((std::vector<int64_t>{4, 2, 0xFFFFFFFF, 0x656C7664, 2, 7, -8, 8, 0x6E6F6567, 0}),
              read);
}

TEST(TheBatchParser, AcceptsOnlyTheExactBatchShape) {
    EXPECT_TRUE(valid({5, 0}));  // a batch without entries is well-formed
    EXPECT_TRUE(valid({5, 1, 2, 3, 1, 9}));

    EXPECT_FALSE(valid({}));
    EXPECT_FALSE(valid({5, -1}));
    EXPECT_FALSE(valid({5, 1}));                    // entry missing
    EXPECT_FALSE(valid({5, 1, 2, 3}));              // entry header cut short
    EXPECT_FALSE(valid({5, 1, 2, 3, 2, 9}));        // values overrun the buffer
    EXPECT_FALSE(valid({5, 1, 2, 3, -1}));          // negative value count
    EXPECT_FALSE(valid({5, 1, 2, 3, 1, 9, 0}));     // a word after the last entry
    EXPECT_FALSE(valid({5, 0x7FFFFFFF, 2, 3, 0}));  // absurd count
    EXPECT_FALSE(valid({5, 1, 2, 3, 0x7FFFFFFF}));  // absurd value count
    EXPECT_FALSE(valid({5, 1, 2, 3, 1, 9}, -1));    // not a whole number of words
    EXPECT_FALSE(valid({5, 1, 2, 3, 1, 9}, -28));   // negative size
    EXPECT_FALSE(EffectParamParser(nullptr, 8).validate());
    // A buffer that does not start on a word boundary.
    const std::vector<int32_t> good = {5, 1, 2, 3, 1, 9};
    std::vector<char> raw(good.size() * 4 + 1);
    std::memcpy(raw.data() + 1, good.data(), good.size() * 4);
    EXPECT_FALSE(EffectParamParser(raw.data() + 1, int(good.size() * 4)).validate());
}

}  // namespace
}  // namespace vessa
