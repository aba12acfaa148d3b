#include <android/log.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

namespace vessa {
namespace {

using V = std::vector<int>;

const char* const kTag = "TuningFileParser";

std::string formatVersion(const std::string& minor, const std::string& maintenance) {
    return "<format_version major=\"3\" minor=\"" + minor + "\" maintenance=\"" + maintenance +
           "\"/>\n";
}

// Gives every version-dependent rule something to act on.
const std::string kRecords =
        "<authorized_technologies>\n  <t virtual_bass_process=\"3\"/>\n</authorized_technologies>\n"
        "<profile id=\"1\" name=\"Movie\" group=\"mobility\">\n"
        "  <data>\n"
        "    <ieq-enable value=\"1\"/>\n    <ieq-amount value=\"9\"/>\n"
        "    <reverb-suppression-enable value=\"1\"/>\n"
        "    <endpoint_type id=\"speaker\">\n"
        "      <include preset=\"ieq_detailed\"/>\n"
        "      <hearing-protection-enable value=\"true\"/>\n"
        "      <virtualizer-start-band value=\"3\"/>\n"
        "      <headphone-virtualizer-steerer-source-distance value=\"20\"/>\n"
        "    </endpoint_type>\n"
        "  </data>\n"
        "  <include preset=\"warm_profile\"/>\n"
        "</profile>\n"
        "<tuning name=\"spk\" endpoint_type=\"bogus\" mono_device=\"true\" orientation=\"1\" "
        "output_channels=\"2\">\n"
        "  <device_id id=\"default_internal_speaker\" endpoint_port=\"internal_speaker\"/>\n"
        "  <data>\n    <unknown value=\"1\"/>\n    <bass-mbdrc-enable value=\"1\"/>\n  </data>\n"
        "</tuning>\n";

class TuningFileParserTest : public test::TuningTest {
  protected:
    DeviceData& parse(const std::string& body) {
        mParser = std::make_unique<TuningFileParser>(writeDocument(body));
        static DeviceData sNone;
        EXPECT_NE(nullptr, mParser->getDeviceData());
        return mParser->getDeviceData() ? *mParser->getDeviceData() : sNone;
    }

    template <typename T>
    static T* only(std::set<T*>& records) {
        EXPECT_EQ(1u, records.size());
        static T* sNone = nullptr;
        return records.empty() ? sNone : *records.begin();
    }

    static V at(ParameterValues* record, int p) {
        auto it = record->values().find(toParameter(p));
        return it == record->values().end() ? V{-999} : it->second;
    }

