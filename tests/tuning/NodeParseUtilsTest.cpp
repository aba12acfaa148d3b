#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/NodeParseUtils.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using NodeParseUtilsTest = test::TuningTest;

TEST_F(NodeParseUtilsTest, ParseValueReadsFlagsAndNumbers) {
    const std::vector<std::pair<std::string, int>> cases = {
            {"value=\"true\"", 1},        {"value=\"false\"", 0},
            {"value=\"True\"", 0},        {"value=\"-3\"", -3},
            {"value=\" 7\"", 7},          {"value=\"0x10\"", 0},
            {"other=\"5\"", 0},           {"", 0},
            {"x=\"9\" value=\"12\"", 12}, {"value=\"2147483648\"", INT32_MAX},
    };
    std::string body;
    for (const auto& [attrs, expected] : cases) body += "<e " + attrs + "/>\n";
    TagIterator it;
    openAtFirstElement(it, body);
    for (const auto& [attrs, expected] : cases) {
        EXPECT_EQ(expected, NodeParseUtils::parseValue(it)) << attrs;
        it.next();
        it.next();
    }
    // Past the last element: no node at all.
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ(0, NodeParseUtils::parseValue(it));
}

TEST_F(NodeParseUtilsTest, ParseDataRowReadsOnlyTheFirstAttribute) {
    TagIterator it;
    openAtFirstElement(it, "<r list=\"1,2,3\" value=\"9\"/>\n<r/>\n<r a=\"4 5,6\"/>\n<r a=\"\"/>");
    EXPECT_EQ((std::vector<int>{1, 2, 3}), NodeParseUtils::parseDataRow(it));
    it.next();
    it.next();
    EXPECT_TRUE(NodeParseUtils::parseDataRow(it).empty());
    it.next();
    it.next();
    EXPECT_EQ((std::vector<int>{4, 5, 6}), NodeParseUtils::parseDataRow(it));
    it.next();
    it.next();
    EXPECT_TRUE(NodeParseUtils::parseDataRow(it).empty());
}

TEST_F(NodeParseUtilsTest, ParseMixMatrixConcatenatesTheRowsBelowTheWrapper) {
    TagIterator it;
    openAtFirstElement(it,
                       "<output-mode>\n"
                       "  <matrix>\n"
                       "    <row c=\"1,0\" ignored=\"7\"/>\n"
                       "    <row/>\n"
                       "    <row c=\"0,1\"/>\n"
                       "  </matrix>\n"
                       "  <second><row c=\"5\"/></second>\n"
                       "</output-mode>\n"
                       "<no-wrapper/>\n"
                       "<empty-wrapper>\n  <matrix/>\n</empty-wrapper>\n"
                       "<blank-wrapper>\n</blank-wrapper>");
    EXPECT_EQ((std::vector<int>{1, 0, 0, 1}), NodeParseUtils::parseMixMatrix(it));
    EXPECT_EQ("output-mode", it.getNodeName()) << "the caller's position is restored";
    for (const char* name : {"no-wrapper", "empty-wrapper", "blank-wrapper"}) {
        it.next();
        it.next();
        ASSERT_EQ(name, it.getNodeName());
        EXPECT_TRUE(NodeParseUtils::parseMixMatrix(it).empty()) << name;
        EXPECT_EQ(name, it.getNodeName());
    }
    EXPECT_TRUE(stackIsEmpty(it)) << "every push was popped";
}

}  // namespace
}  // namespace vessa
