#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
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

std::string version(const std::string& tag, const std::string& major, const std::string& minor,
                    const std::string& maintenance) {
    return "  <" + tag + " major=\"" + major + "\" minor=\"" + minor + "\" maintenance=\"" +
           maintenance + "\"/>\n";
}

// One profile with two endpoints and one tuning, written so that every
// version-dependent rule has something to act on.
std::string profileAndTuning() {
    return "  <profile id=\"1\" name=\"Movie\" group=\"mobility\">\n"
           "    <data>\n"
           "      <ieq-enable value=\"1\"/>\n"
           "      <ieq-amount value=\"9\"/>\n"
           "      <reverb-suppression-enable value=\"1\"/>\n"
           "      <reverb-suppression-amount value=\"5\"/>\n"
           "      <endpoint_type id=\"speaker\">\n"
           "        <include preset=\"ieq_detailed\"/>\n"
           "        <hearing-protection-enable value=\"true\"/>\n"
           "        <virtualizer-start-band value=\"3\"/>\n"
           "        <headphone-virtualizer-steerer-source-distance value=\"20\"/>\n"
           "      </endpoint_type>\n"
           "      <endpoint_type id=\"headphone\">\n"
           "        <virtualizer-start-band value=\"2\"/>\n"
           "      </endpoint_type>\n"
           "    </data>\n"
           "    <include preset=\"warm_profile\"/>\n"
           "  </profile>\n"
           "  <tuning name=\"spk\" endpoint_type=\"speaker\" mono_device=\"true\" "
           "orientation=\"1\" output_channels=\"2\">\n"
           "    <device_id id=\"default_internal_speaker\" endpoint_port=\"internal_speaker\"/>\n"
           "    <data>\n"
           "      <bass-mbdrc-enable value=\"1\"/>\n"
           "      <regulator-enable value=\"true\"/>\n"
           "    </data>\n"
           "  </tuning>\n";
}

const std::string kTechnologies =
        "  <authorized_technologies>\n"
        "    <technology virtual_bass_process=\"3\"/>\n"
        "  </authorized_technologies>\n";

class TuningFileParserTest : public test::TuningTest {
  protected:
    // Parses `body` (the root's children) with a fresh parser.
    DeviceData& parse(const std::string& body) {
        mParser = std::make_unique<TuningFileParser>();
        EXPECT_EQ(0,
                  mParser->setTuningFile(writeFile("<tuning_file>\n" + body + "</tuning_file>\n")));
        static DeviceData sNone;
        DeviceData* data = mParser->getDeviceData();
        EXPECT_NE(nullptr, data);
        return data ? *data : sNone;
    }

    DeviceData& parseVersion(const std::string& major, const std::string& minor,
                             const std::string& maintenance) {
        return parse(version("format_version", major, minor, maintenance) + kTechnologies +
                     profileAndTuning());
    }

    static ProfileEndpoint* endpoint(DeviceData& data, int profileId, Endpoint kind) {
        for (ProfileEndpoint* e : data.getProfileEndpoints()) {
            if (e->getProfileId() == profileId && e->getEndpoint() == kind) return e;
        }
        ADD_FAILURE() << "no endpoint " << static_cast<int>(kind) << " in profile " << profileId;
        static ProfileEndpoint sNone(-1, Endpoint::OTHER, PresetType::OFF);
        return &sNone;
    }

    static Tuning* tuning(DeviceData& data, const std::string& name) {
        for (Tuning* t : data.getTunings()) {
            if (t->getName() == name) return t;
        }
        ADD_FAILURE() << "no tuning " << name;
        static Tuning sNone("", Endpoint::OTHER, false);
        return &sNone;
    }

    static V at(ParameterValues* record, int p) {
        auto it = record->values().find(toParameter(p));
        return it == record->values().end() ? V{-999} : it->second;
    }

    std::unique_ptr<TuningFileParser> mParser;
};

