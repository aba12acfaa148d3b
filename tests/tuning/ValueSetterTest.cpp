#include <climits>
#include <map>
#include <sstream>

#include "TuningTestSupport.h"
#include "model/StringUtils.h"
#include "tuning/NodeParseUtils.h"

namespace vessa::test {
namespace {

using Values = std::map<int, V>;

using ATagIterator = TuningTest;
using S = std::vector<std::string>;
const char* const kTag = "TagIterator";

// An empty path is refused before libxml2 is asked, with a line of its own.
TEST_F(ATagIterator, RefusesAnEmptyPathOrAnUnreadableFileAndThenReadsNoNode) {
    const S paths = {"",
                     mDir.path() + "/missing.xml",
                     writeFile("", "empty.xml"),
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
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "Invalide xml file path, 40"));
    EXPECT_EQ(paths.size() - 1, mLog.count(kTag, "fail to call xmlReadFile,  46"));
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

// Each case is one element and every value its setter stores, by parameter number.
const std::pair<std::string, Values> kElements[] = {
        {"<ieq-enable value='true'/>", {{35, {1}}}},
        {"<ieq-amount value='True'/>", {{34, {0}}}},
        {"<peak-value x='9' value=' -3'/>", {{47, {-3}}}},
        {"<virtualizer-enable/>", {{83, {0}}}},
        {"<regulator-stress-amount v='26,16 9' w='1'/>", {{59, {26, 16, 9}}}},
        {"<virtual-bass-harmgains/>", {{70, {}}}},
        {"<drc-metadata/>", {{20, {0}}}},  // DRC rows are never empty
        {"<output-mode>\n <m>\n  <row c='16384,16384' x='7'/>\n  <row/>\n"
         "  <row c='8192'/>\n </m>\n <n>\n  <row c='5'/>\n </n>\n</output-mode>",
         {{46, {16384, 16384, 8192}}}},
        {"<output-mode>\n <m>\n </m>\n</output-mode>", {{46, {}}}},
        {"<virtual-bass-subgains a='-80' b='x' c='-160'/>", {{81, {-80, 0, -160}}}},
        {"<virtual-bass-mix-freqs frequency_high='170' frequency_low='42'/>",
         {{74, {42}}, {73, {170}}}},
        {"<virtual-bass-src-freqs frequency_low='40'/>", {{80, {40}}, {79, {0}}}},
        // gain_right fills 4; the surround gains only where written.
        {"<audio-optimizer-bands>\n  <band frequency='100' gain_left='1' gain_right='2' "
         "gain_left_surround='3'/>\n  <band frequency='200' gain_right='5' "
         "gain_right_surround=''/>\n  <b frequency='300' gain_left='7' gain_right='8'/>\n"
         "</audio-optimizer-bands>",
         {{1, {100, 200, 300}}, {2, {1, 0, 7}}, {4, {2, 5, 8}}, {3, {3}}, {5, {}}}},
        {"<regulator-tuning>\n  <b frequency='65' threshold_low='-224' "
         "threshold_high='-32' isolated_band='true'/>\n  <b frequency='136' "
         "threshold_low='-221' isolated_band='TRUE'/>\n</regulator-tuning>",
         {{50, {65, 136}}, {61, {-224, -221}}, {60, {-32, 0}}, {51, {1, 0}}}},
        // IEQ bands end at the first other element; a missing target ends the targets.
        {"<ieq>\n <a>\n  <b>\n   <band_ieq frequency='100' target='-1'/>\n"
         "   <band_ieq frequency='200'/>\n   <band_ieq frequency='300,400' target='-3'/>\n"
         "   <band frequency='500'/>\n   <band_ieq frequency='600'/>\n  </b>\n </a>\n</ieq>",
         {{36, {100, 200, 300, 400}}, {38, {-1}}}},
        {"<geq>\n <x>\n  <y>\n   <b1 frequency='32' gain='-12'/>\n"
         "   <other frequency='64' gain='96'/>\n  </y>\n </x>\n</geq>",
         {{24, {32, 64}}, {25, {-12, 96}}}},
};

class EachValueSetter : public TuningTest {
  protected:
    // Opens a document holding `xml`, stands on its element and applies the
    // element's setter to a fresh record.
    Values apply(const std::string& xml) {
        EXPECT_EQ(0, mIt.init(writeDocument(xml)));
        mIt.next();
        ValueSetter* setter = mCollection.getValueSetter(mIt.getNodeName());
        EXPECT_NE(nullptr, setter) << xml;
        Tuning record("", Endpoint::SPEAKER, false);
        if (setter) setter->set(record, mIt);
        Values got;
        for (const auto& [p, values] : record.values()) got[toInt(p)] = values;
        return got;
    }

    TagIterator mIt;
    SetterCollection mCollection;
};

// Only the end of the IEQ bands is reported. The setter leaves the iterator on its
// element with an empty stack: a pop logs and moves nothing.
TEST_F(EachValueSetter, FillsItsParametersInTheOrderOfTheFormatAndStaysOnItsElement) {
    for (const auto& [xml, expected] : kElements) {
        EXPECT_EQ(expected, apply(xml)) << xml;
        const std::string name = mIt.getNodeName();
        const size_t pops = mLog.count("TagIterator", "It's empty in node stack!");
        mIt.popNode();
        EXPECT_EQ(pops + 1, mLog.count("TagIterator", "It's empty in node stack!")) << name;
        EXPECT_EQ(name, mIt.getNodeName());
    }
    EXPECT_EQ(1u, mLog.count("ValueSetter", "No attribute band_ieq was found!"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_INFO, "ValueSetter", "No attribute band_ieq was found!"));
}

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
