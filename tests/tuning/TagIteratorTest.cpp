#include <android/log.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using test::TuningTest;

using TagIteratorTest = TuningTest;

const char* const kTag = "TagIterator";
const char* const kInvalidNode = "Invalid node when parsing String vector.";

TEST_F(TagIteratorTest, InitRejectsWhatIsNotAReadableDocument) {
    TagIterator it;
    EXPECT_EQ(-22, it.init(""));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "Invalide xml file path, 40"));

    const std::vector<std::string> unreadable = {
            mDir.path() + "/missing.xml",
            writeFile("", "empty.xml"),
            writeFile("gain=3\nnot a markup file\n", "text.xml"),
            writeFile("<?xml version=\"1.0\"?>\n<!-- only a comment -->\n", "noroot.xml"),
            writeFile("<root>\n  <a value=\"1\"/>\n  <b", "truncated.xml"),
            writeFile("<root><a></b></root>", "mismatched.xml"),
    };
    for (const std::string& path : unreadable) {
        mLog.clear();
        TagIterator bad;
        EXPECT_EQ(-22, bad.init(path)) << path;
        EXPECT_EQ(1u, mLog.count(kTag, "fail to call xmlReadFile,  46")) << path;
        EXPECT_FALSE(bad.isCurValid());
        // Nothing to read: readers report and leave their output alone.
        std::vector<std::string> out = {"kept"};
        bad.parseNodeAll(out);
        EXPECT_EQ((std::vector<std::string>{"kept"}), out);
        EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, kInvalidNode));
    }
}

TEST_F(TagIteratorTest, RootWithoutChildrenLeavesNoCurrentNode) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeFile("<root major=\"3\"/>")));
    EXPECT_FALSE(it.isCurValid());
    EXPECT_FALSE(it.isElementNode());
    EXPECT_FALSE(it.isChildrenValid());
    EXPECT_FALSE(it.isNextValid());
    EXPECT_EQ("", it.getNodeName());
    it.next();
    it.childrenNext();
    EXPECT_FALSE(it.isCurValid());
    std::vector<int> numbers = {5};
    it.parseNodeIntVector(numbers);
    EXPECT_EQ((std::vector<int>{5}), numbers);
    EXPECT_EQ(1u, mLog.count(kTag, kInvalidNode));
}

TEST_F(TagIteratorTest, MovesFollowTheWhitespaceOfIndentedXml) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeDocument("  <first>\n    <inner a=\"1\"/>\n    <second/>\n"
                                       "  </first>\n  <last/>")));
    // init stands on the whitespace before the first element.
    EXPECT_TRUE(it.isCurValid());
    EXPECT_FALSE(it.isElementNode());
    EXPECT_EQ("text", it.getNodeName());
    EXPECT_TRUE(it.isNextValid());
    it.next();
    EXPECT_EQ("first", it.getNodeName());
    EXPECT_TRUE(it.isElementNode());
    EXPECT_TRUE(it.isChildrenValid());

    it.pushNode();
    it.childrenNext();
    EXPECT_EQ("inner", it.getNodeName());
    EXPECT_FALSE(it.isChildrenValid());
    it.childrenNext();  // no children: stays
    EXPECT_EQ("inner", it.getNodeName());
    it.next();
    it.next();
    EXPECT_EQ("second", it.getNodeName());
    it.next();
    it.next();
    EXPECT_FALSE(it.isCurValid()) << "past the last child";
    it.next();
    EXPECT_FALSE(it.isCurValid());
    it.popNode();
    EXPECT_EQ("first", it.getNodeName());
    it.next();
    it.next();
    EXPECT_EQ("last", it.getNodeName());
    EXPECT_TRUE(it.isNextValid()) << "the closing whitespace follows";
}