    std::unique_ptr<TuningFileParser> mParser;
};

TEST_F(TuningFileParserTest, FormatVersionsDecideTheFixedValues) {
    struct Expect {
        const char* minor;
        const char* maintenance;
        bool mobility;
        PresetType preset;
        int reverb, ieqEnable, hearing, startBand, distance, bassType, bassDrc;
    };
    const Expect cases[] = {
            // 3.3.0: endpoint presets, file values kept, type from the technologies.
            {"3", "0", true, PresetType::DETAILED, 1, -999, 1, 3, 20, 3, 1},
            // 3.2.1: the profile's preset and IEQ values, reverb off, distance 4, type 2.
            {"2", "1", false, PresetType::WARM, 0, 1, 1, 3, 4, 2, 1},
            // 3.2.2: also hearing protection, start band and bass DRC off.
            {"2", "2", false, PresetType::WARM, 0, 1, 0, 0, 4, 2, 0},
            // Prefixes are whole: 3.22 is not 3.2, 3.2.20 is 3.2.2.
            {"22", "0", true, PresetType::DETAILED, 1, -999, 1, 3, 20, 3, 1},
            {"2", "20", false, PresetType::WARM, 0, 1, 0, 0, 4, 2, 0},
    };
    for (const Expect& c : cases) {
        SCOPED_TRACE(std::string("3.") + c.minor + "." + c.maintenance);
        DeviceData& data = parse(formatVersion(c.minor, c.maintenance) + kRecords);
        EXPECT_EQ(std::string("3.") + c.minor + "." + c.maintenance, data.getFormatVersion());
        Profile* profile = only(data.getProfiles());
        EXPECT_EQ(c.mobility, profile->isMobility());
        EXPECT_EQ(V{c.reverb}, at(profile, 64));
        EXPECT_EQ(V{-999}, at(profile, 35)) << "profile IEQ values are not profile settings";
        ProfileEndpoint* endpoint = only(data.getProfileEndpoints());
        EXPECT_EQ(c.preset, endpoint->getSelectedIeqPreset());
        EXPECT_EQ(V{c.ieqEnable}, at(endpoint, 35));
        EXPECT_EQ(V{c.hearing}, at(endpoint, 30));
        EXPECT_EQ(V{c.startBand}, at(endpoint, 86));
        EXPECT_EQ(V{c.distance}, at(endpoint, 27));
        EXPECT_EQ(V{c.bassType}, at(endpoint, 82));
        Tuning* tuning = only(data.getTunings());
        EXPECT_EQ(V{c.bassDrc}, at(tuning, 12));
        EXPECT_EQ(Endpoint::SPEAKER, tuning->getEndpoint()) << "unknown tuning endpoint text";
        EXPECT_TRUE(tuning->isMono());
        EXPECT_EQ(V{1}, at(tuning, 44));
        EXPECT_EQ(V{2}, at(tuning, 45));
    }
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag, "xml version: 3.2.2"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag, "parseProfile, parse the ieq preset"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag,
                              "parseProfileEndpoint:speaker, parse the include ieq preset"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag,
                              "parseAuthorizedTechnologies, mVirtualBassType = 3"));
}

TEST_F(TuningFileParserTest, VersionsApplyWhereverTheyStandButTechnologiesReadThemInOrder) {
    DeviceData& data =
            parse(kRecords + formatVersion("2", "2") + "<tool_version major=\"1\" minor=\"0\"/>\n");
    EXPECT_EQ("1.0.", data.getToolVersion());
    EXPECT_EQ(V{0}, at(only(data.getTunings()), 12));
    EXPECT_EQ(V{3}, at(only(data.getProfileEndpoints()), 82)) << "read before the version";

    DeviceData& plain = parse(formatVersion("3", "0") +
                              "<profile id=\"2\" name=\"P\">\n <data>\n  <endpoint_type "
                              "id=\"usb\">\n   <include preset=\"off\"/>\n  </endpoint_type>\n"
                              " </data>\n</profile>\n");
    ProfileEndpoint* endpoint = only(plain.getProfileEndpoints());
    EXPECT_EQ(V{1}, at(endpoint, 82)) << "the type without technologies";
    EXPECT_EQ(Endpoint::OTHER, endpoint->getEndpoint()) << "unknown endpoint text";
}

TEST_F(TuningFileParserTest, PresetsAndPresetNames) {
    DeviceData& data =
            parse("<preset id=\"my_warm_1\" type=\"ieq\">\n <d>\n  <ieq>\n"
                  "   <band_ieq frequency=\"65\" target=\"-3\"/>\n  </ieq>\n </d>\n</preset>\n"
                  "<preset id=\"ieq_balanced\" type=\"IEQ\">\n</preset>\n"
                  "<preset id=\"2\" type=\"geq\">\n <d>\n  <geq>\n"
                  "   <band frequency=\"32\" gain=\"-576\"/>\n  </geq>\n </d>\n</preset>\n");
    IeqPreset* ieq = only(data.getIeqPresets());
    EXPECT_EQ(PresetType::WARM, ieq->getType());
    EXPECT_EQ((V{-3}), at(ieq, 38));
    GeqPreset* geq = only(data.getGeqPresets());
    EXPECT_EQ(2, geq->getProfileId());
    EXPECT_EQ((V{-576}), at(geq, 25));

    // Substrings, tested in the order off, balanced, warm, detailed.
    const std::pair<const char*, PresetType> valid[] = {{"off", PresetType::OFF},
                                                        {"balanced_off", PresetType::OFF},
                                                        {"warm_detailed", PresetType::WARM},
                                                        {"ieq_detailed", PresetType::DETAILED},
                                                        {"balanced", PresetType::BALANCED}};
    mLog.clear();
    for (const auto& [name, type] : valid) {
        EXPECT_EQ(type, TuningFileParser::getIeqPresetTypeByName(name)) << name;
    }
    EXPECT_EQ(0u, mLog.count(kTag, "name is invalid, 286"));
    for (const char* name : {"Detailed", "of", "", "neutral"}) {
        EXPECT_EQ(PresetType::OFF, TuningFileParser::getIeqPresetTypeByName(name)) << name;
    }
    EXPECT_EQ(4u, mLog.count(kTag, "name is invalid, 286"));
}

