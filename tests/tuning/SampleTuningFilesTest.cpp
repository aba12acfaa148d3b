#include <android/log.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "model/Vocabulary.h"
#include "tuning/SetterCollection.h"
#include "tuning/TuningFileParser.h"

namespace vessa {
namespace {

using V = std::vector<int>;
using P = Parameter;

std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
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
        ASSERT_EQ(0,
                  mParser.setTuningFile(test::sourcePath("etc/multimedia_vessa_zan_default.xml")));
        mData = mParser.getDeviceData();
        for (Tuning* t : mData->getTunings()) mTunings[t->getName()] = t;
        for (ProfileEndpoint* e : mData->getProfileEndpoints()) {
            mEndpoints[{e->getProfileId(), e->getEndpoint()}] = e;
        }
        for (Profile* p : mData->getProfiles()) mProfiles[p->getProfileId()] = p;
    }

    ProfileEndpoint* endpoint(int profileId, Endpoint kind) {
        return mEndpoints[{profileId, kind}];
    }

    size_t warningsAndErrors() const {
        size_t n = 0;
        for (const LogCapture::Line& line : mLog.lines()) n += line.priority >= ANDROID_LOG_WARN;
        return n;
    }

    TuningFileParser mParser;
    DeviceData* mData = nullptr;
    std::map<std::string, Tuning*> mTunings;
    std::map<std::pair<int, Endpoint>, ProfileEndpoint*> mEndpoints;
    std::map<int, Profile*> mProfiles;
};

TEST_F(SampleTuningFilesTest, DefaultFileParsesCleanlyIntoTheExpectedRecords) {
    EXPECT_EQ(0u, warningsAndErrors());
    EXPECT_EQ("3.3.0", mData->getFormatVersion());
    EXPECT_EQ(4u, mData->getIeqPresets().size());
    EXPECT_EQ(5u, mData->getGeqPresets().size());
    EXPECT_EQ(5u, mProfiles.size());
    EXPECT_EQ(15u, mEndpoints.size());
    EXPECT_EQ(12u, mTunings.size());
    EXPECT_EQ(14u, mData->getDeviceTunings().size());
    EXPECT_TRUE(mProfiles[4]->isMobility());
    EXPECT_FALSE(mProfiles[0]->isMobility());

    std::map<std::string, std::string> defaults;
    for (DeviceTuning* d : mData->getDeviceTunings()) {
        EXPECT_EQ(1u, mTunings.count(d->getTuning())) << d->getDevice();
        if (d->getDevice() == "default_" + d->getPort()) defaults[d->getPort()] = d->getTuning();
    }
    for (Port port : {Port::INTERNAL_SPEAKER, Port::HDMI, Port::MIRACAST, Port::HEADPHONE,
                      Port::BLUETOOTH, Port::USB}) {
        EXPECT_EQ(1u, defaults.count(portName(port))) << portName(port);
    }
    for (const auto& [name, tuning] : mTunings) {
        V channels = at(tuning, P::OUTPUT_CHANNELS);
        EXPECT_TRUE(channels == V{2} || channels == V{4}) << name;
    }

    // Every element the setters know appears in the file.
    const std::string text = readText(test::sourcePath("etc/multimedia_vessa_zan_default.xml"));
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_TRUE(std::regex_search(text, std::regex("<" + setter->getNodeName() + "[ />]")))
                << setter->getNodeName();
    }
}

