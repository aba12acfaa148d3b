#include <android/log.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/DeviceData.h"
#include "tuning/TuningFileParser.h"

namespace vessa {
namespace {

using test::at;
using test::V;

const char* const kTag = "TuningFileParser";

// Gives every version-dependent rule something to act on.
const std::string kRecords =
        "<authorized_technologies>\n  <t virtual_bass_process=\"3\"/>\n</authorized_technologies>\n"
        "<tool_version major=\"1\" minor=\"0\"/>\n"
        "<profile id=\"1\" name=\"Movie\" group=\"mobility\">\n  <data>\n"
        "    <ieq-enable value=\"1\"/>\n    <ieq-amount value=\"9\"/>\n"
        "    <reverb-suppression-enable value=\"1\"/>\n    <endpoint_type id=\"speaker\">\n"
        "      <include preset=\"ieq_detailed\"/>\n      <hearing-protection-enable "
        "value=\"true\"/>\n"
        "      <virtualizer-start-band value=\"3\"/>\n"
        "      <headphone-virtualizer-steerer-source-distance value=\"20\"/>\n"
        "    </endpoint_type>\n  </data>\n  <include preset=\"warm_profile\"/>\n</profile>\n"
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
        return records.empty() ? nullptr : *records.begin();
    }

    std::unique_ptr<TuningFileParser> mParser;
};

TEST_F(TuningFileParserTest, FormatVersionsDecideTheFixedValues) {
    // Minor, maintenance, placed after the records; mobility, endpoint preset;
    // profile 64; endpoint 35, 30, 86, 27 and 82; tuning 12.
    const std::tuple<std::string, std::string, bool, bool, PresetType, std::vector<V>> cases[] = {
            // 3.3.0: endpoint presets, file values kept, type from the technologies.
            {"3", "0", false, true, PresetType::DETAILED, {{1}, {-999}, {1}, {3}, {20}, {3}, {1}}},
            // 3.2.1: the profile's preset and IEQ values, reverb off, distance 4, type 2.
            {"2", "1", false, false, PresetType::WARM, {{0}, {1}, {1}, {3}, {4}, {2}, {1}}},
            // 3.2.2: also hearing protection, start band and bass DRC off.
            {"2", "2", false, false, PresetType::WARM, {{0}, {1}, {0}, {0}, {4}, {2}, {0}}},
            // Prefixes are whole: 3.22 is not 3.2, 3.2.20 is 3.2.2.
            {"22", "0", false, true, PresetType::DETAILED, {{1}, {-999}, {1}, {3}, {20}, {3}, {1}}},
            {"2", "20", false, false, PresetType::WARM, {{0}, {1}, {0}, {0}, {4}, {2}, {0}}},
            // A version after the records still applies, but the technologies were read first.
            {"2", "2", true, false, PresetType::WARM, {{0}, {1}, {0}, {0}, {4}, {3}, {0}}},
    };
    for (const auto& [minor, maintenance, after, mobility, preset, expected] : cases) {
        const std::string version = "3." + minor + "." + maintenance;
        SCOPED_TRACE(version + (after ? " after the records" : ""));
        const std::string element = "<format_version major=\"3\" minor=\"" + minor +
                                    "\" maintenance=\"" + maintenance + "\"/>\n";
        DeviceData& data = parse(after ? kRecords + element : element + kRecords);
        EXPECT_EQ(version, data.getFormatVersion());
        EXPECT_EQ("1.0.", data.getToolVersion()) << "missing parts are empty";
        Profile* profile = only(data.getProfiles());
        ProfileEndpoint* e = only(data.getProfileEndpoints());
        Tuning* tuning = only(data.getTunings());
        ASSERT_TRUE(profile && e && tuning);
        EXPECT_EQ(mobility, profile->isMobility());
        EXPECT_EQ(preset, e->getSelectedIeqPreset());
        EXPECT_EQ(expected, (std::vector<V>{at(profile, 64), at(e, 35), at(e, 30), at(e, 86),
                                            at(e, 27), at(e, 82), at(tuning, 12)}));
        EXPECT_EQ(V{-999}, at(profile, 35)) << "profile IEQ values are not profile settings";
        // The tuning's header: unknown endpoint text is the speaker; 44 and 45 as written.
        EXPECT_EQ(Endpoint::SPEAKER, tuning->getEndpoint());
        EXPECT_TRUE(tuning->isMono());
        EXPECT_EQ((V{1, 2}), (V{at(tuning, 44).at(0), at(tuning, 45).at(0)}));
    }
    for (const char* line : {"xml version: 3.2.2", "parseProfile, parse the ieq preset",
                             "parseProfileEndpoint:speaker, parse the include ieq preset",
                             "parseAuthorizedTechnologies, mVirtualBassType = 3"}) {
        EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag, line)) << line;
    }
}

