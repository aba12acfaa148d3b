#include <map>
#include <memory>
#include <regex>
#include <set>
#include <tuple>

#include "SampleRoot.h"
#include "TuningTestSupport.h"

namespace vessa::test {
namespace {

const char* const kTag = "TuningFileParser";

// Gives every version-dependent rule something to act on.
const std::string kRecords =
        "<authorized_technologies>\n  <t virtual_bass_process='3'/>\n</authorized_technologies>\n"
        "<tool_version major='1' minor='0'/>\n<profile id='1' name='Movie' group='mobility'>\n"
        "  <data>\n    <ieq-enable value='1'/>\n    <ieq-amount value='9'/>\n"
        "    <reverb-suppression-enable value='1'/>\n    <endpoint_type id='speaker'>\n"
        "      <include preset='ieq_detailed'/>\n      <hearing-protection-enable value='true'/>\n"
        "      <virtualizer-start-band value='3'/>\n"
        "      <headphone-virtualizer-steerer-source-distance value='20'/>\n"
        "    </endpoint_type>\n  </data>\n  <include preset='warm_profile'/>\n</profile>\n"
        "<tuning name='spk' endpoint_type='bogus' mono_device='true' orientation='1' "
        "output_channels='2'>\n  <device_id id='default_internal_speaker' endpoint_port='x'/>\n"
        "  <data>\n    <unknown value='1'/>\n    <bass-mbdrc-enable value='1'/>\n  </data>\n"
        "</tuning>\n";

template <typename T>
T* only(std::set<T*>& records) {
    EXPECT_EQ(1u, records.size());
    return records.empty() ? nullptr : *records.begin();
}

class ATuningFile : public TuningTest {
  protected:
    // Parses a document holding `body`; the parser stays for the test to inspect.
    DeviceData& parse(const std::string& body) {
        mParser = std::make_unique<TuningFileParser>(writeDocument(body));
        static DeviceData sNone;
        EXPECT_NE(nullptr, mParser->getDeviceData());
        return mParser->getDeviceData() ? *mParser->getDeviceData() : sNone;
    }

    std::unique_ptr<TuningFileParser> mParser;
};

TEST_F(ATuningFile, FixesTheValuesItsFormatVersionDecides) {
    // Minor, maintenance, placed after the records; mobility, endpoint preset;
    // profile reverb suppression; endpoint IEQ, hearing protection, start band,
    // source distance and virtual-bass type; tuning bass MBDRC.
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
        const std::string element = "<format_version major='3' minor='" + minor +
                                    "' maintenance='" + maintenance + "'/>\n";
        DeviceData& data = parse(after ? kRecords + element : element + kRecords);
        EXPECT_EQ(version, data.getFormatVersion());
        Profile* profile = only(data.getProfiles());
        ProfileEndpoint* e = only(data.getProfileEndpoints());
        Tuning* tuning = only(data.getTunings());
        ASSERT_TRUE(profile && e && tuning);
        EXPECT_EQ("1.0.", data.getToolVersion()) << "missing parts are empty";
        // Unknown endpoint text is the speaker for a tuning; orientation and channel count
        // are read from its header. Profile IEQ values are no profile settings.
        EXPECT_EQ(
                std::make_tuple(Endpoint::SPEAKER, true, V{1}, V{2}, V{-999}),
                std::make_tuple(tuning->getEndpoint(), tuning->isMono(), at(tuning, P::ORIENTATION),
                                at(tuning, P::OUTPUT_CHANNELS), at(profile, P::IEQ_ENABLE)));
        EXPECT_EQ(mobility, profile->isMobility());
        EXPECT_EQ(preset, e->getSelectedIeqPreset());
        EXPECT_EQ(expected,
                  (std::vector<V>{at(profile, P::REVERB_SUPPRESSION_ENABLE), at(e, P::IEQ_ENABLE),
                                  at(e, P::HEARING_PROTECTION_ENABLE),
                                  at(e, P::VIRTUALIZER_START_BAND),
                                  at(e, P::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE),
                                  at(e, P::VIRTUAL_BASS_TYPE), at(tuning, P::BASS_MBDRC_ENABLE)}));
    }
}

// A preset of an unknown type (matched case-sensitively), two profiles of one id, then a
// tuning without data: nothing after it is read.
const std::string kBrokenTuning =
        "<preset id='ieq_balanced' type='IEQ'>\n</preset>\n"
        "<profile id='4' name='First'>\n <data>\n  <endpoint_type id='usb'>\n"
        "  </endpoint_type>\n </data>\n</profile>\n"
        "<profile id='4' name='Second'>\n <data>\n  <a/>\n </data>\n</profile>\n"
        "<tuning name='broken'>\n  <device_id id='usb_one' endpoint_port='usb'/>\n"
        "</tuning>\n<tuning name='never'>\n  <data>\n  </data>\n</tuning>\n"
        "<profile id='5' name='Never'>\n <data>\n  <a/>\n </data>\n</profile>\n";

// Two profiles of one id are never merged, but the id is named after the last; an
// unknown profile endpoint is "other", with virtual-bass type 1 (no technologies).
TEST_F(ATuningFile, DropsATuningWithoutDataAndStopsThereKeepingWhatCameBefore) {
    DeviceData& data = parse(kBrokenTuning);
    EXPECT_TRUE(data.getIeqPresets().empty());
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_ERROR, kTag, "There is no <data> in Tuning section"));
    EXPECT_TRUE(data.getTunings().empty());
    EXPECT_EQ("broken", only(data.getDeviceTunings())->getTuning());
    EXPECT_EQ(2u, data.getProfiles().size()) << "the profile after it is not read";
    EXPECT_EQ(2, mParser->getNumOfProfiles());
    EXPECT_EQ("Second", mParser->getProfileName(4));
    ProfileEndpoint* endpoint = only(data.getProfileEndpoints());
    ASSERT_NE(nullptr, endpoint);
    EXPECT_EQ(Endpoint::OTHER, endpoint->getEndpoint());
    EXPECT_EQ(V{1}, at(endpoint, P::VIRTUAL_BASS_TYPE));
}

