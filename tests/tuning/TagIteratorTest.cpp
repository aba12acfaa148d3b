#include <android/log.h>
#include <gtest/gtest.h>

#include <climits>
#include <sstream>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "model/StringUtils.h"
#include "tuning/NodeParseUtils.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using S = std::vector<std::string>;
using test::V;
using TagIteratorTest = test::TuningTest;

const char* const kTag = "TagIterator";

TEST_F(TagIteratorTest, UnreadableFilesGiveTheirErrorLineAndNoNode) {
    TagIterator it;
    EXPECT_EQ(-22, it.init(""));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "Invalide xml file path, 40"));
    const S paths = {mDir.path() + "/missing.xml", writeFile("", "empty.xml"),
                     writeFile("gain=3\n", "text.xml"),
                     writeFile("<?xml version=\"1.0\"?>\n<!-- no root -->\n", "noroot.xml"),
                     writeFile("<root>\n  <a value=\"1\"/>\n  <b", "truncated.xml")};
    for (const std::string& path : paths) {
        TagIterator bad;
        EXPECT_EQ(-22, bad.init(path)) << path;
        S out = {"kept"};
        bad.parseNodeAll(out);
        EXPECT_EQ(S{"kept"}, out);
    }
    EXPECT_EQ(paths.size(), mLog.count(kTag, "fail to call xmlReadFile,  46"));
    EXPECT_EQ(paths.size(), mLog.count(kTag, "Invalid node when parsing String vector."));

    // A second init frees the first document (checked by the leak sanitizer).
    ASSERT_EQ(0, it.init(writeDocument("<first/>")));
    ASSERT_EQ(0, it.init(writeFile("<root major=\"3\"/>", "childless.xml")));
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ("", it.getNodeName());
    it.childrenNext();
    it.next();
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ(0, NodeParseUtils::parseValue(it));
}

// Numbers in tuning files read exactly as formatted stream reads of an int do:
// non-numeric text is 0, an overflow saturates, a list stops at what it cannot read.
TEST(StringConversionTest, ConversionsReadAsStreamsDo) {
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
}  // namespace vessa
