#include <gtest/gtest.h>

#include "EffectTestUtil.h"
#include "effect/AudioOptimizerTranslator.h"
#include "effect/AudioRegulatorTranslator.h"
#include "effect/ComplexEqualizerTranslator.h"
#include "effect/OutputModeTranslator.h"
#include "effect/VirtualBassTranslator.h"
#include "model/DeviceParameters.h"

namespace vessa {
namespace {

using test::batchWords;
using test::put;

constexpr int kDevice = test::kTestDevice;
using test::translate;

class CompoundTranslatorTest : public ::testing::Test {
  protected:
    void SetUp() override {
        // Distinct values per channel so a swapped channel shows.
        put(mView, 1, {100, 200, 300, 400, 500});
        put(mView, 2, {1, 2, 3, 4, 5});       // left
        put(mView, 3, {11, 12, 13, 14, 15});  // left surround
        put(mView, 4, {21, 22, 23, 24, 25});  // right
        put(mView, 5, {31, 32, 33, 34, 35});  // right surround
        put(mView, 16, {41, 42});             // left
        put(mView, 17, {43, 44});             // left surround
        put(mView, 18, {45, 46});             // right
        put(mView, 19, {47, 48});             // right surround
        put(mView, 50, {1000, 2000, 3000});
        put(mView, 51, {0, 1, 0});
        put(mView, 53, {51, 52, 53});  // left
        put(mView, 54, {54, 55, 56});  // left surround
        put(mView, 55, {57, 58, 59});  // right
        put(mView, 56, {60, 61, 62});  // right surround
        put(mView, 59, {7});
        put(mView, 60, {-10, -11, -12});
        put(mView, 61, {-20, -21, -22});
    }

    DeviceParameters mView{nullptr};
};

TEST_F(CompoundTranslatorTest, AudioOptimizerPutsTheBandCountBeforeTheChannelCount) {
    AudioOptimizerTranslator translator;
    put(mView, 45, {2});
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice,
                           AupParameter::AOBS,
                           {5, 2, 100, 200, 300, 400, 500, 1, 2, 3, 4, 5, 21, 22, 23, 24, 25}}}),
              translate(translator, mView));
    put(mView, 45, {4});
    EXPECT_EQ(batchWords(kDevice, {{kDevice,
                                    AupParameter::AOBS,
                                    {5,  4,  100, 200, 300, 400, 500, 1,  2,  3,  4,  5,  21, 22,
                                     23, 24, 25,  11,  12,  13,  14,  15, 31, 32, 33, 34, 35}}}),
              translate(translator, mView));
    for (const std::vector<int>& other :
         {std::vector<int>{1}, std::vector<int>{6}, std::vector<int>{}}) {
        put(mView, 45, other);
        EXPECT_EQ(batchWords(kDevice, {}), translate(translator, mView));
    }
}

TEST_F(CompoundTranslatorTest, ComplexEqualizerPutsTheChannelCountFirstAndNeedsEnableOne) {
    ComplexEqualizerTranslator translator;
    put(mView, 45, {2});
    put(mView, 15, {1});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::CEQT, {2, 2, 41, 42, 45, 46}}}),
              translate(translator, mView));
    put(mView, 45, {4});
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice, AupParameter::CEQT, {4, 2, 41, 42, 45, 46, 43, 44, 47, 48}}}),
              translate(translator, mView));
    put(mView, 15, {2});
    EXPECT_EQ(batchWords(kDevice, {}), translate(translator, mView));
    put(mView, 15, {});
    EXPECT_EQ(batchWords(kDevice, {}), translate(translator, mView));
    put(mView, 15, {1});
    put(mView, 45, {3});
    EXPECT_EQ(batchWords(kDevice, {}), translate(translator, mView));
}

TEST_F(CompoundTranslatorTest, RegulatorSendsSibilanceTableOnlyWhenEnabled) {
    AudioRegulatorTranslator translator;
    put(mView, 45, {2});
    put(mView, 57, {1});
    const test::Entry arsa{kDevice, AupParameter::ARSA, {2, 7}};
    const test::Entry arbs{kDevice,
                           AupParameter::ARBS,
                           {3, 1000, 2000, 3000, -20, -21, -22, -10, -11, -12, 0, 1, 0}};
    EXPECT_EQ(
            batchWords(kDevice,
                       {arsa, arbs, {kDevice, AupParameter::RSSA, {2, 3, 51, 52, 53, 57, 58, 59}}}),
            translate(translator, mView));

    put(mView, 45, {4});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::ARSA, {4, 7}},
                                   arbs,
                                   {kDevice,
                                    AupParameter::RSSA,
                                    {4, 3, 51, 52, 53, 57, 58, 59, 54, 55, 56, 60, 61, 62}}}),
              translate(translator, mView));

    put(mView, 45, {2});
    put(mView, 57, {0});
    EXPECT_EQ(batchWords(kDevice, {arsa, arbs}), translate(translator, mView));
    put(mView, 57, {2});
    EXPECT_EQ(batchWords(kDevice, {arsa, arbs}), translate(translator, mView));

    // The channel-count list goes into ARSA as it is, also when it is unusual.
    put(mView, 57, {1});
    put(mView, 45, {6, 9});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::ARSA, {6, 9, 7}}, arbs}),
              translate(translator, mView));
}

TEST_F(CompoundTranslatorTest, OutputModeDependsOnEndpointAndMono) {
    OutputModeTranslator translator;
    put(mView, 83, {1});
    put(mView, 44, {0});
    put(mView, 46, {1, 0, 0, 1});

    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DOM, {1, 1, 0}}}),
              translate(translator, mView, Endpoint::HEADPHONE, true));
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DOM, {1, 2, 0}}}),
              translate(translator, mView, Endpoint::OTHER, false));
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DOM, {1, 0, 0, 1, 0, 0, 1}}}),
              translate(translator, mView, Endpoint::SPEAKER, false));
    EXPECT_EQ(std::vector<int>{1}, mView.valuesOf(toParameter(83)));

    // A mono speaker: virtualizer 0 and orientation 1, written into the source too.
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DOM, {0, 0, 1, 1, 0, 0, 1}}}),
              translate(translator, mView, Endpoint::SPEAKER, true));
    EXPECT_EQ(std::vector<int>{0}, mView.valuesOf(toParameter(83)));
    EXPECT_EQ(std::vector<int>{1}, mView.valuesOf(toParameter(44)));
    EXPECT_EQ((std::vector<int>{1, 0, 0, 1}), mView.valuesOf(toParameter(46)));
}

TEST_F(CompoundTranslatorTest, VirtualBassFrequencyRangesLowThenHigh) {
    put(mView, 80, {40});
    put(mView, 79, {120});
    put(mView, 74, {80});
    put(mView, 73, {240});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::VBSF, {40, 120}},
                                   {kDevice, AupParameter::VBMF, {80, 240}}}),
              translate(VirtualBassTranslator(), mView));
}

}  // namespace
}  // namespace vessa