// Preset records themselves are checked on the sample file.
TEST_F(TuningFileParserTest, PresetTypesAndPresetNames) {
    DeviceData& data = parse("<preset id=\"ieq_balanced\" type=\"IEQ\">\n</preset>\n");
    EXPECT_TRUE(data.getIeqPresets().empty()) << "the type is case-sensitive";
    // Substrings, tested in the order off, balanced, warm, detailed; the last four are invalid.
    V types;
    mLog.clear();
    for (const char* name : {"off", "balanced_off", "warm_detailed", "ieq_detailed", "balanced",
                             "Detailed", "of", "", "neutral"}) {
        types.push_back(int(TuningFileParser::getIeqPresetTypeByName(name)));
    }
    EXPECT_EQ((V{0, 0, 3, 1, 2, 0, 0, 0, 0}), types);
    EXPECT_EQ(4u, mLog.count(kTag, "name is invalid, 286"));
}

TEST_F(TuningFileParserTest, TuningWithoutDataEndsTheSecondPass) {
    DeviceData& data =
            parse("<profile id=\"4\" name=\"First\">\n <data>\n  <endpoint_type id=\"usb\">\n"
                  "  </endpoint_type>\n </data>\n</profile>\n"
                  "<profile id=\"4\" name=\"Second\">\n <data>\n  <a/>\n </data>\n</profile>\n"
                  "<tuning name=\"broken\">\n  <device_id id=\"usb_one\" endpoint_port=\"usb\"/>\n"
                  "</tuning>\n<tuning name=\"never\">\n  <data>\n  </data>\n</tuning>\n"
                  "<profile id=\"5\" name=\"Never\">\n <data>\n  <a/>\n </data>\n</profile>\n");
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "There is no <data> in Tuning section"));
    EXPECT_TRUE(data.getTunings().empty());
    EXPECT_EQ("broken", only(data.getDeviceTunings())->getTuning());
    EXPECT_EQ(2u, data.getProfiles().size()) << "records are never merged";
    EXPECT_EQ(2, mParser->getNumOfProfiles());
    EXPECT_EQ("Second", mParser->getProfileName(4));
    // Unknown endpoint text is "other" here; without technologies the type is 1.
    ProfileEndpoint* endpoint = only(data.getProfileEndpoints());
    EXPECT_EQ(Endpoint::OTHER, endpoint->getEndpoint());
    EXPECT_EQ(V{1}, at(endpoint, 82));
}

TEST_F(TuningFileParserTest, FailedFileKeepsTheDataAndASecondFileAddsToTheFirst) {
    TuningFileParser parser;
    EXPECT_EQ(-22, parser.setTuningFile(mDir.path() + "/missing.xml"));
    EXPECT_FALSE(parser.isParsed() || parser.getDeviceData());
    const std::string good = writeDocument(kRecords);
    ASSERT_EQ(0, parser.setTuningFile(good));
    parser.getDeviceData()->setSignature("123");
    EXPECT_EQ(-22, parser.setTuningFile(writeFile("<a>\n<b>\n</a>\n", "bad.xml")));
    EXPECT_EQ("123", parser.getDeviceData()->getSignature()) << "the same data object";
    ASSERT_EQ(0, parser.setTuningFile(good));
    EXPECT_EQ("", parser.getDeviceData()->getSignature());
    EXPECT_EQ(2u, parser.getDeviceData()->getTunings().size());
    EXPECT_EQ(2u, parser.getDeviceData()->getDeviceTunings().size());
}

// Only an endpoint whose IEQ is disabled is forced to "off"; one without any
// IEQ value (absent or empty) keeps its preset and gains no entry.
TEST(DeviceDataTest, ValidateDataForcesOffOnlyWhereIeqIsDisabled) {
    std::vector<ProfileEndpoint> endpoints(4, {0, Endpoint::SPEAKER, PresetType::WARM});
    endpoints[0].set(Parameter::IEQ_ENABLE, {0});
    endpoints[1].set(Parameter::IEQ_ENABLE, {1});
    endpoints[3].set(Parameter::IEQ_ENABLE, {});
    DeviceData data;
    for (ProfileEndpoint& e : endpoints) data.getProfileEndpoints().insert(&e);
    data.validateData();
    V presets;
    for (const ProfileEndpoint& e : endpoints) presets.push_back(int(e.getSelectedIeqPreset()));
    EXPECT_EQ((V{0, 3, 3, 3}), presets);
    EXPECT_EQ(0u, endpoints[2].values().count(Parameter::IEQ_ENABLE));
}

}  // namespace
}  // namespace vessa
