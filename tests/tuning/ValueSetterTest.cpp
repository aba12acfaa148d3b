#include <android/log.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "TuningTestSupport.h"
#include "tuning/SetterCollection.h"
#include "tuning/TagIterator.h"

namespace vessa {
namespace {

using V = std::vector<int>;

// A record that accepts any parameter.
class Record : public ParameterValues {
  public:
    int64_t getId() const override { return -1; }
    const ParamSet& getValidParams() const override { return kAll; }
    V at(int p) const {
        auto it = values().find(toParameter(p));
        return it == values().end() ? V{-999} : it->second;
    }

  private:
    const ParamSet kAll;
};

class ValueSetterTest : public test::TuningTest {
  protected:
    // Applies the setter registered for the first element of `body`, which
    // must leave the iterator where it found it.
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

TEST_F(ValueSetterTest, CollectionHoldsEveryElementOnce) {
    ASSERT_EQ(81u, SetterCollection::kAllValueSetters.size());
    std::set<std::string> names;
    for (ValueSetter* setter : SetterCollection::kAllValueSetters) {
        EXPECT_TRUE(names.insert(setter->getNodeName()).second) << setter->getNodeName();
        EXPECT_EQ(setter, mCollection.getValueSetter(setter->getNodeName()));
    }
    EXPECT_EQ(nullptr, mCollection.getValueSetter("Ieq-Enable"));
}

TEST_F(ValueSetterTest, SingleParameterShapes) {
    EXPECT_EQ(V{1}, apply("<ieq-enable value=\"true\"/>").at(35));
    EXPECT_EQ(V{0}, apply("<virtualizer-enable/>").at(83));
    EXPECT_EQ((V{26, 16, 9}), apply("<regulator-stress-amount v=\"26,16 9\" w=\"1\"/>").at(59));
    EXPECT_EQ(V{}, apply("<virtual-bass-harmgains/>").at(70)) << "stored, empty";
    EXPECT_EQ(V{0}, apply("<drc-metadata/>").at(20)) << "DRC rows are never empty";
    EXPECT_EQ((V{16384, 16384, 8192}),
              apply("<output-mode>\n <m>\n  <row c=\"16384,16384\"/>\n  <row c=\"8192\"/>\n"
                    " </m>\n</output-mode>")
                      .at(46));
    EXPECT_EQ((V{-80, 0, -160}),
              apply("<virtual-bass-subgains a=\"-80\" b=\"x\" c=\"-160\"/>").at(81));
}

TEST_F(ValueSetterTest, MultiParameterOrdersAreTheFormatsOwn) {
    Record mix = apply("<virtual-bass-mix-freqs frequency_high=\"170\" frequency_low=\"42\"/>");
    EXPECT_EQ(V{42}, mix.at(74));
    EXPECT_EQ(V{170}, mix.at(73));
    Record src = apply("<virtual-bass-src-freqs frequency_low=\"40\"/>");
    EXPECT_EQ(V{40}, src.at(80));
    EXPECT_EQ(V{0}, src.at(79)) << "a missing attribute reads as 0";

    Record ao =
            apply("<audio-optimizer-bands>\n"
                  "  <band frequency=\"100\" gain_left=\"1\" gain_right=\"2\" "
                  "gain_left_surround=\"3\"/>\n"
                  "  <band frequency=\"200\" gain_right=\"5\" gain_right_surround=\"\"/>\n"
                  "  <b frequency=\"300\" gain_left=\"7\" gain_right=\"8\"/>\n"
                  "</audio-optimizer-bands>");
    EXPECT_EQ((V{100, 200, 300}), ao.at(1));
    EXPECT_EQ((V{1, 0, 7}), ao.at(2));
    EXPECT_EQ((V{2, 5, 8}), ao.at(4)) << "gain_right fills 4";
    EXPECT_EQ((V{3}), ao.at(3)) << "gain_left_surround fills 3, only where written";
    EXPECT_EQ(V{}, ao.at(5));

    Record rt =
            apply("<regulator-tuning>\n"
                  "  <b frequency=\"65\" threshold_low=\"-224\" threshold_high=\"-32\" "
                  "isolated_band=\"true\"/>\n"
                  "  <b frequency=\"136\" threshold_low=\"-221\" isolated_band=\"TRUE\"/>\n"
                  "</regulator-tuning>");
    EXPECT_EQ((V{65, 136}), rt.at(50));
    EXPECT_EQ((V{-224, -221}), rt.at(61));
    EXPECT_EQ((V{-32, 0}), rt.at(60));
    EXPECT_EQ((V{1, 0}), rt.at(51));
    EXPECT_EQ(V{}, apply("<regulator-tuning>\n</regulator-tuning>").at(51));
}

TEST_F(ValueSetterTest, EqualiserBandsThreeLevelsDown) {
    Record ieq =
            apply("<ieq>\n <a>\n  <b>\n"
                  "   <band_ieq frequency=\"100\" target=\"-1\"/>\n"
                  "   <band_ieq frequency=\"200\"/>\n"
                  "   <band_ieq frequency=\"300,400\" target=\"-3\"/>\n"
                  "   <band frequency=\"500\" target=\"-5\"/>\n"
                  "   <band_ieq frequency=\"600\" target=\"-6\"/>\n"
                  "  </b>\n </a>\n</ieq>");
    EXPECT_EQ((V{100, 200, 300, 400}), ieq.at(36)) << "ends at the first other element";
    EXPECT_EQ((V{-1}), ieq.at(38)) << "a missing target ends the target list";
    EXPECT_EQ(1u, mLog.count("ValueSetter", "No attribute band_ieq was found!"));
    EXPECT_TRUE(mLog.contains(ANDROID_LOG_INFO, "ValueSetter", "No attribute band_ieq was found!"));

    Record geq =
            apply("<geq>\n <x>\n  <y>\n   <b1 frequency=\"32\" gain=\"-12\"/>\n"
                  "   <other frequency=\"64\" gain=\"96\"/>\n  </y>\n </x>\n</geq>");
    EXPECT_EQ((V{32, 64}), geq.at(24));
    EXPECT_EQ((V{-12, 96}), geq.at(25));
    EXPECT_EQ(V{}, apply("<geq>\n <x>\n </x>\n</geq>").at(25));
}

}  // namespace
}  // namespace vessa
