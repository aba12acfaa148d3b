#include <android/log.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "TuningTestSupport.h"
#include "model/Vocabulary.h"
#include "tuning/SetterCollection.h"
#include "tuning/TuningFileParser.h"

namespace vessa {
namespace {

using test::at;
using test::V;
using P = Parameter;

class SampleTuningFilesTest : public test::TuningTest {
  protected:
    void SetUp() override {
        const std::string path = test::sourcePath("etc/multimedia_vessa_zan_default.xml");
        std::ifstream file(path);
        mText.assign(std::istreambuf_iterator<char>(file), {});
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

    // The sample files parse without a warning or an error.
    void expectQuietLog() const {
        for (const LogCapture::Line& l : mLog.lines()) {
            EXPECT_LT(l.priority, ANDROID_LOG_WARN) << l.message;
        }
    }

    std::string mText;
    TuningFileParser mParser;
    DeviceData* mData = nullptr;
    std::map<std::string, Tuning*> mTunings;
    std::map<std::pair<int, Endpoint>, ProfileEndpoint*> mEndpoints;
    std::map<int, Profile*> mProfiles;
    std::map<int, ParameterValues*> mPresets;
};

TEST_F(SampleTuningFilesTest, DefaultFileParsesCleanlyIntoTheExpectedRecords) {
    expectQuietLog();
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
    // Every setter is found under its own name, and the file uses each one.
    SetterCollection collection;
    ASSERT_EQ(81u, SetterCollection::kAllValueSetters.size());
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        const std::string name = setter->getNodeName();
        EXPECT_EQ(setter, collection.getValueSetter(name)) << name;
        EXPECT_TRUE(std::regex_search(mText, std::regex("<" + name + "[ />]"))) << name;
    }
}

// Values of every kind of setter, each where the file puts it.
TEST_F(SampleTuningFilesTest, SpotValuesLandInTheirParameters) {
    ProfileEndpoint* commute = mEndpoints[{4, Endpoint::SPEAKER}];
    Tuning* quad = mTunings["speaker_quad_landscape"];
    Tuning* mono = mTunings["speaker_mono_portrait"];
    ASSERT_TRUE(commute && quad && mono && mPresets[1] && mPresets[11]);
    // Record, parameter, number of values, the first values.
    const std::tuple<const ParameterValues*, P, size_t, V> spots[] = {
            {commute, P::DIALOG_ENHANCER_DUCKING, 1, {1}},
            {mEndpoints[{1, Endpoint::OTHER}], P::IEQ_ENABLE, 1, {1}},
            {mProfiles[0], P::CUSTOM_DRC_METADATA, 3, {2, 100, 100}},
            {mProfiles[2], P::CUSTOM_DRC_METADATA, 1, {0}},
            {mProfiles[3], P::REVERB_SUPPRESSION_AMOUNT, 1, {6}},
            {quad, P::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND, 4, {1, 190, 707, -24}},
            {quad, P::OUTPUT_MIX_MATRIX, 16, {32767, 0, 0, 0, 0, 32767}},
            {mono, P::OUTPUT_MIX_MATRIX, 4, {16384, 16384, 16384, 16384}},
            {quad, P::VIRTUAL_BASS_SUBGAINS, 3, {-80, -118, -160}},
            {quad, P::VIRTUAL_BASS_MIX_FREQ_LOW, 1, {42}},
            {quad, P::VIRTUAL_BASS_SRC_FREQ_HIGH, 1, {94}},
            {quad, P::AUDIO_OPTIMIZER_GAIN_R, 20, {60, 51, 40}},
            {mono, P::AUDIO_OPTIMIZER_GAIN_LS, 0, {}},
            {quad, P::REGULATOR_ISOLATED_BAND, 20, {1, 1, 0}},
            {quad, P::REGULATOR_THRESHOLD_LOW, 20, {-224, -221}},
            {mPresets[1], P::IEQ_TARGET, 20, {-58, -56}},
            {mPresets[11], P::GEQ_GAIN, 20, {384, 368}},
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

TEST_F(SampleTuningFilesTest, OemFileCollidesOnceByTuningNameAndOnceByDeviceId) {
    TuningFileParser oem;
    ASSERT_EQ(0, oem.setTuningFile(test::sourcePath("etc/zan-extra.xml")));
    expectQuietLog();
    std::set<std::string> devices;
    for (DeviceTuning* d : mData->getDeviceTunings()) devices.insert(d->getDevice());
    std::string collisions;
    for (Tuning* t : oem.getDeviceData()->getTunings()) {
        if (mTunings.count(t->getName())) collisions += "tuning " + t->getName() + ";";
    }
    for (DeviceTuning* d : oem.getDeviceData()->getDeviceTunings()) {
        if (devices.count(d->getDevice())) collisions += "device " + d->getDevice() + ";";
    }
    EXPECT_EQ("tuning headphone_generic;device bt_earbuds_a;", collisions);
}

// Without whitespace the first child element of every level is skipped (each tuning's
// first device, first data element and first band), but every root-level record is read.
TEST_F(SampleTuningFilesTest, CompactCopySkipsEveryFirstChildElement) {
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
}  // namespace vessa
