#include <android/log.h>

#include <atomic>
#include <set>
#include <thread>

#include "EffectTestUtil.h"

namespace vessa::test {
namespace {

class TheEffect : public StoreTest {
  protected:
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

}  // namespace
}  // namespace vessa::test
