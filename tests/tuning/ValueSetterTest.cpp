#include <android/log.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "model/Tuning.h"
#include "tuning/AudioOptimizerValueSetter.h"
#include "tuning/RegulatorTuningValueSetter.h"
#include "tuning/SetterCollection.h"
#include "tuning/TagIterator.h"
#include "tuning/VirtualBassValueSetter.h"

namespace vessa {
namespace {

using V = std::vector<int>;

// A record that accepts anything, for reading setters in isolation.
class Record : public ParameterValues {
  public:
    int64_t getId() const override { return -1; }
    const ParamSet& getValidParams() const override { return kAll; }
    bool has(int p) const { return values().count(toParameter(p)) != 0; }
    V at(int p) const {
        auto it = values().find(toParameter(p));
        return it == values().end() ? V{-999} : it->second;
    }

  private:
    const ParamSet kAll;
};

class ValueSetterTest : public test::TuningTest {
  protected:
    // Applies the setter registered for the first element of `body` and checks
    // that it left the iterator where it found it.
    Record apply(const std::string& body) {
        Record record;
        TagIterator it;
        openAtFirstElement(it, body);
        const std::string name = it.getNodeName();
        ValueSetter* setter = mCollection.getValueSetter(name);
        EXPECT_NE(nullptr, setter) << name;
        if (setter == nullptr) return record;
        setter->set(record, it);
        EXPECT_EQ(name, it.getNodeName());
        EXPECT_TRUE(stackIsEmpty(it)) << name;
        return record;
    }