// Each file read adds to the records; a file that fails leaves the data as it was.
TEST_F(ATuningFile, AddsToTheRecordsOfTheFileBeforeAndKeepsThemWhenTheNextFails) {
    TuningFileParser parser;
    EXPECT_EQ(-22, parser.setTuningFile(mDir.path() + "/missing.xml"));
    EXPECT_FALSE(parser.isParsed() || parser.getDeviceData());
    ASSERT_EQ(0, parser.setTuningFile(writeDocument(kRecords)));
    ASSERT_EQ(0, parser.setTuningFile(writeDocument(kRecords)));
    DeviceData* data = parser.getDeviceData();
    EXPECT_EQ(-22, parser.setTuningFile(writeFile("<a>\n<b>\n</a>\n", "bad.xml")));
    ASSERT_EQ(data, parser.getDeviceData()) << "the same data object";
    EXPECT_EQ(2u, data->getTunings().size());
    EXPECT_EQ(2u, data->getDeviceTunings().size());
}

// Substrings, tested in the order off, balanced, warm, detailed.
TEST(TheIeqPresetNames, NameTheFirstTypeTheyContainOrOffWithAnErrorLine) {
    LogCapture log;
    V types;
    for (const char* name : {"off", "balanced_off", "warm_detailed", "ieq_detailed", "balanced",
                             "Detailed", "of", "", "neutral"}) {
        types.push_back(int(TuningFileParser::getIeqPresetTypeByName(name)));
    }
    EXPECT_EQ((V{0, 0, 3, 1, 2, 0, 0, 0, 0}), types);
    EXPECT_EQ(4u, log.count(kTag, "name is invalid, 286")) << "one for each of the last four";
}

// Only an endpoint whose IEQ is disabled is forced to "off"; one without any
// IEQ value (absent or empty) keeps its preset and gains no entry.
TEST(TheParsedData, ForcesTheOffPresetOnlyWhereIeqIsDisabled) {
    std::vector<ProfileEndpoint> endpoints(4, {0, Endpoint::SPEAKER, PresetType::WARM});
    endpoints[0].set(P::IEQ_ENABLE, {0});
    endpoints[1].set(P::IEQ_ENABLE, {1});
    endpoints[3].set(P::IEQ_ENABLE, {});
    DeviceData data;
    for (ProfileEndpoint& e : endpoints) data.getProfileEndpoints().insert(&e);
    data.validateData();
    V presets;
    for (const ProfileEndpoint& e : endpoints) presets.push_back(int(e.getSelectedIeqPreset()));
    EXPECT_EQ((V{0, 3, 3, 3}), presets);
    EXPECT_EQ(0u, endpoints[2].values().count(P::IEQ_ENABLE));
}

class TheSampleDefaultFile : public TuningTest {
  protected:
    void SetUp() override {
        const std::string path = sourcePath("etc/multimedia_vessa_zan_default.xml");
        mText = readFile(path);
        ASSERT_EQ(0, mParser.setTuningFile(path));
        mData = mParser.getDeviceData();
        for (Tuning* t : mData->getTunings()) mTunings[t->getName()] = t;
        for (ProfileEndpoint* e : mData->getProfileEndpoints()) {
            mEndpoints[{e->getProfileId(), e->getEndpoint()}] = e;
        }
        for (Profile* p : mData->getProfiles()) mProfiles[p->getProfileId()] = p;
        // IEQ presets by type, GEQ presets by 10 + profile id.
        for (IeqPreset* p : mData->getIeqPresets()) mPresets[int(p->getType())] = p;
        for (GeqPreset* p : mData->getGeqPresets()) mPresets[10 + p->getProfileId()] = p;
    }