TEST_F(TuningFileParserTest, Format330UsesEndpointPresetsAndForcesOnlyTheVirtualBassType) {
    DeviceData& data = parseVersion("3", "3", "0");
    EXPECT_EQ("3.3.0", data.getFormatVersion());
    ASSERT_EQ(1u, data.getProfiles().size());
    Profile* profile = *data.getProfiles().begin();
    EXPECT_TRUE(profile->isMobility());
    EXPECT_EQ("Movie", profile->getName());
    EXPECT_EQ(V{1}, at(profile, 64));
    EXPECT_EQ(V{5}, at(profile, 63));
    EXPECT_EQ(V{-999}, at(profile, 35)) << "profile-level ieq-enable is not a profile value";

    ProfileEndpoint* speaker = endpoint(data, 1, Endpoint::SPEAKER);
    EXPECT_EQ(PresetType::DETAILED, speaker->getSelectedIeqPreset());
    EXPECT_EQ(V{-999}, at(speaker, 35));
    EXPECT_EQ(V{1}, at(speaker, 30));
    EXPECT_EQ(V{3}, at(speaker, 86));
    EXPECT_EQ(V{20}, at(speaker, 27));
    EXPECT_EQ(V{3}, at(speaker, 82));

    ProfileEndpoint* headphone = endpoint(data, 1, Endpoint::HEADPHONE);
    EXPECT_EQ(PresetType::OFF, headphone->getSelectedIeqPreset()) << "no include element";
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "name is invalid, 286"));
    EXPECT_EQ(V{2}, at(headphone, 86));
    EXPECT_EQ(V{3}, at(headphone, 82));

    Tuning* spk = tuning(data, "spk");
    EXPECT_EQ(V{1}, at(spk, 12));
    EXPECT_TRUE(spk->isMono());
    EXPECT_EQ(V{1}, at(spk, 44));
    EXPECT_EQ(V{2}, at(spk, 45));
    EXPECT_EQ(V{1}, at(spk, 49));

    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag, "xml version: 3.3.0"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag,
                              "parseAuthorizedTechnologies, mVirtualBassType = 3"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag,
                              "parseProfileEndpoint:speaker, parse the include ieq preset"));
    EXPECT_FALSE(mLog.contains(kTag, "parseProfile, parse the ieq preset"));
}

TEST_F(TuningFileParserTest, Format321UsesTheProfilePresetAndProfileIeqValues) {
    DeviceData& data = parseVersion("3", "2", "1");
    Profile* profile = *data.getProfiles().begin();
    EXPECT_FALSE(profile->isMobility()) << "3.2 files have no mobility group";
    EXPECT_EQ(V{0}, at(profile, 64));
    EXPECT_EQ(V{0}, at(profile, 63));
    for (Endpoint kind : {Endpoint::SPEAKER, Endpoint::HEADPHONE}) {
        ProfileEndpoint* e = endpoint(data, 1, kind);
        EXPECT_EQ(PresetType::WARM, e->getSelectedIeqPreset());
        EXPECT_EQ(V{1}, at(e, 35));
        EXPECT_EQ(V{9}, at(e, 34));
        EXPECT_EQ(V{4}, at(e, 27));
        EXPECT_EQ(V{2}, at(e, 82)) << "3.2 files do not read the technologies";
    }
    ProfileEndpoint* speaker = endpoint(data, 1, Endpoint::SPEAKER);
    EXPECT_EQ(V{1}, at(speaker, 30));
    EXPECT_EQ(V{3}, at(speaker, 86));
    EXPECT_EQ(V{1}, at(tuning(data, "spk"), 12));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_DEBUG, kTag, "parseProfile, parse the ieq preset"));
    EXPECT_FALSE(mLog.contains(kTag, "parseAuthorizedTechnologies, mVirtualBassType = 3"));
}

