#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "platform/AupParamStore.h"

namespace vessa {
namespace {

using Caches = std::vector<AupParamCache>;
using StoredParams = android::KeyedVector<uint32_t, AupParamCache*>;

class AupParamStoreTest : public ::testing::Test {
  protected:
    void SetUp() override { mStore.reset(); }
    void TearDown() override { mStore.reset(); }

    int set(uint32_t device, int32_t id, std::vector<int32_t> values) {
        return mStore.setParam(device, id, values.data(), static_cast<int>(values.size()));
    }

    AupParamStore& mStore = AupParamStore::getInstance();
};

TEST_F(AupParamStoreTest, ValuesBecomeVisibleOnlyAtCommit) {
    ASSERT_EQ(0, set(0x8, 20, {1, 2}));
    ASSERT_EQ(0, set(0x2, 30, {3}));
    EXPECT_TRUE(mStore.storedParams(true).empty());
    EXPECT_EQ((Caches{{0x2, 30, {3}}, {0x8, 20, {1, 2}}}), mStore.storedParams(false));

    EXPECT_EQ(0, mStore.commitChange());
    EXPECT_EQ(1u, mStore.getCommitCount());
    // The last batch keeps its write order.
    EXPECT_EQ((Caches{{0x8, 20, {1, 2}}, {0x2, 30, {3}}}), mStore.lastCommit());
    const Caches first = {{0x2, 30, {3}}, {0x8, 20, {1, 2}}};
    EXPECT_EQ(first, mStore.storedParams(true));
    EXPECT_TRUE(mStore.storedParams(false).empty());

    // A second batch: the last write of a pair wins, untouched pairs stay.
    set(0x8, 20, {9});
    set(0x8, 20, {});
    set(0x2, 31, {4});
    EXPECT_EQ(first, mStore.storedParams(true));
    EXPECT_EQ((Caches{{0x2, 31, {4}}, {0x8, 20, {}}}), mStore.storedParams(false));
    mStore.commitChange();
    EXPECT_EQ((Caches{{0x2, 30, {3}}, {0x2, 31, {4}}, {0x8, 20, {}}}), mStore.storedParams(true));
    EXPECT_EQ((Caches{{0x8, 20, {}}, {0x2, 31, {4}}}), mStore.lastCommit());
}

TEST_F(AupParamStoreTest, ListingIsSortedByUnsignedDeviceThenId) {
    set(0xFFFFFFFF, 1, {1});
    set(0x40000000, 2, {2});
    set(0x2, static_cast<int32_t>(0x80000000), {3});
    set(0x2, 5, {4});
    mStore.commitChange();
    EXPECT_EQ((Caches{{0x2, 5, {4}},
                      {0x2, 0x80000000, {3}},
                      {0x40000000, 2, {2}},
                      {0xFFFFFFFF, 1, {1}}}),
              mStore.storedParams(true));
}

TEST_F(AupParamStoreTest, GetStoredParamsFillsAKeyedVectorByRank) {
    set(0x8, 7, {1, 2, 3});
    set(0x2, 9, {4});
    mStore.commitChange();
    set(0x2, 9, {5});

    StoredParams committed;
    int count = -1;
    ASSERT_EQ(0, mStore.getStoredParams(&committed, true, &count));
    ASSERT_EQ(2, count);
    ASSERT_EQ(2u, committed.size());
    EXPECT_EQ(AupParamCache(0x2, 9, {4}), *committed.valueFor(0));
    EXPECT_EQ(AupParamCache(0x8, 7, {1, 2, 3}), *committed.valueFor(1));
    EXPECT_EQ(3, committed.valueFor(1)->getCount());

    // Refused: a result that is not empty, or none at all.
    EXPECT_EQ(-22, mStore.getStoredParams(&committed, false, &count));
    EXPECT_EQ(-22, mStore.getStoredParams(nullptr, true, &count));
    AupParamStore::releaseStoredParams(&committed);
    EXPECT_TRUE(committed.isEmpty());

    StoredParams pending;
    ASSERT_EQ(0, mStore.getStoredParams(&pending, false, nullptr));
    ASSERT_EQ(1u, pending.size());
    EXPECT_EQ(AupParamCache(0x2, 9, {5}), *pending.valueFor(0));
    AupParamStore::releaseStoredParams(&pending);
}

TEST_F(AupParamStoreTest, RefusesInvalidValues) {
    EXPECT_EQ(-22, mStore.setParam(0x2, 1, nullptr, 2));
    int32_t value = 1;
    EXPECT_EQ(-22, mStore.setParam(0x2, 1, &value, -1));
    EXPECT_EQ(0, mStore.setParam(0x2, 1, nullptr, 0));
    EXPECT_EQ((Caches{{0x2, 1, {}}}), mStore.storedParams(false));
}

TEST_F(AupParamStoreTest, ConcurrentWritersAndCommitsLoseNothing) {
    constexpr int kThreads = 4;
    constexpr int kWrites = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([this, t] {
            for (int i = 0; i < kWrites; ++i) {
                int32_t values[2] = {t, i};
                mStore.setParam(static_cast<uint32_t>(t), i % 10, values, 2);
                if (i % 50 == 0) mStore.commitChange();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    mStore.commitChange();

    const Caches stored = mStore.storedParams(true);
    ASSERT_EQ(static_cast<size_t>(kThreads * 10), stored.size());
    for (const AupParamCache& cache : stored) {
        // Each pair holds its thread's last write for that id.
        const int32_t id = static_cast<int32_t>(cache.getParameterId());
        EXPECT_EQ(
                (std::vector<int32_t>{static_cast<int32_t>(cache.getDevice()), kWrites - 10 + id}),
                cache.getValues());
    }
    EXPECT_EQ(static_cast<uint64_t>(kThreads * (kWrites / 50) + 1), mStore.getCommitCount());
}

}  // namespace
}  // namespace vessa