    SetterCollection mCollection;
};

TEST_F(ValueSetterTest, CollectionKnowsEveryElementOnceAndNothingElse) {
    ASSERT_EQ(81u, SetterCollection::kAllValueSetters.size());
    std::set<std::string> names;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_TRUE(names.insert(setter->getNodeName()).second) << setter->getNodeName();
        EXPECT_EQ(setter, mCollection.getValueSetter(setter->getNodeName()));
    }
    EXPECT_EQ(nullptr, mCollection.getValueSetter("data"));
    EXPECT_EQ(nullptr, mCollection.getValueSetter("Ieq-Enable"));
    EXPECT_EQ(nullptr, mCollection.getValueSetter("data")) << "a repeated miss stays a miss";
    EXPECT_EQ("calibration-boost", SetterCollection::kAllValueSetters.front()->getNodeName());
    EXPECT_EQ("geq", SetterCollection::kAllValueSetters.back()->getNodeName());
}

TEST_F(ValueSetterTest, SingleParameterKindsStoreTheirShapes) {
    EXPECT_EQ(V{1}, apply("<ieq-enable value=\"true\"/>").at(35));
    EXPECT_EQ(V{-320}, apply("<volume-leveler-in-target value=\"-320\"/>").at(92));
    EXPECT_EQ(V{0}, apply("<virtualizer-enable/>").at(83));
    EXPECT_EQ((V{26, 16, 9}), apply("<regulator-stress-amount v=\"26,16 9\" w=\"1\"/>").at(59));

    Record noRow = apply("<virtual-bass-harmgains/>");
    EXPECT_TRUE(noRow.has(70));
    EXPECT_EQ(V{}, noRow.at(70)) << "row data without numbers stores an empty list";
    EXPECT_EQ(V{0}, apply("<drc-metadata/>").at(20)) << "DRC rows are never empty";
    EXPECT_EQ((V{2, 100}), apply("<drc-metadata value=\"2,100\"/>").at(20));

    EXPECT_EQ((V{16384, 16384, 8192, 8192}),
              apply("<output-mode>\n <m>\n  <row c=\"16384,16384\"/>\n  <row c=\"8192 8192\"/>\n"
                    " </m>\n</output-mode>")
                      .at(46));
    EXPECT_EQ((V{-80, -118, 0, -160}),
              apply("<virtual-bass-subgains g1=\"-80\" g2=\"-118\" g3=\"x\" g4=\"-160\"/>").at(81));
}

TEST_F(ValueSetterTest, VirtualBassPairsFillTheHigherNumberFromTheLowFrequency) {
    EXPECT_EQ((std::vector<std::string>{"frequency_low", "frequency_high"}),
              VirtualBassValueSetter::kAttrNames);
    Record mix = apply("<virtual-bass-mix-freqs frequency_high=\"170\" frequency_low=\"42\"/>");
    EXPECT_EQ(V{42}, mix.at(74));
    EXPECT_EQ(V{170}, mix.at(73));
    Record lowOnly = apply("<virtual-bass-mix-freqs frequency_low=\"40\"/>");
    EXPECT_EQ(V{40}, lowOnly.at(74));
    EXPECT_EQ(V{0}, lowOnly.at(73));
    Record src = apply("<virtual-bass-src-freqs frequency_low=\"30\" frequency_high=\"90\"/>");
    EXPECT_EQ(V{30}, src.at(80));
    EXPECT_EQ(V{90}, src.at(79));
}

TEST_F(ValueSetterTest, IeqBandsEndAtTheFirstElementOfAnotherName) {
    Record record =
            apply("<ieq>\n <a>\n  <b>\n"
                  "   <band_ieq frequency=\"100\" target=\"-1\"/>\n"
                  "   <band_ieq frequency=\"200\" target=\"-2\"/>\n"
                  "   <band_ieq frequency=\"300,400\" target=\"-3\"/>\n"
                  "   <band frequency=\"500\" target=\"-5\"/>\n"
                  "   <band_ieq frequency=\"600\" target=\"-6\"/>\n"
                  "  </b>\n </a>\n</ieq>");
    EXPECT_EQ((V{100, 200, 300, 400}), record.at(36));
    EXPECT_EQ((V{-1, -2, -3}), record.at(38));
    EXPECT_EQ(1u, mLog.count("ValueSetter", "No attribute band_ieq was found!"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_INFO, "ValueSetter", "No attribute band_ieq was found!"));

    // A band without a target cuts the target list there; frequencies go on.
    mLog.clear();
    Record gap =
            apply("<ieq>\n <a>\n  <b>\n"
                  "   <band_ieq frequency=\"100\" target=\"-1\"/>\n"
                  "   <band_ieq frequency=\"200\"/>\n"
                  "   <band_ieq frequency=\"300\" target=\"-3\"/>\n"
                  "  </b>\n </a>\n</ieq>");
    EXPECT_EQ((V{100, 200, 300}), gap.at(36));
    EXPECT_EQ((V{-1}), gap.at(38));
    EXPECT_EQ(0u, mLog.count("ValueSetter", "No attribute band_ieq was found!"));
}

TEST_F(ValueSetterTest, GeqBandsMayHaveAnyNameAndMissingLevelsGiveEmptyLists) {
    Record record =
            apply("<geq>\n <x>\n  <y>\n"
                  "   <band1 frequency=\"32\" gain=\"-12\"/>\n"
                  "   <other frequency=\"64\" gain=\"96\" q=\"3\"/>\n"
                  "  </y>\n </x>\n</geq>");
    EXPECT_EQ((V{32, 64}), record.at(24));
    EXPECT_EQ((V{-12, 96}), record.at(25));

    Record shallow = apply("<geq>\n <x>\n </x>\n</geq>");
    EXPECT_TRUE(shallow.has(24) && shallow.has(25)) << "both lists are stored, empty";
    EXPECT_EQ(V{}, shallow.at(24));
    EXPECT_EQ(V{}, shallow.at(25));
}

TEST_F(ValueSetterTest, AudioOptimizerKeepsSurroundGainsOnlyWhereWritten) {
    EXPECT_EQ(5u, AudioOptimizerValueSetter::kAttrNames.size());
    Record record =
            apply("<audio-optimizer-bands>\n"
                  "  <band frequency=\"100\" gain_left=\"1\" gain_right=\"2\" "
                  "gain_left_surround=\"3\"/>\n"
                  "  <band frequency=\"200\" gain_right=\"5\" gain_right_surround=\"\"/>\n"
                  "  <b frequency=\"300\" gain_left=\"7\" gain_right=\"8\"/>\n"
                  "</audio-optimizer-bands>");
    EXPECT_EQ((V{100, 200, 300}), record.at(1));
    EXPECT_EQ((V{1, 0, 7}), record.at(2)) << "gain_left";
    EXPECT_EQ((V{2, 5, 8}), record.at(4)) << "gain_right fills 4";
    EXPECT_EQ((V{3}), record.at(3)) << "gain_left_surround fills 3";
    EXPECT_TRUE(record.has(5));
    EXPECT_EQ(V{}, record.at(5));
}

TEST_F(ValueSetterTest, RegulatorTuningFillsItsParametersInItsOwnOrder) {
    EXPECT_EQ("isolated_band", RegulatorTuningValueSetter::kAttrNames.back());
    Record record =
            apply("<regulator-tuning>\n"
                  "  <band frequency=\"65\" threshold_low=\"-224\" threshold_high=\"-32\" "
                  "isolated_band=\"true\"/>\n"
                  "  <band frequency=\"136\" threshold_low=\"-221\" isolated_band=\"TRUE\"/>\n"
                  "  <band frequency=\"223\" threshold_low=\"-217\" threshold_high=\"-25\"/>\n"
                  "</regulator-tuning>");
    EXPECT_EQ((V{65, 136, 223}), record.at(50));
    EXPECT_EQ((V{-224, -221, -217}), record.at(61)) << "threshold_low fills 61";
    EXPECT_EQ((V{-32, 0, -25}), record.at(60)) << "threshold_high fills 60";
    EXPECT_EQ((V{1, 0, 0}), record.at(51));

    Record empty = apply("<regulator-tuning>\n</regulator-tuning>");
    for (int p : {50, 61, 60, 51}) {
        EXPECT_TRUE(empty.has(p)) << p;
        EXPECT_EQ(V{}, empty.at(p)) << p;
    }
}

}  // namespace
}  // namespace vessa
