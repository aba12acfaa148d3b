#include <memory>
#include <tuple>
#include <utility>

#include "EffectTestUtil.h"
#include "effect/AudioOptimizerTranslator.h"
#include "effect/AudioRegulatorTranslator.h"
#include "effect/ComplexEqualizerTranslator.h"
#include "effect/DeAmountTranslator.h"
#include "effect/IeqTranslator.h"
#include "effect/OutputModeTranslator.h"
#include "effect/VirtualBassEnableTranslator.h"
#include "effect/VirtualBassTranslator.h"

namespace vessa::test {
namespace {

using Sources = std::vector<std::pair<P, V>>;

class ATranslator : public ::testing::Test {
  protected:
    // The translator's entries over a fresh view in which every parameter p
    // holds {10p+1, 10p+2, 10p+3} unless `sources` sets it. Every list differs,
    // so a swapped or missing source shows, and none is 2 or 4 long, so that a
    // length cannot pass for a channel count.
    V translate(const Translator& t, const Sources& sources = {},
                Endpoint endpoint = Endpoint::SPEAKER, bool mono = false) {
        mView = std::make_unique<DeviceParameters>(nullptr);
        for (P p : DeviceParameters::kValidParams) {
            mView->set(p, {10 * toInt(p) + 1, 10 * toInt(p) + 2, 10 * toInt(p) + 3});
        }
        for (const auto& [p, values] : sources) mView->set(p, values);
        SetParamCommand cmd(kDevice);
        cmd.setDeviceId(kDevice);
        t.aupTranslate(cmd, *mView, endpoint, mono);
        return cmd.buffer();
    }
    static V batch(const std::vector<Entry>& entries) { return batchWords(kDevice, entries); }

