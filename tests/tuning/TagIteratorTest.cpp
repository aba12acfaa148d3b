#include "TuningTestSupport.h"
#include "tuning/NodeParseUtils.h"

namespace vessa::test {
namespace {

using ATagIterator = TuningTest;
using S = std::vector<std::string>;

const char* const kTag = "TagIterator";

TEST_F(ATagIterator, RefusesAnEmptyPathWithItsErrorLine) {
    TagIterator it;
    EXPECT_EQ(-22, it.init(""));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "Invalide xml file path, 40"));
}

TEST_F(ATagIterator, RefusesUnreadableFilesAndThenReadsNoNode) {
    const S paths = {mDir.path() + "/missing.xml", writeFile("", "empty.xml"),
                     writeFile("gain=3\n", "text.xml"),
                     writeFile("<?xml version='1.0'?>\n<!-- no root -->\n", "noroot.xml"),
                     writeFile("<root>\n  <a value='1'/>\n  <b", "truncated.xml")};
    for (const std::string& path : paths) {
        TagIterator it;
        EXPECT_EQ(-22, it.init(path)) << path;
        S out = {"kept"};
        it.parseNodeAll(out);
        EXPECT_EQ(S{"kept"}, out);
    }
    EXPECT_EQ(paths.size(), mLog.count(kTag, "fail to call xmlReadFile,  46"));
    EXPECT_EQ(paths.size(), mLog.count(kTag, "Invalid node when parsing String vector."));
}

// A second init frees the first document (checked by the leak sanitizer).
TEST_F(ATagIterator, StandsOnNoNodeInAChildlessRootAndCannotMoveOn) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeDocument("<first/>")));
    ASSERT_EQ(0, it.init(writeFile("<root major='3'/>", "childless.xml")));
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ("", it.getNodeName());
    it.childrenNext();
    it.next();
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ(0, NodeParseUtils::parseValue(it));
}

}  // namespace
}  // namespace vessa::test