TEST_F(SampleTuningFilesTest, SpotValuesLandInTheirParameters) {
    ProfileEndpoint* commuteSpeaker = endpoint(4, Endpoint::SPEAKER);
    EXPECT_EQ(V{10}, at(commuteSpeaker, P::VOLUME_LEVELER_AMOUNT));
    EXPECT_EQ(V{3}, at(commuteSpeaker, P::VIRTUAL_BASS_TYPE));
    EXPECT_EQ(PresetType::WARM, commuteSpeaker->getSelectedIeqPreset());
    EXPECT_EQ(V{1}, at(endpoint(1, Endpoint::OTHER), P::IEQ_ENABLE)) << "written as 1";
    EXPECT_EQ((V{2, 100, 100}), at(mProfiles[0], P::CUSTOM_DRC_METADATA));
    EXPECT_EQ(V{0}, at(mProfiles[2], P::CUSTOM_DRC_METADATA));
    EXPECT_EQ(V{6}, at(mProfiles[3], P::REVERB_SUPPRESSION_AMOUNT));

    Tuning* quad = mTunings["speaker_quad_landscape"];
    EXPECT_EQ((V{3, 1, 126, 707, -50, 2, 2500, 1414, 24, 3, 9000, 707, -32}),
              at(quad, P::COMPLEX_EQUALIZER_TUNING_LEFT));
    EXPECT_EQ((V{1, 190, 707, -24}), at(quad, P::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND));
    EXPECT_EQ(16u, at(quad, P::OUTPUT_MIX_MATRIX).size());
    EXPECT_EQ((V{-80, -118, -160}), at(quad, P::VIRTUAL_BASS_SUBGAINS));
    EXPECT_EQ(V{42}, at(quad, P::VIRTUAL_BASS_MIX_FREQ_LOW));
    EXPECT_EQ(V{94}, at(quad, P::VIRTUAL_BASS_SRC_FREQ_HIGH));
    EXPECT_EQ(20u, at(quad, P::AUDIO_OPTIMIZER_GAIN_RS).size());
    V isolated = at(quad, P::REGULATOR_ISOLATED_BAND);
    ASSERT_EQ(20u, isolated.size());
    EXPECT_EQ((V{1, 1, 0}), V(isolated.begin(), isolated.begin() + 3));
    EXPECT_EQ(-224, at(quad, P::REGULATOR_THRESHOLD_LOW).front());

    Tuning* mono = mTunings["speaker_mono_portrait"];
    EXPECT_TRUE(mono->isMono());
    EXPECT_EQ((V{16384, 16384, 16384, 16384}), at(mono, P::OUTPUT_MIX_MATRIX));
    EXPECT_EQ(V{}, at(mono, P::AUDIO_OPTIMIZER_GAIN_LS)) << "stereo bands: no surround";

    for (IeqPreset* preset : mData->getIeqPresets()) {
        if (preset->getType() != PresetType::DETAILED) continue;
        EXPECT_EQ(20u, at(preset, P::IEQ_FREQUENCY).size());
        EXPECT_EQ(-58, at(preset, P::IEQ_TARGET).front());
    }

    // The Voice headphone endpoint names a preset with IEQ disabled.
    EXPECT_EQ(PresetType::WARM, endpoint(3, Endpoint::HEADPHONE)->getSelectedIeqPreset());
    mData->validateData();
    EXPECT_EQ(PresetType::OFF, endpoint(3, Endpoint::HEADPHONE)->getSelectedIeqPreset());
    EXPECT_EQ(PresetType::WARM, commuteSpeaker->getSelectedIeqPreset());
}

TEST_F(SampleTuningFilesTest, OemFileCollidesOnceByTuningNameAndOnceByDeviceId) {
    TuningFileParser oem;
    ASSERT_EQ(0, oem.setTuningFile(test::sourcePath("etc/zan-extra.xml")));
    EXPECT_EQ(0u, warningsAndErrors());
    DeviceData* extra = oem.getDeviceData();
    EXPECT_EQ("3.3.0", extra->getFormatVersion());
    std::set<std::string> defaultDevices;
    for (DeviceTuning* d : mData->getDeviceTunings()) defaultDevices.insert(d->getDevice());

    std::string sameName;
    for (Tuning* t : extra->getTunings()) {
        if (mTunings.count(t->getName())) sameName += t->getName();
    }
    EXPECT_EQ("headphone_generic", sameName);
    size_t toSameName = 0;
    size_t sameDevice = 0;
    for (DeviceTuning* d : extra->getDeviceTunings()) {
        toSameName += d->getTuning() == sameName;
        sameDevice += defaultDevices.count(d->getDevice());
    }
    EXPECT_EQ(1u, toSameName);
    EXPECT_EQ(1u, sameDevice);
}

TEST_F(SampleTuningFilesTest, TruncatedAndCompactCopiesNeverCrash) {
    const std::string text = readText(test::sourcePath("etc/multimedia_vessa_zan_default.xml"));
    for (size_t cut = 0; cut + 64 < text.size(); cut += text.size() / 29) {
        TuningFileParser parser;
        EXPECT_EQ(-22, parser.setTuningFile(writeFile(text.substr(0, cut)))) << cut;
    }
    // Without whitespace the first child element of every level is skipped,
    // but every root-level record is still read.
    TuningFileParser parser;
    ASSERT_EQ(0, parser.setTuningFile(
                         writeFile(std::regex_replace(text, std::regex(">\\s+<"), "><"))));
    EXPECT_EQ(5u, parser.getDeviceData()->getProfiles().size());
    EXPECT_EQ(12u, parser.getDeviceData()->getTunings().size());
}

}  // namespace
}  // namespace vessa