    std::unique_ptr<DeviceParameters> mView;
};

TEST_F(ATranslator, ClampsTheDialogEnhancerAmountAtTwelveFromAboveInTheBatchOnly) {
    const std::pair<V, V> cases[] = {
            {{13}, {12}}, {{12}, {12}}, {{-40}, {-40}}, {{20, 30}, {12, 30}}, {{}, {}}};
    for (const auto& [amount, sent] : cases) {
        EXPECT_EQ(batch({{A::DEA, sent}}),
                  translate(DeAmountTranslator(), {{P::DIALOG_ENHANCER_AMOUNT, amount}}));
        EXPECT_EQ(amount, mView->valuesOf(P::DIALOG_ENHANCER_AMOUNT));
    }
}

TEST_F(ATranslator, RunsVirtualBassInModeThreeWhenEnabledAndSendsItsType) {
    for (const auto& [enable, mode] : std::vector<std::pair<V, int>>{{{5}, 3}, {{0}, 0}, {{}, 0}}) {
        EXPECT_EQ(batch({{A::VBM, {mode}}, {A::VBON, {821, 822, 823}}}),
                  translate(VirtualBassEnableTranslator(), {{P::VIRTUAL_BASS_ENABLE, enable}}));
    }
}

TEST_F(ATranslator, SendsTheIeqBandCountThenFrequenciesThenTargets) {
    EXPECT_EQ(batch({{A::IEBS, {3, 361, 362, 363, 381, 382, 383}}}), translate(IeqTranslator()));
}

// The band count comes before the channel count here, after it in CEQT and RSSA.
TEST_F(ATranslator, SendsTheOptimizerBandsForTwoOrFourChannelsOnly) {
    const AudioOptimizerTranslator aobs;
    EXPECT_EQ(batch({{A::AOBS, {3, 2, 11, 12, 13, 21, 22, 23, 41, 42, 43}}}),
              translate(aobs, {{P::OUTPUT_CHANNELS, {2}}}));
    EXPECT_EQ(
            batch({{A::AOBS, {3, 4, 11, 12, 13, 21, 22, 23, 41, 42, 43, 31, 32, 33, 51, 52, 53}}}),
            translate(aobs, {{P::OUTPUT_CHANNELS, {4}}}));
    EXPECT_EQ(batch({}), translate(aobs, {{P::OUTPUT_CHANNELS, {6}}}));
}

TEST_F(ATranslator, SendsTheComplexEqualizerForTwoOrFourChannelsWhenEnabled) {
    const ComplexEqualizerTranslator ceq;
    const V two = {2, 3, 161, 162, 163, 181, 182, 183};
    const V four = {4, 3, 161, 162, 163, 181, 182, 183, 171, 172, 173, 191, 192, 193};
    EXPECT_EQ(batch({{A::CEQT, two}}),
              translate(ceq, {{P::OUTPUT_CHANNELS, {2}}, {P::COMPLEX_EQUALIZER_ENABLE, {1}}}));
    EXPECT_EQ(batch({{A::CEQT, four}}),
              translate(ceq, {{P::OUTPUT_CHANNELS, {4}}, {P::COMPLEX_EQUALIZER_ENABLE, {1}}}));
    EXPECT_EQ(batch({}),
              translate(ceq, {{P::OUTPUT_CHANNELS, {2}}, {P::COMPLEX_EQUALIZER_ENABLE, {2}}}));
}

// The channel list goes into ARSA whole, whatever its length.
TEST_F(ATranslator, SendsTheRegulatorTablesAndTheSibilanceTableOnlyWhenItIsOn) {
    const AudioRegulatorTranslator regulator;
    const Entry arbs = {A::ARBS, {3, 501, 502, 503, 611, 612, 613, 601, 602, 603, 511, 512, 513}};
    const V two = {2, 3, 531, 532, 533, 551, 552, 553};
    const V four = {4, 3, 531, 532, 533, 551, 552, 553, 541, 542, 543, 561, 562, 563};
    for (const auto& [channels, sibilance, rssa] : std::vector<std::tuple<V, int, V>>{
                 {{2}, 1, two}, {{4}, 1, four}, {{2}, 0, {}}, {{2}, 2, {}}, {{6, 9}, 1, {}}}) {
        V arsa = channels;
        arsa.insert(arsa.end(), {591, 592, 593});
        std::vector<Entry> expected = {{A::ARSA, arsa}, arbs};
        if (!rssa.empty()) expected.push_back({A::RSSA, rssa});
        EXPECT_EQ(batch(expected),
                  translate(regulator, {{P::OUTPUT_CHANNELS, channels},
                                        {P::REGULATOR_SIBILANCE_SUPPRESS_ENABLE, {sibilance}}}));
    }
}

// A mono speaker is never virtualised, and its view is set to orientation one.
TEST_F(ATranslator, SendsTheOutputModeWithTheEndpointAndTheMixMatrixOfASpeaker) {
    const OutputModeTranslator dom;
    EXPECT_EQ(batch({{A::DOM, {831, 832, 833, 1, 441, 442, 443}}}),
              translate(dom, {}, Endpoint::HEADPHONE, true));
    EXPECT_EQ(batch({{A::DOM, {831, 832, 833, 2, 441, 442, 443}}}),
              translate(dom, {}, Endpoint::OTHER));
    EXPECT_EQ(batch({{A::DOM, {831, 832, 833, 0, 441, 442, 443, 461, 462, 463}}}), translate(dom));
    EXPECT_EQ(batch({{A::DOM, {0, 0, 1, 461, 462, 463}}}),
              translate(dom, {}, Endpoint::SPEAKER, true));
    EXPECT_EQ(V{0}, mView->valuesOf(P::VIRTUALIZER_ENABLE));
    EXPECT_EQ(V{1}, mView->valuesOf(P::ORIENTATION));
}

TEST_F(ATranslator, SendsTheVirtualBassSourceAndMixFrequenciesLowThenHigh) {
    EXPECT_EQ(batch({{A::VBSF, {801, 802, 803, 791, 792, 793}},
                     {A::VBMF, {741, 742, 743, 731, 732, 733}}}),
              translate(VirtualBassTranslator()));
}

}  // namespace
}  // namespace vessa::test
