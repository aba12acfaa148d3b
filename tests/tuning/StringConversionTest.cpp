#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "model/StringUtils.h"
#include "tuning/NodeParseUtils.h"

namespace vessa {
namespace {

// What the conversions must agree with: formatted stream reads of an int.
int streamInt(const std::string& text) {
    std::istringstream in(text);
    int value = 0;
    in >> value;
    return value;
}

std::vector<int> streamIntList(const std::string& text) {
    std::istringstream in(text);
    std::vector<int> out;
    int value = 0;
    while (in >> value) {
        out.push_back(value);
        if (in.peek() == ',' || in.peek() == ' ') in.ignore();
    }
    return out;
}

const std::vector<std::string> kTexts = {"",
                                         "0",
                                         "12",
                                         "-3",
                                         "+7",
                                         " 7",
                                         "\t\n-8",
                                         "12abc",
                                         "0x10",
                                         "abc",
                                         "-",
                                         "+",
                                         "- 5",
                                         "--5",
                                         "007",
                                         "3.9",
                                         "1e5",
                                         "1,2",
                                         "2147483647",
                                         "2147483648",
                                         "-2147483648",
                                         "-2147483649",
                                         "99999999999999999999999",
                                         "-99999999999999999999",
                                         "4294967296",
                                         " +0012,3",
                                         "\v\f\r9",
                                         "1 2 3",
                                         ",5"};

TEST(StringConversionTest, String2IntReadsAsAStreamDoes) {
    for (const std::string& text : kTexts) {
        EXPECT_EQ(streamInt(text), string2Int(text)) << "text: \"" << text << "\"";
    }
    EXPECT_EQ(12, string2Int("12abc"));
    EXPECT_EQ(0, string2Int("0x10"));
    EXPECT_EQ(0, string2Int("True"));
    EXPECT_EQ(INT_MAX, string2Int("2147483648"));
    EXPECT_EQ(INT_MIN, string2Int("-2147483648"));
    EXPECT_EQ(INT_MIN, string2Int("-99999999999999999999"));
}

TEST(StringConversionTest, String2IntVectorSkipsOneSeparatorAfterEachNumber) {
    std::vector<int> commas;
    string2IntVector("100,200,300", commas);
    std::vector<int> blanks;
    string2IntVector("100 200 300", blanks);
    EXPECT_EQ((std::vector<int>{100, 200, 300}), commas);
    EXPECT_EQ(commas, blanks);

    std::vector<int> out = {7};
    string2IntVector("1,2,", out);
    EXPECT_EQ((std::vector<int>{7, 1, 2}), out) << "appends, and a trailing ',' is harmless";

    const std::vector<std::pair<std::string, std::vector<int>>> cases = {
            {"", {}},
            {"1,,2", {1}},
            {"1, 2", {1, 2}},
            {"1 ,2", {1}},
            {"5,x,6", {5}},
            {"-1,-2,+3", {-1, -2, 3}},
            {"1,99999999999,3", {1}},
            {"4 5,6", {4, 5, 6}},
            {"12abc,4", {12}},
    };
    for (const auto& [text, expected] : cases) {
        std::vector<int> got;
        string2IntVector(text, got);
        EXPECT_EQ(expected, got) << "text: \"" << text << "\"";
    }
    for (const std::string& text : kTexts) {
        std::vector<int> got;
        string2IntVector(text, got);
        EXPECT_EQ(streamIntList(text), got) << "text: \"" << text << "\"";
    }
}

TEST(StringConversionTest, ReadIntReportsWhatItReadAndWhereItStopped) {
    const std::string text = "  -42;x";
    const char* cursor = text.data();
    int value = 1;
    EXPECT_EQ(IntRead::IN_RANGE, readInt(cursor, text.data() + text.size(), value));
    EXPECT_EQ(-42, value);
    EXPECT_EQ(';', *cursor);

    EXPECT_EQ(IntRead::NO_NUMBER, readInt(cursor, text.data() + text.size(), value));
    EXPECT_EQ(0, value);

    // The end bound is honoured even where the text continues with digits.
    const std::string digits = "12345";
    cursor = digits.data();
    EXPECT_EQ(IntRead::IN_RANGE, readInt(cursor, digits.data() + 3, value));
    EXPECT_EQ(123, value);

    const std::string big = "-2147483649";
    cursor = big.data();
    EXPECT_EQ(IntRead::OUT_OF_RANGE, readInt(cursor, big.data() + big.size(), value));
    EXPECT_EQ(INT_MIN, value);
    EXPECT_EQ(big.data() + big.size(), cursor) << "all digits are consumed";
}

}  // namespace
}  // namespace vessa