TEST_F(TuningFileParserTest, TuningWithoutDataEndsTheSecondPass) {
    DeviceData& data =
            parse("<profile id=\"4\" name=\"First\">\n <data>\n  <a/>\n </data>\n</profile>\n"
                  "<profile id=\"4\" name=\"Second\">\n <data>\n  <a/>\n </data>\n</profile>\n"
                  "<tuning name=\"broken\">\n  <device_id id=\"usb_one\" endpoint_port=\"usb\"/>\n"
                  "</tuning>\n"
                  "<tuning name=\"never\">\n  <data>\n  </data>\n</tuning>\n"
                  "<profile id=\"5\" name=\"Never\">\n <data>\n  <a/>\n </data>\n</profile>\n");
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "There is no <data> in Tuning section"));
    EXPECT_TRUE(data.getTunings().empty());
    EXPECT_EQ("broken", only(data.getDeviceTunings())->getTuning());
    EXPECT_EQ(2u, data.getProfiles().size()) << "records are never merged";
    EXPECT_EQ(2, mParser->getNumOfProfiles());
    EXPECT_EQ("Second", mParser->getProfileName(4));
    EXPECT_EQ("", mParser->getProfileName(5));
}

TEST_F(TuningFileParserTest, CompactXmlSkipsEveryFirstChildElement) {
    mParser = std::make_unique<TuningFileParser>(writeFile(
            "<r><format_version major=\"3\" minor=\"3\" maintenance=\"0\"/><tuning name=\"t\">"
            "<device_id id=\"d\" endpoint_port=\"usb\"/><data><regulator-enable value=\"1\"/>"
            "<bass-mbdrc-enable value=\"1\"/></data></tuning></r>"));
    DeviceData& data = *mParser->getDeviceData();
    EXPECT_EQ("3.3.0", data.getFormatVersion());
    EXPECT_TRUE(data.getDeviceTunings().empty());
    Tuning* tuning = only(data.getTunings());
    EXPECT_EQ(V{-999}, at(tuning, 49));
    EXPECT_EQ(V{1}, at(tuning, 12));
}

TEST_F(TuningFileParserTest, FailedFileKeepsTheDataAndASecondFileAddsToTheFirst) {
    TuningFileParser parser;
    EXPECT_EQ(-22, parser.setTuningFile(mDir.path() + "/missing.xml"));
    EXPECT_EQ(nullptr, parser.getDeviceData());
    EXPECT_FALSE(parser.isParsed());

    const std::string good = writeDocument(formatVersion("3", "0") + kRecords);
    ASSERT_EQ(0, parser.setTuningFile(good));
    EXPECT_TRUE(parser.isParsed());
    DeviceData* first = parser.getDeviceData();
    first->setSignature("123");
    EXPECT_EQ(-22, parser.setTuningFile(writeFile("<a>\n<b>\n</a>\n", "bad.xml")));
    EXPECT_EQ("123", parser.getDeviceData()->getSignature()) << "the same data object";

    ASSERT_EQ(0, parser.setTuningFile(good));
    DeviceData* both = parser.getDeviceData();
    EXPECT_EQ("", both->getSignature());
    EXPECT_EQ(2u, both->getTunings().size());
    EXPECT_EQ(2u, both->getProfileEndpoints().size());
    EXPECT_EQ(2u, both->getDeviceTunings().size());
}

}  // namespace
}  // namespace vessa
