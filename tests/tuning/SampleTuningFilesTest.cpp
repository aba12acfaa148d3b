#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "model/Vocabulary.h"
#include "tuning/DeviceData.h"
#include "tuning/SetterCollection.h"
#include "tuning/TuningFileParser.h"

namespace vessa {
namespace {

using V = std::vector<int>;

const std::string kDefaultFile = "etc/multimedia_vessa_zan_default.xml";
const std::string kOemFile = "etc/zan-extra.xml";

std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

V at(const ParameterValues* record, Parameter p) {
    auto it = record->values().find(p);
    return it == record->values().end() ? V{-999} : it->second;
}

class SampleTuningFilesTest : public test::TuningTest {
  protected:
    void SetUp() override {
        TuningTest::SetUp();
        ASSERT_EQ(0, mParser.setTuningFile(test::sourcePath(kDefaultFile)));
        mData = mParser.getDeviceData();
    }

    Tuning* tuning(const std::string& name) {
        for (Tuning* t : mData->getTunings()) {
            if (t->getName() == name) return t;
        }
        ADD_FAILURE() << "no tuning " << name;
        return *mData->getTunings().begin();
    }

    Profile* profile(int id) {
        for (Profile* p : mData->getProfiles()) {
            if (p->getProfileId() == id) return p;
        }
        ADD_FAILURE() << "no profile " << id;
        return *mData->getProfiles().begin();
    }

    ProfileEndpoint* endpoint(int profileId, Endpoint kind) {
        for (ProfileEndpoint* e : mData->getProfileEndpoints()) {
            if (e->getProfileId() == profileId && e->getEndpoint() == kind) return e;
        }
        ADD_FAILURE() << "no endpoint";
        return *mData->getProfileEndpoints().begin();
    }

    size_t errorLines() const {
        size_t n = 0;
        for (const LogCapture::Line& line : mLog.lines()) n += line.priority >= ANDROID_LOG_WARN;
        return n;
    }