TEST_F(TagIteratorTest, CompactXmlMakesChildrenNextSkipTheFirstChildElement) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeFile("<root><outer><a/><b/><c/></outer></root>")));
    EXPECT_EQ("outer", it.getNodeName()) << "no whitespace: the first child is an element";
    it.childrenNext();
    EXPECT_EQ("b", it.getNodeName());

    TagIterator single;
    ASSERT_EQ(0, single.init(writeFile("<root><outer><only/></outer></root>", "one.xml")));
    single.childrenNext();
    EXPECT_FALSE(single.isCurValid());
}

TEST_F(TagIteratorTest, PopNodeRestoresInLastInFirstOutOrder) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeDocument("<a/>\n<b/>\n<c/>")));
    it.next();
    it.pushNode();  // a
    it.next();
    it.next();
    it.pushNode();  // b
    it.next();
    it.next();
    EXPECT_EQ("c", it.getNodeName());
    it.popNode();
    EXPECT_EQ("b", it.getNodeName());
    it.popNode();
    EXPECT_EQ("a", it.getNodeName());
    it.popNode();
    EXPECT_EQ("a", it.getNodeName()) << "an empty stack leaves the node where it was";
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "It's empty in node stack!"));

    // A missing node is saved and restored like any other.
    while (it.isCurValid()) it.next();
    it.pushNode();
    it.popNode();
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ(1u, mLog.count(kTag, "It's empty in node stack!"));
}

TEST_F(TagIteratorTest, ParseNodeWithNameFillsOneSlotPerName) {
    TagIterator it;
    openAtFirstElement(it, "<band c=\"9\" b=\"5\" a=\"\" d=\"x\"/>\n<bare/>");

    std::vector<std::string> out;
    it.parseNodeWithName({"b", "z", "a"}, out);
    EXPECT_EQ((std::vector<std::string>{"5", "", ""}), out);

    // Surplus entries go; entries within the new size are kept when not written.
    out = {"old", "older", "gone"};
    it.parseNodeWithName({"z", "c"}, out);
    EXPECT_EQ((std::vector<std::string>{"old", "9"}), out);

    // A name listed twice: the first slot gets the value, the later one nothing.
    out.clear();
    it.parseNodeWithName({"b", "b"}, out);
    EXPECT_EQ((std::vector<std::string>{"5", ""}), out);

    // Without names: every value in document order, appended.
    out = {"first"};
    it.parseNodeAll(out);
    EXPECT_EQ((std::vector<std::string>{"first", "9", "5", "", "x"}), out);

    it.next();
    it.next();
    out.clear();
    it.parseNodeWithName({"a", "b"}, out);
    EXPECT_EQ((std::vector<std::string>{"", ""}), out) << "an element without attributes";

    // Whitespace is no element: nothing is read and nothing is logged.
    it.next();
    ASSERT_FALSE(it.isElementNode());
    out = {"kept"};
    it.parseNodeWithName({"a"}, out);
    EXPECT_EQ((std::vector<std::string>{"kept"}), out);
    EXPECT_EQ(0u, mLog.count(kTag, kInvalidNode));
}

TEST_F(TagIteratorTest, ParseNodeIntVectorConvertsEveryAttribute) {
    TagIterator it;
    openAtFirstElement(it, "<g a=\"3\" b=\"-4\" c=\"x\" d=\"12abc\" e=\"&#52;2\"/>");
    std::vector<int> out = {1};
    it.parseNodeIntVector(out);
    EXPECT_EQ((std::vector<int>{1, 3, -4, 0, 12, 42}), out);
}

TEST_F(TagIteratorTest, ReinitAndClearAllReleaseTheDocument) {
    TagIterator it;
    ASSERT_EQ(0, it.init(writeDocument("<one/>")));
    ASSERT_EQ(0, it.init(writeFile("<root>\n<two/>\n</root>", "second.xml")));
    it.next();
    EXPECT_EQ("two", it.getNodeName());

    it.clearAll();
    EXPECT_FALSE(it.isCurValid());
    EXPECT_EQ("", it.getNodeName());
    it.clearAll();  // twice is harmless
    ASSERT_EQ(0, it.init(writeDocument("<three/>")));
    it.next();
    EXPECT_EQ("three", it.getNodeName());
}

}  // namespace
}  // namespace vessa
