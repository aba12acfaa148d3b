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

using P = Parameter;

const std::vector<Parameter> DeEnableTranslator::kSrcParams = {P::DIALOG_ENHANCER_ENABLE};
const std::vector<Parameter> DeAmountTranslator::kSrcParams = {P::DIALOG_ENHANCER_AMOUNT};
const std::vector<Parameter> AudioOptimizerTranslator::kSrcParams = {
        P::AUDIO_OPTIMIZER_FREQUENCY, P::AUDIO_OPTIMIZER_GAIN_L, P::AUDIO_OPTIMIZER_GAIN_LS,
        P::AUDIO_OPTIMIZER_GAIN_R, P::AUDIO_OPTIMIZER_GAIN_RS};
const std::vector<Parameter> AudioRegulatorTranslator::kSrcParams = {
        P::REGULATOR_STRESS_AMOUNT,
        P::REGULATOR_FREQUENCY,
        P::REGULATOR_ISOLATED_BAND,
        P::REGULATOR_THRESHOLD_HIGH,
        P::REGULATOR_THRESHOLD_LOW,
        P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT,
        P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND,
        P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT,
        P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND};
const std::vector<Parameter> GeqTranslator::kSrcParams = {P::GEQ_FREQUENCY, P::GEQ_GAIN};
const std::vector<Parameter> IeqTranslator::kSrcParams = {P::IEQ_FREQUENCY, P::IEQ_TARGET};
const std::vector<Parameter> OutputModeTranslator::kSrcParams = {
        P::VIRTUALIZER_ENABLE, P::OUTPUT_MIX_MATRIX, P::ORIENTATION};
const std::vector<Parameter> VirtualBassEnableTranslator::kSrcParams = {P::VIRTUAL_BASS_ENABLE,
                                                                        P::VIRTUAL_BASS_TYPE};
const std::vector<Parameter> VirtualBassTranslator::kSrcParams = {
        P::VIRTUAL_BASS_SRC_FREQ_LOW, P::VIRTUAL_BASS_SRC_FREQ_HIGH, P::VIRTUAL_BASS_MIX_FREQ_LOW,
        P::VIRTUAL_BASS_MIX_FREQ_HIGH};
const std::vector<Parameter> ComplexEqualizerTranslator::kSrcParams = {
        P::COMPLEX_EQUALIZER_TUNING_LEFT, P::COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND,
        P::COMPLEX_EQUALIZER_TUNING_RIGHT, P::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND};
const std::vector<Parameter> CustomDRCTranslator::kSrcParams = {P::CUSTOM_DRC_METADATA};
const std::vector<Parameter> BassMbdrcTranslator::kSrcParams = {P::BASS_MBDRC_TUNING};