TEST_F(TuningFileParserTest, Format322AlsoClearsHearingProtectionStartBandAndBassDrc) {
    DeviceData& data = parseVersion("3", "2", "2");
    for (Endpoint kind : {Endpoint::SPEAKER, Endpoint::HEADPHONE}) {
        ProfileEndpoint* e = endpoint(data, 1, kind);
        EXPECT_EQ(V{0}, at(e, 30));
        EXPECT_EQ(V{0}, at(e, 86));
        EXPECT_EQ(V{4}, at(e, 27));
        EXPECT_EQ(V{1}, at(e, 35));
        EXPECT_EQ(PresetType::WARM, e->getSelectedIeqPreset());
    }
    EXPECT_EQ(V{0}, at(tuning(data, "spk"), 12));
    EXPECT_EQ(V{1}, at(tuning(data, "spk"), 49));
}

TEST_F(TuningFileParserTest, VersionPrefixesMatchOnlyWholePrefixes) {
    // "3.22.0" is not a 3.2 file and "3.2.20" is a 3.2.2 one.
    DeviceData& later = parseVersion("3", "22", "0");
    EXPECT_TRUE((*later.getProfiles().begin())->isMobility());
    EXPECT_EQ(V{1}, at(tuning(later, "spk"), 12));

    DeviceData& patch = parseVersion("3", "2", "20");
    EXPECT_EQ(V{0}, at(tuning(patch, "spk"), 12));

    // A missing part stays empty in the joined text.
    DeviceData& partial =
            parse("  <format_version major=\"3\" minor=\"2\"/>\n" + profileAndTuning());
    EXPECT_EQ("3.2.", partial.getFormatVersion());
    EXPECT_EQ(V{4}, at(endpoint(partial, 1, Endpoint::SPEAKER), 27));
}

TEST_F(TuningFileParserTest, VersionsApplyWhereverTheyStandButTechnologiesNeedThemFirst) {
    DeviceData& data =
            parse(kTechnologies + profileAndTuning() + version("format_version", "3", "2", "2") +
                  version("tool_version", "1", "0", "7"));
    EXPECT_EQ("3.2.2", data.getFormatVersion());
    EXPECT_EQ("1.0.7", data.getToolVersion());
    EXPECT_EQ(V{0}, at(*data.getProfiles().begin(), 64));
    EXPECT_EQ(V{0}, at(endpoint(data, 1, Endpoint::SPEAKER), 30));
    EXPECT_EQ(V{0}, at(tuning(data, "spk"), 12));
    // The technologies element was met before the version: read as in any format.
    EXPECT_EQ(V{3}, at(endpoint(data, 1, Endpoint::SPEAKER), 82));

    DeviceData& none = parse(version("format_version", "3", "3", "0") + profileAndTuning());
    EXPECT_EQ(V{1}, at(endpoint(none, 1, Endpoint::SPEAKER), 82)) << "default type";
}

TEST_F(TuningFileParserTest, PresetsByTypeAndName) {
    DeviceData& data = parse(version("format_version", "3", "3", "0") +
                             "  <preset id=\"my_warm_1\" type=\"ieq\">\n    <data>\n      <ieq>\n"
                             "        <band_ieq frequency=\"65\" target=\"-3\"/>\n"
                             "        <band_ieq frequency=\"136\" target=\"4\"/>\n"
                             "      </ieq>\n    </data>\n  </preset>\n"
                             "  <preset id=\"ieq_balanced\" type=\"IEQ\">\n  </preset>\n"
                             "  <preset id=\"2\" type=\"geq\">\n    <data>\n      <geq>\n"
                             "        <band frequency=\"32\" gain=\"-576\"/>\n"
                             "        <band frequency=\"64\" gain=\"576\"/>\n"
                             "      </geq>\n    </data>\n  </preset>\n"
                             "  <preset id=\"7\" type=\"peq\"/>\n");
    ASSERT_EQ(1u, data.getIeqPresets().size());
    IeqPreset* ieq = *data.getIeqPresets().begin();
    EXPECT_EQ(PresetType::WARM, ieq->getType());
    EXPECT_EQ((V{65, 136}), at(ieq, 36));
    EXPECT_EQ((V{-3, 4}), at(ieq, 38));
    ASSERT_EQ(1u, data.getGeqPresets().size());
    GeqPreset* geq = *data.getGeqPresets().begin();
    EXPECT_EQ(2, geq->getProfileId());
    EXPECT_EQ((V{32, 64}), at(geq, 24));
    EXPECT_EQ((V{-576, 576}), at(geq, 25));
}

