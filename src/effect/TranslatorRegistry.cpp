// The static translator registry: every translator object, the special
// translators' source lists, TranslatorCollection::kAllTranslators and
// ParameterTranslator::sTranslatorCollection. They are defined in this one
// file because each is built from the ones before it during static
// initialisation, and only within one file is that order guaranteed.

#include "effect/AudioOptimizerTranslator.h"
#include "effect/AudioRegulatorTranslator.h"
#include "effect/BassMbdrcTranslator.h"
#include "effect/ComplexEqualizerTranslator.h"
#include "effect/CustomDRCTranslator.h"
#include "effect/DeAmountTranslator.h"
#include "effect/DeEnableTranslator.h"
#include "effect/GeqTranslator.h"
#include "effect/IeqTranslator.h"
#include "effect/OutputModeTranslator.h"
#include "effect/ParameterTranslator.h"
#include "effect/SimpleTranslator.h"
#include "effect/TranslatorCollection.h"
#include "effect/VirtualBassEnableTranslator.h"
#include "effect/VirtualBassTranslator.h"

namespace vessa {

namespace {
std::vector<Parameter> params(std::initializer_list<int> numbers) {
    std::vector<Parameter> out;
    for (int n : numbers) out.push_back(toParameter(n));
    return out;
}
}  // namespace

const std::vector<Parameter> DeEnableTranslator::kSrcParams = params({23});
const std::vector<Parameter> DeAmountTranslator::kSrcParams = params({21});
const std::vector<Parameter> AudioOptimizerTranslator::kSrcParams = params({1, 2, 3, 4, 5});
const std::vector<Parameter> AudioRegulatorTranslator::kSrcParams =
        params({59, 50, 51, 60, 61, 53, 54, 55, 56});
const std::vector<Parameter> GeqTranslator::kSrcParams = params({24, 25});
const std::vector<Parameter> IeqTranslator::kSrcParams = params({36, 38});
const std::vector<Parameter> OutputModeTranslator::kSrcParams = params({83, 46, 44});
const std::vector<Parameter> VirtualBassEnableTranslator::kSrcParams = params({69, 82});
const std::vector<Parameter> VirtualBassTranslator::kSrcParams = params({80, 79, 74, 73});
const std::vector<Parameter> ComplexEqualizerTranslator::kSrcParams = params({16, 17, 18, 19});
const std::vector<Parameter> CustomDRCTranslator::kSrcParams = params({20});
const std::vector<Parameter> BassMbdrcTranslator::kSrcParams = params({13});

namespace {

constexpr size_t kNumSimpleTranslators = 57;

// All translators in one block, members in creation order. Members of one
// access level are laid out at increasing addresses in declaration order, so
// ordering translators by address (the pending sets do) orders them by
// creation: the simple ones in table order, then the special classes.
struct TranslatorBlock {
    SimpleTranslator simple[kNumSimpleTranslators] = {
            {AupParameter::GEON, toParameter(26)}, {AupParameter::IEON, toParameter(35)},
            {AupParameter::IEA, toParameter(34)},  {AupParameter::IEID, toParameter(37)},
            {AupParameter::MDLE, toParameter(40)}, {AupParameter::MIEE, toParameter(41)},
            {AupParameter::MSCE, toParameter(42)}, {AupParameter::MAVE, toParameter(39)},
            {AupParameter::MVBE, toParameter(43)}, {AupParameter::AOON, toParameter(0)},
            {AupParameter::BEON, toParameter(8)},  {AupParameter::BEB, toParameter(6)},
            {AupParameter::BECF, toParameter(7)},  {AupParameter::BEW, toParameter(9)},
            {AupParameter::PLB, toParameter(14)},  {AupParameter::DED, toParameter(22)},
            {AupParameter::ARDS, toParameter(48)}, {AupParameter::ARON, toParameter(49)},
            {AupParameter::ARDE, toParameter(58)}, {AupParameter::AROD, toParameter(52)},
            {AupParameter::ARTP, toParameter(62)}, {AupParameter::RSSE, toParameter(57)},
            {AupParameter::NGON, toParameter(66)}, {AupParameter::DSB, toParameter(65)},
            {AupParameter::VBOG, toParameter(76)}, {AupParameter::VBSG, toParameter(78)},
            {AupParameter::VBHG, toParameter(81)}, {AupParameter::VBBG, toParameter(67)},
            {AupParameter::VBCT, toParameter(68)}, {AupParameter::VBHM, toParameter(70)},
            {AupParameter::VBHB, toParameter(71)}, {AupParameter::VBMX, toParameter(72)},
            {AupParameter::VBRG, toParameter(77)}, {AupParameter::VMB, toParameter(88)},
            {AupParameter::DVLA, toParameter(89)}, {AupParameter::DVLC, toParameter(90)},
            {AupParameter::DVLE, toParameter(91)}, {AupParameter::DVLI, toParameter(92)},
            {AupParameter::DVLO, toParameter(93)}, {AupParameter::DVME, toParameter(95)},
            {AupParameter::DVMC, toParameter(94)}, {AupParameter::DHFM, toParameter(33)},
            {AupParameter::DFSA, toParameter(84)}, {AupParameter::DSA, toParameter(87)},
            {AupParameter::DHSA, toParameter(85)}, {AupParameter::SVSB, toParameter(86)},
            {AupParameter::VSSD, toParameter(27)}, {AupParameter::CEON, toParameter(15)},
            {AupParameter::DPLP, toParameter(47)}, {AupParameter::HPON, toParameter(30)},
            {AupParameter::HPTW, toParameter(32)}, {AupParameter::HPAT, toParameter(31)},
            {AupParameter::HPAA, toParameter(28)}, {AupParameter::HPAR, toParameter(29)},
            {AupParameter::BMDE, toParameter(12)}, {AupParameter::RVSA, toParameter(63)},
            {AupParameter::RVSE, toParameter(64)},
    };
    DeEnableTranslator deEnable;
    DeAmountTranslator deAmount;
    AudioOptimizerTranslator audioOptimizer;
    AudioRegulatorTranslator audioRegulator;
    GeqTranslator geq;
    IeqTranslator ieq;
    OutputModeTranslator outputMode;
    VirtualBassEnableTranslator virtualBassEnable;
    VirtualBassTranslator virtualBass;
    ComplexEqualizerTranslator complexEqualizer;
    CustomDRCTranslator customDrc;
    BassMbdrcTranslator bassMbdrc;

    std::set<Translator*> all() {
        std::set<Translator*> out;
        for (SimpleTranslator& t : simple) out.insert(&t);
        out.insert({&deEnable, &deAmount, &audioOptimizer, &audioRegulator, &geq, &ieq, &outputMode,
                    &virtualBass, &virtualBassEnable, &complexEqualizer, &customDrc, &bassMbdrc});
        return out;
    }
};

// Never freed: the translators live as long as the program.
TranslatorBlock* const sTranslatorBlock = new TranslatorBlock();

}  // namespace

const std::set<Translator*> TranslatorCollection::kAllTranslators = sTranslatorBlock->all();

TranslatorCollection* const ParameterTranslator::sTranslatorCollection = new TranslatorCollection();

}  // namespace vessa
