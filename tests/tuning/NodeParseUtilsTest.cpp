#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/NodeParseUtils.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using V = std::vector<int>;
using NodeParseUtilsTest = test::TuningTest;

TEST_F(NodeParseUtilsTest, ValuesAndRows) {
    const std::vector<std::pair<std::string, int>> values = {
            {"value=\"true\"", 1}, {"value=\"false\"", 0}, {"value=\"True\"", 0},
            {"value=\" 7\"", 7},   {"other=\"5\"", 0},     {"x=\"9\" value=\"-3\"", -3}};
    std::string body;
    for (const auto& [attrs, expected] : values) body += "<e " + attrs + "/>\n";
    TagIterator it;
    openAtFirstElement(it, body + "<r list=\"1,2 3\" value=\"9\"/>\n<r/>");
    for (const auto& [attrs, expected] : values) {
        EXPECT_EQ(expected, NodeParseUtils::parseValue(it)) << attrs;
        it.next();
        it.next();
    }
    EXPECT_EQ((V{1, 2, 3}), NodeParseUtils::parseDataRow(it));
    it.next();
    it.next();
    EXPECT_EQ(V{}, NodeParseUtils::parseDataRow(it));
    it.next();
    it.next();
    EXPECT_EQ(0, NodeParseUtils::parseValue(it)) << "no node at all";
}

TEST_F(NodeParseUtilsTest, MixMatrixReadsTheRowsOfTheFirstWrapper) {
    TagIterator it;
    openAtFirstElement(it,
                       "<output-mode>\n  <m>\n    <row c=\"1,0\" x=\"7\"/>\n    <row/>\n"
                       "    <row c=\"0,1\"/>\n  </m>\n  <n>\n    <row c=\"5\"/>\n  </n>\n"
                       "</output-mode>\n<none/>\n<blank>\n  <m>\n  </m>\n</blank>");
    EXPECT_EQ((V{1, 0, 0, 1}), NodeParseUtils::parseMixMatrix(it));
    EXPECT_EQ("output-mode", it.getNodeName());
    for (const char* name : {"none", "blank"}) {
        it.next();
        it.next();
        EXPECT_EQ(V{}, NodeParseUtils::parseMixMatrix(it)) << name;
        EXPECT_EQ(name, it.getNodeName());
    }
    EXPECT_TRUE(stackIsEmpty(it));
}

}  // namespace
}  // namespace vessa