TEST_F(TuningFileParserTest, IeqPresetNamesAreFoundBySubstringInAFixedOrder) {
    struct Case {
        const char* name;
        PresetType type;
        bool valid;
    };
    const Case cases[] = {
            {"off", PresetType::OFF, true},
            {"my_warm_1", PresetType::WARM, true},
            {"Detailed", PresetType::OFF, false},
            {"ieq_detailed", PresetType::DETAILED, true},
            {"balanced", PresetType::BALANCED, true},
            {"balanced_off", PresetType::OFF, true},
            {"warm_detailed", PresetType::WARM, true},
            {"of", PresetType::OFF, false},
            {"", PresetType::OFF, false},
            {"neutral", PresetType::OFF, false},
    };
    for (const Case& c : cases) {
        mLog.clear();
        EXPECT_EQ(c.type, TuningFileParser::getIeqPresetTypeByName(c.name)) << c.name;
        EXPECT_EQ(c.valid ? 0u : 1u, mLog.count(kTag, "name is invalid, 286")) << c.name;
    }
}

TEST_F(TuningFileParserTest, RecordsAreNeverMergedAndTheLaterProfileNameWins) {
    mParser = std::make_unique<TuningFileParser>(writeDocument(
            "<profile id=\"4\" name=\"First\" group=\"x\">\n <data>\n  <a/>\n </data>\n</profile>\n"
            "<profile id=\"4\" name=\"Second\" group=\"x\">\n <data>\n  <a/>\n </data>\n"
            "</profile>"));
    EXPECT_TRUE(mParser->isParsed());
    EXPECT_EQ(2, mParser->getNumOfProfiles());
    EXPECT_EQ(2u, mParser->getDeviceData()->getProfiles().size());
    EXPECT_EQ("Second", mParser->getProfileName(4));
    EXPECT_EQ("", mParser->getProfileName(99));
}

TEST_F(TuningFileParserTest, TuningWithoutDataEndsTheSecondPass) {
    DeviceData& data =
            parse(version("format_version", "3", "3", "0") +
                  "  <tuning name=\"first\" endpoint_type=\"other\" mono_device=\"TRUE\" "
                  "orientation=\"x\" output_channels=\"4\">\n"
                  "    <device_id id=\"hdmi_tv\" endpoint_port=\"hdmi\"/>\n"
                  "    <data>\n      <unknown-element value=\"3\"/>\n"
                  "      <virtual-bass-mode value=\"2\"/>\n    </data>\n"
                  "  </tuning>\n"
                  "  <tuning name=\"broken\" endpoint_type=\"headphone\">\n"
                  "    <device_id id=\"usb_one\" endpoint_port=\"usb\"/>\n"
                  "    <device_id id=\"usb_two\" endpoint_port=\"usb\"/>\n"
                  "  </tuning>\n"
                  "  <tuning name=\"never\" endpoint_type=\"speaker\">\n"
                  "    <data>\n      <regulator-enable value=\"1\"/>\n    </data>\n"
                  "  </tuning>\n"
                  "  <profile id=\"0\" name=\"Never\" group=\"x\">\n    <data/>\n  </profile>\n");
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "There is no <data> in Tuning section"));
    ASSERT_EQ(1u, data.getTunings().size());
    Tuning* first = *data.getTunings().begin();
    EXPECT_EQ("first", first->getName());
    EXPECT_EQ(Endpoint::OTHER, first->getEndpoint());
    EXPECT_FALSE(first->isMono()) << "only the exact text true";
    EXPECT_EQ(V{0}, at(first, 44));
    EXPECT_EQ(V{4}, at(first, 45));
    EXPECT_EQ(V{2}, at(first, 75)) << "an unknown element before it is skipped";
    EXPECT_TRUE(data.getProfiles().empty());
    EXPECT_EQ(0, mParser->getNumOfProfiles());

    // The dropped tuning's device ids were read before the data was missed.
    std::vector<std::string> devices;
    for (DeviceTuning* d : data.getDeviceTunings()) {
        devices.push_back(d->getDevice() + "@" + d->getPort() + ">" + d->getTuning());
    }
    std::sort(devices.begin(), devices.end());
    EXPECT_EQ((std::vector<std::string>{"hdmi_tv@hdmi>first", "usb_one@usb>broken",
                                        "usb_two@usb>broken"}),
              devices);
}