namespace {

constexpr size_t kNumSimpleTranslators = 57;

// All translators in one block, members in creation order. Members of one
// access level are laid out at increasing addresses in declaration order, so
// ordering translators by address (the pending sets do) orders them by
// creation: the simple ones in table order, then the special classes.
struct TranslatorBlock {
    SimpleTranslator simple[kNumSimpleTranslators] = {
            {AupParameter::GEON, P::GRAPHIC_EQUALIZER_ENABLE},
            {AupParameter::IEON, P::IEQ_ENABLE},
            {AupParameter::IEA, P::IEQ_AMOUNT},
            {AupParameter::IEID, P::IEQ_ID},
            {AupParameter::MDLE, P::MI_DV_LEVELER_STEERING_ENABLE},
            {AupParameter::MIEE, P::MI_IEQ_STEERING_ENABLE},
            {AupParameter::MSCE, P::MI_SURROUND_COMPRESSOR_STEERING_ENABLE},
            {AupParameter::MAVE, P::MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE},
            {AupParameter::MVBE, P::MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE},
            {AupParameter::AOON, P::AUDIO_OPTIMIZER_ENABLE},
            {AupParameter::BEON, P::BASS_ENHANCER_ENABLE},
            {AupParameter::BEB, P::BASS_ENHANCER_BOOST},
            {AupParameter::BECF, P::BASS_ENHANCER_CUTOFF_FREQUENCY},
            {AupParameter::BEW, P::BASS_ENHANCER_WIDTH},
            {AupParameter::PLB, P::CALIBRATION_BOOST},
            {AupParameter::DED, P::DIALOG_ENHANCER_DUCKING},
            {AupParameter::ARDS, P::REGULATOR_DISTORTION_SLOPE},
            {AupParameter::ARON, P::REGULATOR_ENABLE},
            {AupParameter::ARDE, P::REGULATOR_SPEAKER_DIST_ENABLE},
            {AupParameter::AROD, P::REGULATOR_OVERDRIVE},
            {AupParameter::ARTP, P::REGULATOR_TIMBRE_PRESERVATION},
            {AupParameter::RSSE, P::REGULATOR_SIBILANCE_SUPPRESS_ENABLE},
            {AupParameter::NGON, P::SURROUND_DECODER_ENABLE},
            {AupParameter::DSB, P::SURROUND_BOOST},
            {AupParameter::VBOG, P::VIRTUAL_BASS_OVERALL_GAIN},
            {AupParameter::VBSG, P::VIRTUAL_BASS_SLOPE_GAIN},
            {AupParameter::VBHG, P::VIRTUAL_BASS_SUBGAINS},
            {AupParameter::VBBG, P::VIRTUAL_BASS_BLEND_LINEAR_GAIN},
            {AupParameter::VBCT, P::VIRTUAL_BASS_COMPRESSOR_TUNING},
            {AupParameter::VBHM, P::VIRTUAL_BASS_HARMGAINS},
            {AupParameter::VBHB, P::VIRTUAL_BASS_HYBGAINS},
            {AupParameter::VBMX, P::VIRTUAL_BASS_MIX_FREQUENCY},
            {AupParameter::VBRG, P::VIRTUAL_BASS_ROLLOFF_GAIN},
            {AupParameter::VMB, P::VOLMAX_BOOST},
            {AupParameter::DVLA, P::VOLUME_LEVELER_AMOUNT},
            {AupParameter::DVLC, P::VOLUME_LEVELER_COMPRESSOR_ENABLE},
            {AupParameter::DVLE, P::VOLUME_LEVELER_ENABLE},
            {AupParameter::DVLI, P::VOLUME_LEVELER_IN_TARGET},
            {AupParameter::DVLO, P::VOLUME_LEVELER_OUT_TARGET},
            {AupParameter::DVME, P::VOLUME_MODELER_ENABLE},
            {AupParameter::DVMC, P::VOLUME_MODELER_CALIBRATION},
            {AupParameter::DHFM, P::HEIGHT_FILTER_MODE},
            {AupParameter::DFSA, P::VIRTUALIZER_FRONT_SPEAKER_ANGLE},
            {AupParameter::DSA, P::VIRTUALIZER_SURROUND_SPEAKER_ANGLE},
            {AupParameter::DHSA, P::VIRTUALIZER_HEIGHT_SPEAKER_ANGLE},
            {AupParameter::SVSB, P::VIRTUALIZER_START_BAND},
            {AupParameter::VSSD, P::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE},
            {AupParameter::CEON, P::COMPLEX_EQUALIZER_ENABLE},
            {AupParameter::DPLP, P::PEAK_VALUE},
            {AupParameter::HPON, P::HEARING_PROTECTION_ENABLE},
            {AupParameter::HPTW, P::HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN},
            {AupParameter::HPAT, P::HEARING_PROTECTION_RMS_ATTENUATION_TARGET},
            {AupParameter::HPAA, P::HEARING_PROTECTION_ATTENUATION_ATTACK_TIME},
            {AupParameter::HPAR, P::HEARING_PROTECTION_ATTENUATION_RELEASE_TIME},
            {AupParameter::BMDE, P::BASS_MBDRC_ENABLE},
            {AupParameter::RVSA, P::REVERB_SUPPRESSION_AMOUNT},
            {AupParameter::RVSE, P::REVERB_SUPPRESSION_ENABLE},
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
