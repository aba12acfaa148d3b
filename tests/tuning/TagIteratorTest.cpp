#include <android/log.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using S = std::vector<std::string>;
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

    ASSERT_EQ(0, it.init(writeFile("<root major=\"3\"/>", "childless.xml")));
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ("", it.getNodeName());
    it.childrenNext();
    it.next();
    EXPECT_FALSE(it.isCurValid());
}

TEST_F(TagIteratorTest, MovesFollowIndentationAndSkipTheFirstChildOfCompactXml) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeDocument("<first>\n  <inner/>\n  <second/>\n</first>\n<last/>")));
    EXPECT_EQ("text", it.getNodeName()) << "init stands on the leading whitespace";
    EXPECT_FALSE(it.isElementNode());
    it.next();
    it.pushNode();
    it.childrenNext();
    EXPECT_EQ("inner", it.getNodeName());
    it.childrenNext();  // no children: stays
    it.next();
    it.next();
    EXPECT_EQ("second", it.getNodeName());
    it.popNode();
    EXPECT_EQ("first", it.getNodeName());
    it.popNode();
    EXPECT_EQ("first", it.getNodeName()) << "an empty stack leaves the node in place";
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "It's empty in node stack!"));

    ASSERT_EQ(0, it.init(writeFile("<r><outer><a/><b/></outer></r>", "compact.xml")));
    EXPECT_EQ("outer", it.getNodeName());
    it.childrenNext();
    EXPECT_EQ("b", it.getNodeName());
}

TEST_F(TagIteratorTest, AttributeReadersKeepTheirShapes) {
    TagIterator it;
    openAtFirstElement(it, "<band c=\"9\" b=\"5\" a=\"\" d=\"&#52;2x\"/>\n<bare/>");
    S out = {"old", "older", "gone"};
    it.parseNodeWithName({"z", "b"}, out);
    EXPECT_EQ((S{"old", "5"}), out) << "resized; unlisted slots keep their text";
    out.clear();
    it.parseNodeWithName({"b", "a", "b"}, out);
    EXPECT_EQ((S{"5", "", ""}), out) << "a repeated name fills only its first slot";
    out = {"first"};
    it.parseNodeAll(out);
    EXPECT_EQ((S{"first", "9", "5", "", "42x"}), out);
    std::vector<int> numbers = {1};
    it.parseNodeIntVector(numbers);
    EXPECT_EQ((std::vector<int>{1, 9, 5, 0, 42}), numbers);

    it.next();
    out.clear();
    it.parseNodeWithName({"a"}, out);
    EXPECT_TRUE(out.empty()) << "whitespace is not read";
    it.next();
    it.parseNodeWithName({"a", "b"}, out);
    EXPECT_EQ((S{"", ""}), out) << "an element without attributes";
    EXPECT_EQ(0u, mLog.count(kTag, "Invalid node when parsing String vector."));

    // A second init frees the first document (checked by the leak sanitizer).
    ASSERT_EQ(0, it.init(writeDocument("<two/>")));
    it.clearAll();
    EXPECT_FALSE(it.isCurValid());
}

}  // namespace
}  // namespace vessa