TEST_F(TuningFileParserTest, EndpointTextsOfTuningsAndProfilesDifferForUnknownNames) {
    DeviceData& data =
            parse(version("format_version", "3", "3", "0") +
                  "  <tuning name=\"t\" endpoint_type=\"Headphone\">\n    <data/>\n  </tuning>\n"
                  "  <profile id=\"2\" name=\"P\" group=\"\">\n    <data>\n"
                  "      <endpoint_type id=\"bluetooth\">\n        <include preset=\"ieq_off\"/>\n"
                  "      </endpoint_type>\n    </data>\n  </profile>\n");
    EXPECT_EQ(Endpoint::SPEAKER, tuning(data, "t")->getEndpoint());
    ASSERT_EQ(1u, data.getProfileEndpoints().size());
    EXPECT_EQ(Endpoint::OTHER, (*data.getProfileEndpoints().begin())->getEndpoint());
    EXPECT_FALSE(mLog.contains(kTag, "name is invalid, 286"));
}

TEST_F(TuningFileParserTest, CompactXmlSkipsEveryFirstChildElement) {
    mParser = std::make_unique<TuningFileParser>();
    ASSERT_EQ(0, mParser->setTuningFile(writeFile(
                         "<r><format_version major=\"3\" minor=\"3\" maintenance=\"0\"/>"
                         "<tuning name=\"t\" endpoint_type=\"speaker\">"
                         "<device_id id=\"d\" endpoint_port=\"usb\"/><data><regulator-enable "
                         "value=\"1\"/><bass-mbdrc-enable value=\"1\"/></data></tuning></r>")));
    DeviceData& data = *mParser->getDeviceData();
    EXPECT_EQ("3.3.0", data.getFormatVersion());
    EXPECT_TRUE(data.getDeviceTunings().empty()) << "the device_id was the skipped first child";
    Tuning* t = tuning(data, "t");
    EXPECT_EQ(V{-999}, at(t, 49));
    EXPECT_EQ(V{1}, at(t, 12));
}

TEST_F(TuningFileParserTest, FailedFileKeepsTheDataAndASecondFileAddsToTheFirst) {
    TuningFileParser parser;
    EXPECT_FALSE(parser.isParsed());
    EXPECT_EQ(-22, parser.setTuningFile(mDir.path() + "/missing.xml"));
    EXPECT_EQ(nullptr, parser.getDeviceData());
    EXPECT_EQ(-22, parser.setTuningFile(""));
    EXPECT_FALSE(parser.isParsed());

    const std::string body = version("format_version", "3", "3", "0") + profileAndTuning();
    ASSERT_EQ(0, parser.setTuningFile(writeFile("<a>\n" + body + "</a>\n", "one.xml")));
    DeviceData* first = parser.getDeviceData();
    first->setSignature("123");
    EXPECT_EQ(-22, parser.setTuningFile(writeFile("<a>\n<b>\n</a>\n", "bad.xml")));
    EXPECT_EQ(first, parser.getDeviceData());
    EXPECT_EQ("123", parser.getDeviceData()->getSignature());

    ASSERT_EQ(0, parser.setTuningFile(writeFile("<a>\n" + body + "</a>\n", "two.xml")));
    DeviceData* both = parser.getDeviceData();
    EXPECT_EQ("", both->getSignature()) << "a new data object";
    EXPECT_EQ(2u, both->getTunings().size());
    EXPECT_EQ(2u, both->getProfiles().size());
    EXPECT_EQ(4u, both->getProfileEndpoints().size());
    EXPECT_EQ(2u, both->getDeviceTunings().size());
    EXPECT_EQ(2, parser.getNumOfProfiles());
}

}  // namespace
}  // namespace vessa
