#include <climits>
#include <sstream>

#include "TuningTestSupport.h"
#include "model/StringUtils.h"
#include "tuning/NodeParseUtils.h"

namespace vessa::test {
namespace {

// Numbers in tuning files read exactly as formatted stream reads of an int do:
// non-numeric text is 0, an overflow saturates, a list stops at what it cannot read.
TEST(TheNumberReaders, ReadAsFormattedStreamReadsOfAnIntDo) {
    std::istringstream cases(
            "|12|-3|+7|\t\n-8|12abc|0x10|True|-|- 5|3.9|2147483647|2147483648|-2147483648|"
            "-2147483649|99999999999999999999|1,,2|1, 2|1 ,2|5,x,6|1,99999999999,3|4 5,6,|,5");
    for (std::string text; std::getline(cases, text, '|');) {
        std::istringstream one(text);
        int expected = 0;
        one >> expected;
        EXPECT_EQ(expected, string2Int(text)) << '"' << text << '"';

        V expectedList = {-1};
        std::istringstream list(text);
        for (int value = 0; list >> value;) {
            expectedList.push_back(value);
            if (list.peek() == ',' || list.peek() == ' ') list.ignore();
        }
        V got = {-1};
        string2IntVector(text, got);
        EXPECT_EQ(expectedList, got) << '"' << text << "\" (appended, not replaced)";
    }
    EXPECT_EQ(INT_MAX, string2Int("2147483648"));
}

}  // namespace
}  // namespace vessa::test
