#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "platform/EffectParamParser.h"

namespace vessa {
namespace {

int bytes(const std::vector<int32_t>& words) {
    return static_cast<int>(words.size() * 4);
}

bool valid(std::vector<int32_t> words, int size) {
    EffectParamParser parser(words.data(), size);
    return parser.validate();
}

bool valid(const std::vector<int32_t>& words) {
    return valid(words, bytes(words));
}

TEST(EffectParamParserTest, WalksEveryEntryOfAWellFormedBatch) {
    // clang-format off
    std::vector<int32_t> words = {0x40000000, 3,
                                  0x2, 0x656C7664, 2, 7, -8,
                                  -1, 0x006D6F64, 0,
                                  0x8, 0x6E6F6567, 1, 42};
    // clang-format on
    EffectParamParser parser(words.data(), bytes(words));
    EXPECT_FALSE(parser.next());  // not validated yet
    ASSERT_TRUE(parser.validate());
    EXPECT_EQ(0x40000000, parser.getTarget());
    EXPECT_EQ(3, parser.getEntryCount());
    EXPECT_EQ(nullptr, parser.getValues());  // no current entry yet

    parser.begin();
    ASSERT_TRUE(parser.next());
    EXPECT_EQ(0x2u, parser.getDevice());
    EXPECT_EQ(0x656C7664, parser.getParameterId());
    ASSERT_EQ(2, parser.getCount());
    EXPECT_EQ(7, parser.getValues()[0]);
    EXPECT_EQ(-8, parser.getValues()[1]);

    ASSERT_TRUE(parser.next());
    EXPECT_EQ(0xFFFFFFFFu, parser.getDevice());
    EXPECT_EQ(0, parser.getCount());

    ASSERT_TRUE(parser.next());
    EXPECT_EQ(0x8u, parser.getDevice());
    EXPECT_EQ(42, parser.getValues()[0]);
    EXPECT_FALSE(parser.next());
    EXPECT_EQ(0u, parser.getDevice());

    // begin() starts over.
    parser.begin();
    ASSERT_TRUE(parser.next());
    EXPECT_EQ(0x656C7664, parser.getParameterId());
}

TEST(EffectParamParserTest, AcceptsOnlyTheExactBatchShape) {
    EXPECT_TRUE(valid({5, 0}));  // a batch without entries is well-formed
    EXPECT_TRUE(valid({5, 1, 2, 3, 0}));

    EXPECT_FALSE(valid({}));
    EXPECT_FALSE(valid({5}));
    EXPECT_FALSE(valid({5, -1}));
    EXPECT_FALSE(valid({5, 1}));                    // entry missing
    EXPECT_FALSE(valid({5, 1, 2, 3}));              // entry header cut short
    EXPECT_FALSE(valid({5, 1, 2, 3, 2, 9}));        // values overrun the buffer
    EXPECT_FALSE(valid({5, 1, 2, 3, -1}));          // negative value count
    EXPECT_FALSE(valid({5, 2, 2, 3, 1, 9}));        // count says two, one present
    EXPECT_FALSE(valid({5, 1, 2, 3, 1, 9, 0}));     // a word after the last entry
    EXPECT_FALSE(valid({5, 0x7FFFFFFF, 2, 3, 0}));  // absurd count
    EXPECT_FALSE(valid({5, 1, 2, 3, 0x7FFFFFFF}));  // absurd value count

    const std::vector<int32_t> good = {5, 1, 2, 3, 1, 9};
    EXPECT_FALSE(valid(good, bytes(good) - 1));  // not a whole number of words
    EXPECT_FALSE(valid(good, bytes(good) + 4));  // claims more than the batch holds
    EXPECT_FALSE(valid(good, -4));
    EXPECT_FALSE(EffectParamParser(nullptr, 8).validate());

    // A buffer that does not start on a word boundary.
    std::vector<char> raw(bytes(good) + 1);
    std::memcpy(raw.data() + 1, good.data(), good.size() * 4);
    EXPECT_FALSE(EffectParamParser(raw.data() + 1, bytes(good)).validate());
}

TEST(EffectParamParserTest, RefusedBufferYieldsNoEntry) {
    std::vector<int32_t> words = {5, 2, 2, 3, 1, 9};
    EffectParamParser parser(words.data(), bytes(words));
    EXPECT_FALSE(parser.validate());
    parser.begin();
    EXPECT_FALSE(parser.next());
    EXPECT_EQ(0, parser.getCount());
    EXPECT_EQ(0, parser.getEntryCount());
}

}  // namespace
}  // namespace vessa
