#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/EffectParamParser.h"

namespace vessa {
namespace {

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
