#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "EffectTestUtil.h"
#include "effect/AudioOptimizerTranslator.h"
#include "effect/AudioRegulatorTranslator.h"
#include "effect/BassMbdrcTranslator.h"
#include "effect/ComplexEqualizerTranslator.h"
#include "effect/DeAmountTranslator.h"
#include "effect/IeqTranslator.h"
#include "effect/OutputModeTranslator.h"
#include "effect/SimpleTranslator.h"
#include "effect/VirtualBassEnableTranslator.h"
#include "effect/VirtualBassTranslator.h"
#include "model/DeviceParameters.h"

namespace vessa {
namespace {

using test::put;
using P = AupParameter;
using Values = std::vector<std::pair<int, std::vector<int>>>;

// Every source a case does not set. Each channel has its own values so that a
// swapped or missing channel shows, and no list is 2 or 4 long so that a
// length cannot pass for a channel count. By line: optimizer gains in the order
// left, right, left surround, right surround; the complex EQ likewise; the
// regulator; sibilance suppression; output mode and virtual-bass type.
// clang-format off
const Values kBase = {
        {1, {100, 200, 300}}, {2, {1, 2, 3}}, {4, {21, 22, 23}}, {3, {11, 12, 13}}, {5, {31, 32, 33}},
        {15, {1}}, {16, {41, 42, 43}}, {18, {47, 48, 49}}, {17, {44, 45, 46}}, {19, {50, 51, 52}},
        {59, {7}}, {50, {1000, 2000, 3000}}, {61, {-20, -21, -22}}, {60, {-10, -11, -12}}, {51, {0, 1, 0}},
        {57, {1}}, {53, {51, 52, 53}}, {55, {57, 58, 59}}, {54, {54, 55, 56}}, {56, {60, 61, 62}},
        {83, {1}}, {44, {0}}, {46, {1, 0, 0, 1}}, {82, {2}},
};
// clang-format on

struct Case {
    const Translator& translator;
    Values sources;  // set over kBase
    std::vector<test::Entry> expected;
    Values after = {};  // source values expected once the translator has run
    Endpoint endpoint = Endpoint::SPEAKER;
    bool mono = false;
};

TEST(TranslatorTest, EachTranslatorBuildsItsEntriesWordForWord) {
    const SimpleTranslator dvle(P::DVLE, toParameter(91));
    const DeAmountTranslator dea;
    const VirtualBassEnableTranslator vbe;
    const IeqTranslator ieq;
    const BassMbdrcTranslator mbdrc;
    const AudioOptimizerTranslator aobs;
    const ComplexEqualizerTranslator ceq;
    const AudioRegulatorTranslator regulator;
    const OutputModeTranslator dom;
    const VirtualBassTranslator vb;
    const std::vector<int> arbs = {3, 1000, 2000, 3000, -20, -21, -22, -10, -11, -12, 0, 1, 0};
    const std::vector<Case> cases = {
            {dvle, {{91, {1, 2}}}, {{P::DVLE, {1, 2}}}},
            // The amount is clamped at 12 from above only, and in the batch only.
            {dea, {{21, {16}}}, {{P::DEA, {12}}}, {{21, {16}}}},
            {dea, {{21, {13}}}, {{P::DEA, {12}}}},
            {dea, {{21, {12}}}, {{P::DEA, {12}}}},
            {dea, {{21, {-40}}}, {{P::DEA, {-40}}}},
            {dea, {{21, {20, 30}}}, {{P::DEA, {12, 30}}}},
            {dea, {}, {{P::DEA, {}}}},
            {vbe, {{69, {5}}}, {{P::VBM, {3}}, {P::VBON, {2}}}},
            {vbe, {{69, {0}}}, {{P::VBM, {0}}, {P::VBON, {2}}}},
            {vbe, {}, {{P::VBM, {0}}, {P::VBON, {2}}}},
            {ieq,
             {{36, {60, 600, 6000}}, {38, {7, 8, 9}}},
             {{P::IEBS, {3, 60, 600, 6000, 7, 8, 9}}}},
            {mbdrc, {{12, {1}}, {13, {9, 8}}}, {{P::BMDT, {9, 8}}}},
            {mbdrc, {{12, {0}}, {13, {9, 8}}}, {}},
            {mbdrc, {{13, {9, 8}}}, {}},
            // Band count before channel count here; channel count first in CEQT and RSSA.
            {aobs, {{45, {2}}}, {{P::AOBS, {3, 2, 100, 200, 300, 1, 2, 3, 21, 22, 23}}}},
            {aobs,
             {{45, {4}}},
             {{P::AOBS, {3, 4, 100, 200, 300, 1, 2, 3, 21, 22, 23, 11, 12, 13, 31, 32, 33}}}},
            {aobs, {{45, {6}}}, {}},
            {ceq, {{45, {2}}}, {{P::CEQT, {2, 3, 41, 42, 43, 47, 48, 49}}}},
            {ceq, {{45, {4}}}, {{P::CEQT, {4, 3, 41, 42, 43, 47, 48, 49, 44, 45, 46, 50, 51, 52}}}},
            {ceq, {{45, {2}}, {15, {2}}}, {}},
            {regulator,
             {{45, {2}}},
             {{P::ARSA, {2, 7}}, {P::ARBS, arbs}, {P::RSSA, {2, 3, 51, 52, 53, 57, 58, 59}}}},
            {regulator,
             {{45, {4}}},
             {{P::ARSA, {4, 7}},
              {P::ARBS, arbs},
              {P::RSSA, {4, 3, 51, 52, 53, 57, 58, 59, 54, 55, 56, 60, 61, 62}}}},
            {regulator, {{45, {2}}, {57, {0}}}, {{P::ARSA, {2, 7}}, {P::ARBS, arbs}}},
            {regulator, {{45, {2}}, {57, {2}}}, {{P::ARSA, {2, 7}}, {P::ARBS, arbs}}},
            {regulator, {{45, {6, 9}}}, {{P::ARSA, {6, 9, 7}}, {P::ARBS, arbs}}},
            {dom, {}, {{P::DOM, {1, 1, 0}}}, {}, Endpoint::HEADPHONE, true},
            {dom, {}, {{P::DOM, {1, 2, 0}}}, {}, Endpoint::OTHER},
            {dom, {}, {{P::DOM, {1, 0, 0, 1, 0, 0, 1}}}, {{83, {1}}, {44, {0}}}},
            // A mono speaker never virtualises and uses orientation 1, in the view too.
            {dom,
             {},
             {{P::DOM, {0, 0, 1, 1, 0, 0, 1}}},
             {{83, {0}}, {44, {1}}, {46, {1, 0, 0, 1}}},
             Endpoint::SPEAKER,
             true},
            {vb,
             {{80, {40}}, {79, {120}}, {74, {80}}, {73, {240}}},
             {{P::VBSF, {40, 120}}, {P::VBMF, {80, 240}}}},
    };
    for (size_t i = 0; i < cases.size(); ++i) {
        const Case& c = cases[i];
        DeviceParameters view(nullptr);
        for (const auto& [p, values] : kBase) put(view, p, values);
        for (const auto& [p, values] : c.sources) put(view, p, values);
        SetParamCommand cmd(test::kDevice);
        cmd.setDeviceId(test::kDevice);
        c.translator.aupTranslate(cmd, view, c.endpoint, c.mono);
        EXPECT_EQ(test::batchWords(test::kDevice, c.expected), cmd.buffer()) << "case " << i;
        for (const auto& [p, values] : c.after) {
            EXPECT_EQ(values, view.valuesOf(toParameter(p))) << "case " << i << ", " << p;
        }
    }
}

}  // namespace
}  // namespace vessa