    std::string mText;
    TuningFileParser mParser;
    DeviceData* mData = nullptr;
    std::map<std::string, Tuning*> mTunings;
    std::map<std::pair<int, Endpoint>, ProfileEndpoint*> mEndpoints;
    std::map<int, Profile*> mProfiles;
    std::map<int, ParameterValues*> mPresets;
};

// It uses every setter, and each is found under its own name.
TEST_F(TheSampleDefaultFile, ParsesQuietlyIntoEveryRecordThroughEverySetter) {
    for (const auto& l : mLog.lines()) EXPECT_LT(l.priority, ANDROID_LOG_WARN) << l.message;
    EXPECT_EQ("3.3.0", mData->getFormatVersion());
    EXPECT_EQ(4u, mData->getIeqPresets().size());
    EXPECT_EQ(5u, mData->getGeqPresets().size());
    EXPECT_EQ(5u, mProfiles.size());
    EXPECT_EQ(15u, mEndpoints.size()) << "three per profile";
    EXPECT_EQ(12u, mTunings.size());
    EXPECT_EQ(14u, mData->getDeviceTunings().size());
    EXPECT_TRUE(mProfiles[4]->isMobility());
    EXPECT_FALSE(mProfiles[0]->isMobility());
    for (DeviceTuning* d : mData->getDeviceTunings()) {
        EXPECT_EQ(1u, mTunings.count(d->getTuning())) << d->getDevice();
    }
    SetterCollection collection;
    ASSERT_EQ(81u, SetterCollection::kAllValueSetters.size());
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        EXPECT_EQ(setter, collection.getValueSetter(name)) << name;
        EXPECT_TRUE(std::regex_search(mText, std::regex("<" + name + "[ />]"))) << name;
    }
}

// Values of each kind of record, as the real file lays them out (the setters
// themselves are checked one by one in ValueSetterTest).
TEST_F(TheSampleDefaultFile, HoldsEachValueInTheRecordThatWritesIt) {
    ProfileEndpoint* commute = mEndpoints[{4, Endpoint::SPEAKER}];
    Tuning* quad = mTunings["speaker_quad_landscape"];
    Tuning* mono = mTunings["speaker_mono_portrait"];
    ASSERT_TRUE(commute && quad && mono && mPresets[1] && mPresets[11]);
    // Record, parameter, number of values, the first values.
    const std::tuple<const ParameterValues*, P, size_t, V> spots[] = {
            {commute, P::DIALOG_ENHANCER_DUCKING, 1, {1}},
            {mProfiles[0], P::CUSTOM_DRC_METADATA, 3, {2, 100, 100}},
            {quad, P::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, 4, {1, 190, 707, -24}},
            {quad, P::OUTPUT_MIX_MATRIX, 16, {32767, 0, 0, 0, 0, 32767}},
            {mono, P::OUTPUT_MIX_MATRIX, 4, {16384, 16384, 16384, 16384}},
            {quad, P::AUDIO_OPTIMIZER_GAIN_R, 20, {60, 51, 40}},
            {mPresets[int(PresetType::DETAILED)], P::IEQ_TARGET, 20, {-58, -56}},
            {mPresets[10 + 1], P::GEQ_GAIN, 20, {384, 368}},
    };
    for (const auto& [record, p, size, head] : spots) {
        const V got = at(record, p);
        EXPECT_EQ(size, got.size()) << parameterName(p);
        EXPECT_EQ(head, V(got.begin(), got.begin() + std::min(head.size(), got.size())))
                << parameterName(p);
    }
    EXPECT_TRUE(mono->isMono());
    EXPECT_EQ(PresetType::WARM, commute->getSelectedIeqPreset());
}

// Without whitespace the first child element of every level is skipped (each tuning's
// first device, first data element and first band), but every root-level record is read.
TEST_F(TheSampleDefaultFile, LosesEveryFirstChildElementWhenCompacted) {
    TuningFileParser parser;
    ASSERT_EQ(0, parser.setTuningFile(
                         writeFile(std::regex_replace(mText, std::regex(">\\s+<"), "><"))));
    DeviceData* data = parser.getDeviceData();
    EXPECT_EQ("3.3.0", data->getFormatVersion());
    EXPECT_EQ(5u, data->getProfiles().size());
    EXPECT_EQ(2u, data->getDeviceTunings().size()) << "only the second devices";
    ASSERT_EQ(12u, data->getTunings().size());
    for (Tuning* t : data->getTunings()) {
        EXPECT_EQ(V{-999}, at(t, P::AUDIO_OPTIMIZER_ENABLE)) << t->getName();
        EXPECT_EQ(19u, at(t, P::AUDIO_OPTIMIZER_FREQUENCY).size()) << t->getName();
    }
}

}  // namespace
}  // namespace vessa::test
