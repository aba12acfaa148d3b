#include <gtest/gtest.h>

#include "EffectTestUtil.h"
#include "effect/BassMbdrcTranslator.h"
#include "effect/CustomDRCTranslator.h"
#include "effect/DeAmountTranslator.h"
#include "effect/DeEnableTranslator.h"
#include "effect/GeqTranslator.h"
#include "effect/IeqTranslator.h"
#include "effect/SimpleTranslator.h"
#include "effect/VirtualBassEnableTranslator.h"
#include "model/DeviceParameters.h"

namespace vessa {
namespace {

using test::batchWords;
using test::put;

constexpr int kDevice = test::kTestDevice;
using test::translate;

TEST(TranslatorTest, SimpleTranslatorCopiesItsParameter) {
    DeviceParameters view(nullptr);
    put(view, 91, {1, 2});
    SimpleTranslator dvle(AupParameter::DVLE, toParameter(91));
    ASSERT_EQ(std::vector<Parameter>{toParameter(91)}, dvle.getSrcParams());
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DVLE, {1, 2}}}), translate(dvle, view));

    // An absent Parameter is read as an empty list, and added to the source as one.
    SimpleTranslator hpon(AupParameter::HPON, toParameter(30));
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::HPON, {}}}), translate(hpon, view));
    ASSERT_EQ(1u, view.values().count(toParameter(30)));
    EXPECT_TRUE(view.values().at(toParameter(30)).empty());
}

TEST(TranslatorTest, DialogEnhancerEnableGoesToDeonAndMdee) {
    DeviceParameters view(nullptr);
    put(view, 23, {1});
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice, AupParameter::DEON, {1}}, {kDevice, AupParameter::MDEE, {1}}}),
              translate(DeEnableTranslator(), view));
}

TEST(TranslatorTest, DialogEnhancerAmountIsClampedAtTwelve) {
    DeAmountTranslator translator;
    DeviceParameters view(nullptr);
    const auto amountSent = [&](const std::vector<int>& amount) {
        put(view, 21, amount);
        const std::vector<int> words = translate(translator, view);
        EXPECT_EQ(aupParameterId(AupParameter::DEA), words[3]);
        return std::vector<int>(words.begin() + 5, words.end());
    };
    EXPECT_EQ(std::vector<int>{12}, amountSent({16}));
    EXPECT_EQ(std::vector<int>{12}, amountSent({13}));
    EXPECT_EQ(std::vector<int>{12}, amountSent({12}));
    EXPECT_EQ(std::vector<int>{0}, amountSent({0}));
    EXPECT_EQ(std::vector<int>{-40}, amountSent({-40}));  // no lower clamp
    EXPECT_EQ((std::vector<int>{12, 30}), amountSent({20, 30}));
    EXPECT_EQ(std::vector<int>{}, amountSent({}));
    // The source keeps the unclamped value.
    put(view, 21, {16});
    translate(translator, view);
    EXPECT_EQ(std::vector<int>{16}, view.valuesOf(toParameter(21)));
}

TEST(TranslatorTest, GraphicAndIntelligentEqualizerBandTables) {
    DeviceParameters view(nullptr);
    put(view, 24, {100, 1000, 10000});
    put(view, 25, {-3, 0, 4});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::GEBS, {3, 100, 1000, 10000, -3, 0, 4}},
                                   {kDevice, AupParameter::VCBF, {100, 1000, 10000}}}),
              translate(GeqTranslator(), view));

    put(view, 36, {60, 600});
    put(view, 38, {7, 8});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::IEBS, {2, 60, 600, 7, 8}}}),
              translate(IeqTranslator(), view));
}

TEST(TranslatorTest, VirtualBassEnableSendsModeThreeOrZero) {
    VirtualBassEnableTranslator translator;
    DeviceParameters view(nullptr);
    put(view, 82, {2});
    put(view, 69, {5});
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice, AupParameter::VBM, {3}}, {kDevice, AupParameter::VBON, {2}}}),
              translate(translator, view));
    put(view, 69, {0});
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice, AupParameter::VBM, {0}}, {kDevice, AupParameter::VBON, {2}}}),
              translate(translator, view));
    DeviceParameters empty(nullptr);
    EXPECT_EQ(batchWords(kDevice,
                         {{kDevice, AupParameter::VBM, {0}}, {kDevice, AupParameter::VBON, {}}}),
              translate(translator, empty));
}

TEST(TranslatorTest, CustomDrcAndBassMbdrc) {
    DeviceParameters view(nullptr);
    put(view, 20, {1, 2, 3});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::DRCM, {1, 2, 3}}}),
              translate(CustomDRCTranslator(), view));

    BassMbdrcTranslator mbdrc;
    put(view, 13, {9, 8, 7});
    put(view, 12, {0});
    EXPECT_EQ(batchWords(kDevice, {}), translate(mbdrc, view));
    put(view, 12, {1});
    EXPECT_EQ(batchWords(kDevice, {{kDevice, AupParameter::BMDT, {9, 8, 7}}}),
              translate(mbdrc, view));
    // An empty enable counts as off.
    DeviceParameters noEnable(nullptr);
    put(noEnable, 13, {9});
    EXPECT_EQ(batchWords(kDevice, {}), translate(mbdrc, noEnable));
}

}  // namespace
}  // namespace vessa
