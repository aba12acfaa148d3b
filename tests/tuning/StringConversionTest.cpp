#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "model/StringUtils.h"
#include "tuning/NodeParseUtils.h"

namespace vessa {
namespace {

// Both conversions must read exactly as formatted stream reads of an int do.
TEST(StringConversionTest, ConversionsReadAsStreamsDo) {
    std::istringstream cases(
            "|12|-3|+7|\t\n-8|12abc|0x10|True|-|- 5|3.9|2147483647|2147483648|-2147483648|"
            "-2147483649|99999999999999999999|1,,2|1, 2|1 ,2|5,x,6|1,99999999999,3|4 5,6,|,5");
    for (std::string text; std::getline(cases, text, '|');) {
        std::istringstream one(text);
        int expected = 0;
        one >> expected;
        EXPECT_EQ(expected, string2Int(text)) << '"' << text << '"';

        std::vector<int> expectedList = {-1};
        std::istringstream list(text);
        for (int value = 0; list >> value;) {
            expectedList.push_back(value);
            if (list.peek() == ',' || list.peek() == ' ') list.ignore();
        }
        std::vector<int> got = {-1};
        string2IntVector(text, got);
        EXPECT_EQ(expectedList, got) << '"' << text << "\" (appended, not replaced)";
    }
    EXPECT_EQ(INT_MAX, string2Int("2147483648"));

    const std::string digits = "12345";
    const char* cursor = digits.data();
    int value = 0;
    EXPECT_EQ(IntRead::IN_RANGE, readInt(cursor, digits.data() + 3, value));
    EXPECT_EQ(123, value) << "the end bound is honoured";
}

}  // namespace
}  // namespace vessa