    TuningFileParser mParser;
    DeviceData* mData = nullptr;
};

TEST_F(SampleTuningFilesTest, DefaultFileParsesCleanlyIntoTheExpectedRecords) {
    EXPECT_EQ(0u, errorLines());
    EXPECT_EQ("3.3.0", mData->getFormatVersion());
    EXPECT_EQ("2.4.1", mData->getToolVersion());
    EXPECT_EQ(4u, mData->getIeqPresets().size());
    EXPECT_EQ(5u, mData->getGeqPresets().size());
    EXPECT_EQ(5u, mData->getProfiles().size());
    EXPECT_EQ(5, mParser.getNumOfProfiles());
    EXPECT_EQ(15u, mData->getProfileEndpoints().size());
    EXPECT_EQ(12u, mData->getTunings().size());
    EXPECT_EQ(14u, mData->getDeviceTunings().size());
    EXPECT_EQ("Commute", mParser.getProfileName(4));

    std::set<PresetType> ieqTypes;
    for (IeqPreset* preset : mData->getIeqPresets()) {
        ieqTypes.insert(preset->getType());
        EXPECT_EQ(20u, at(preset, Parameter::IEQ_FREQUENCY).size());
        EXPECT_EQ(20u, at(preset, Parameter::IEQ_TARGET).size());
    }
    EXPECT_EQ(4u, ieqTypes.size());
    for (GeqPreset* preset : mData->getGeqPresets()) {
        EXPECT_EQ(20u, at(preset, Parameter::GEQ_FREQUENCY).size());
        for (int gain : at(preset, Parameter::GEQ_GAIN)) {
            EXPECT_TRUE(gain >= -576 && gain <= 576) << gain;
        }
    }
    std::vector<int> mobility;
    for (Profile* p : mData->getProfiles()) {
        if (p->isMobility()) mobility.push_back(p->getProfileId());
    }
    EXPECT_EQ(V{4}, mobility);
}

TEST_F(SampleTuningFilesTest, EveryPortHasADefaultDeviceAndEveryDeviceATuning) {
    std::set<std::string> tuningNames;
    for (Tuning* t : mData->getTunings()) tuningNames.insert(t->getName());
    std::map<std::string, std::string> defaults;
    std::set<std::string> ids;
    for (DeviceTuning* d : mData->getDeviceTunings()) {
        EXPECT_TRUE(ids.insert(d->getDevice()).second) << "device ids are unique";
        EXPECT_EQ(1u, tuningNames.count(d->getTuning())) << d->getDevice();
        if (d->getDevice() == "default_" + d->getPort()) defaults[d->getPort()] = d->getTuning();
    }
    for (Port port : {Port::INTERNAL_SPEAKER, Port::HDMI, Port::MIRACAST, Port::HEADPHONE,
                      Port::BLUETOOTH, Port::USB}) {
        EXPECT_EQ(1u, defaults.count(portName(port))) << portName(port);
    }
    EXPECT_GT(ids.size(), defaults.size()) << "alternative devices exist";

    bool quadSpeaker = false;
    bool monoSpeaker = false;
    for (Tuning* t : mData->getTunings()) {
        V channels = at(t, Parameter::OUTPUT_CHANNELS);
        EXPECT_TRUE(channels == V{2} || channels == V{4}) << t->getName();
        bool speaker = t->getEndpoint() == Endpoint::SPEAKER;
        quadSpeaker |= speaker && channels == V{4};
        monoSpeaker |= speaker && t->isMono();
    }
    EXPECT_TRUE(quadSpeaker);
    EXPECT_TRUE(monoSpeaker);
}

TEST_F(SampleTuningFilesTest, EndpointValuesStayInTheRangesTheServiceExposes) {
    const std::map<Parameter, std::pair<int, int>> ranges = {
            {Parameter::VIRTUALIZER_ENABLE, {0, 1}},
            {Parameter::VOLUME_LEVELER_ENABLE, {0, 1}},
            {Parameter::DIALOG_ENHANCER_ENABLE, {0, 1}},
            {Parameter::GRAPHIC_EQUALIZER_ENABLE, {0, 1}},
            {Parameter::IEQ_ENABLE, {0, 1}},
            {Parameter::IEQ_AMOUNT, {0, 16}},
            {Parameter::DIALOG_ENHANCER_AMOUNT, {0, 16}},
            {Parameter::DIALOG_ENHANCER_DUCKING, {0, 16}},
            {Parameter::BASS_ENHANCER_ENABLE, {0, 1}},
            {Parameter::VIRTUAL_BASS_ENABLE, {0, 1}},
            {Parameter::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, {4, 64}},
            {Parameter::VOLUME_LEVELER_AMOUNT, {0, 10}},
    };
    for (ProfileEndpoint* e : mData->getProfileEndpoints()) {
        for (const auto& [param, range] : ranges) {
            V value = at(e, param);
            ASSERT_EQ(1u, value.size()) << parameterName(param);
            EXPECT_TRUE(value[0] >= range.first && value[0] <= range.second)
                    << parameterName(param) << "=" << value[0];
        }
        EXPECT_EQ(V{3}, at(e, Parameter::VIRTUAL_BASS_TYPE));
    }
    for (Profile* p : mData->getProfiles()) {
        V enable = at(p, Parameter::REVERB_SUPPRESSION_ENABLE);
        V amount = at(p, Parameter::REVERB_SUPPRESSION_AMOUNT);
        ASSERT_EQ(1u, enable.size());
        ASSERT_EQ(1u, amount.size());
        EXPECT_TRUE(enable[0] == 0 || enable[0] == 1);
        EXPECT_TRUE(amount[0] >= 0 && amount[0] <= 9);
    }
}

TEST_F(SampleTuningFilesTest, SpotValuesLandInTheirParameters) {
    // Simple values, flags written as words and as digits.
    EXPECT_EQ(V{10}, at(endpoint(4, Endpoint::SPEAKER), Parameter::VOLUME_LEVELER_AMOUNT));
    EXPECT_EQ(V{1}, at(endpoint(1, Endpoint::OTHER), Parameter::IEQ_ENABLE));
    EXPECT_EQ(V{0}, at(endpoint(3, Endpoint::OTHER), Parameter::IEQ_ENABLE));
    EXPECT_EQ(PresetType::WARM, endpoint(4, Endpoint::SPEAKER)->getSelectedIeqPreset());
    // DRC rows, with and without numbers.
    EXPECT_EQ((V{2, 100, 100}), at(profile(0), Parameter::CUSTOM_DRC_METADATA));
    EXPECT_EQ(V{0}, at(profile(2), Parameter::CUSTOM_DRC_METADATA));
    EXPECT_EQ(V{6}, at(profile(3), Parameter::REVERB_SUPPRESSION_AMOUNT));

    Tuning* quad = tuning("speaker_quad_landscape");
    EXPECT_EQ((V{3, 1, 126, 707, -50, 2, 2500, 1414, 24, 3, 9000, 707, -32}),
              at(quad, Parameter::COMPLEX_EQUALIZER_TUNING_LEFT));
    EXPECT_EQ((V{1, 190, 707, -24}), at(quad, Parameter::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND));
    EXPECT_EQ(16u, at(quad, Parameter::OUTPUT_MIX_MATRIX).size());
    EXPECT_EQ((V{-80, -118, -160}), at(quad, Parameter::VIRTUAL_BASS_SUBGAINS));
    EXPECT_EQ(V{42}, at(quad, Parameter::VIRTUAL_BASS_MIX_FREQ_LOW));
    EXPECT_EQ(V{170}, at(quad, Parameter::VIRTUAL_BASS_MIX_FREQ_HIGH));
    EXPECT_EQ(V{32}, at(quad, Parameter::VIRTUAL_BASS_SRC_FREQ_LOW));
    EXPECT_EQ(V{94}, at(quad, Parameter::VIRTUAL_BASS_SRC_FREQ_HIGH));
    EXPECT_EQ((V{0, 96, 64, 48, 32, 24, 16, 8}), at(quad, Parameter::VIRTUAL_BASS_HARMGAINS));
    for (Parameter p : {Parameter::AUDIO_OPTIMIZER_FREQUENCY, Parameter::AUDIO_OPTIMIZER_GAIN_L,
                        Parameter::AUDIO_OPTIMIZER_GAIN_R, Parameter::AUDIO_OPTIMIZER_GAIN_LS,
                        Parameter::AUDIO_OPTIMIZER_GAIN_RS}) {
        EXPECT_EQ(20u, at(quad, p).size()) << parameterName(p);
    }
    V isolated = at(quad, Parameter::REGULATOR_ISOLATED_BAND);
    ASSERT_EQ(20u, isolated.size());
    EXPECT_EQ((V{1, 1, 0}), V(isolated.begin(), isolated.begin() + 3));
    EXPECT_EQ(-224, at(quad, Parameter::REGULATOR_THRESHOLD_LOW).front());
    EXPECT_EQ(-32, at(quad, Parameter::REGULATOR_THRESHOLD_HIGH).front());
    EXPECT_EQ(17326, at(quad, Parameter::REGULATOR_FREQUENCY).back());

    Tuning* mono = tuning("speaker_mono_portrait");
    EXPECT_TRUE(mono->isMono());
    EXPECT_EQ(V{1}, at(mono, Parameter::ORIENTATION));
    EXPECT_EQ((V{16384, 16384, 16384, 16384}), at(mono, Parameter::OUTPUT_MIX_MATRIX));
    EXPECT_EQ(20u, at(mono, Parameter::AUDIO_OPTIMIZER_GAIN_R).size());
    EXPECT_EQ(V{}, at(mono, Parameter::AUDIO_OPTIMIZER_GAIN_LS)) << "stereo bands: no surround";

    for (IeqPreset* preset : mData->getIeqPresets()) {
        if (preset->getType() != PresetType::DETAILED) continue;
        EXPECT_EQ(65, at(preset, Parameter::IEQ_FREQUENCY).front());
        EXPECT_EQ(-58, at(preset, Parameter::IEQ_TARGET).front());
        EXPECT_EQ(77, at(preset, Parameter::IEQ_TARGET).back());
    }
}

TEST_F(SampleTuningFilesTest, DefaultFileUsesEveryKnownElement) {
    std::string text = readText(test::sourcePath(kDefaultFile));
    std::set<std::string> used;
    std::regex tag("<([a-z_-]+)[ />]");
    for (auto it = std::sregex_iterator(text.begin(), text.end(), tag);
         it != std::sregex_iterator(); ++it) {
        used.insert((*it)[1]);
    }
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_EQ(1u, used.count(setter->getNodeName())) << setter->getNodeName();
    }
}

TEST_F(SampleTuningFilesTest, ValidationForcesOffWhereTheFileDisablesIeq) {
    EXPECT_EQ(PresetType::WARM, endpoint(3, Endpoint::HEADPHONE)->getSelectedIeqPreset());
    mData->validateData();
    EXPECT_EQ(PresetType::OFF, endpoint(3, Endpoint::HEADPHONE)->getSelectedIeqPreset());
    EXPECT_EQ(PresetType::WARM, endpoint(1, Endpoint::SPEAKER)->getSelectedIeqPreset());
}

TEST_F(SampleTuningFilesTest, OemFileAddsTuningsWithDeliberateCollisions) {
    mLog.clear();
    TuningFileParser oem;
    ASSERT_EQ(0, oem.setTuningFile(test::sourcePath(kOemFile)));
    EXPECT_EQ(0u, errorLines());
    DeviceData* extra = oem.getDeviceData();
    EXPECT_EQ(mData->getFormatVersion(), extra->getFormatVersion());
    EXPECT_TRUE(extra->getProfiles().empty());

    std::set<std::string> defaultTunings;
    for (Tuning* t : mData->getTunings()) defaultTunings.insert(t->getName());
    std::set<std::string> defaultDevices;
    for (DeviceTuning* d : mData->getDeviceTunings()) defaultDevices.insert(d->getDevice());

    std::vector<std::string> sameName;
    for (Tuning* t : extra->getTunings()) {
        if (defaultTunings.count(t->getName())) sameName.push_back(t->getName());
    }
    ASSERT_EQ(1u, sameName.size());
    size_t toSameName = 0;
    size_t sameDevice = 0;
    for (DeviceTuning* d : extra->getDeviceTunings()) {
        toSameName += d->getTuning() == sameName[0];
        sameDevice += defaultDevices.count(d->getDevice());
    }
    EXPECT_EQ(1u, toSameName);
    EXPECT_EQ(1u, sameDevice);
    EXPECT_GE(extra->getTunings().size(), 3u);
}

TEST_F(SampleTuningFilesTest, TruncatedAndCompactCopiesNeverCrash) {
    const std::string text = readText(test::sourcePath(kDefaultFile));
    ASSERT_GT(text.size(), 100000u);
    for (size_t cut = 0; cut + 64 < text.size(); cut += text.size() / 37) {
        TuningFileParser parser;
        EXPECT_EQ(-22, parser.setTuningFile(writeFile(text.substr(0, cut), "cut.xml"))) << cut;
        EXPECT_EQ(nullptr, parser.getDeviceData());
    }

    // The same document without whitespace between elements: the first child
    // element of every level is skipped, but everything else is still read.
    std::string compact = std::regex_replace(text, std::regex(">\\s+<"), "><");
    TuningFileParser parser;
    ASSERT_EQ(0, parser.setTuningFile(writeFile(compact, "compact.xml")));
    EXPECT_EQ("3.3.0", parser.getDeviceData()->getFormatVersion());
    EXPECT_EQ(5u, parser.getDeviceData()->getProfiles().size());
    EXPECT_EQ(12u, parser.getDeviceData()->getTunings().size());
    EXPECT_LT(parser.getDeviceData()->getDeviceTunings().size(), 14u);
}

}  // namespace
}  // namespace vessa
