#include "tuning/SetterCollection.h"

#include "tuning/AudioOptimizerValueSetter.h"
#include "tuning/DrcRowDataValueSetter.h"
#include "tuning/GeqValueSetter.h"
#include "tuning/IeqValueSetter.h"
#include "tuning/MixMatrixValueSetter.h"
#include "tuning/RegulatorTuningValueSetter.h"
#include "tuning/SimpleValueSetter.h"
#include "tuning/TuningFileParser.h"
#include "tuning/VirtualBassSubgainValueSetter.h"
#include "tuning/VirtualBassValueSetter.h"

namespace vessa {

namespace {

using P = Parameter;

std::vector<ValueSetter*> createAllValueSetters() {
    // Multi-parameter rows list their parameters in the order of the setter's
    // attribute names; the irregular orders are the tuning format's own.
    return {
            new SimpleValueSetter("calibration-boost", P::CALIBRATION_BOOST),
            new SimpleValueSetter("dialog-enhancer-enable", P::DIALOG_ENHANCER_ENABLE),
            new SimpleValueSetter("dialog-enhancer-amount", P::DIALOG_ENHANCER_AMOUNT),
            new SimpleValueSetter("dialog-enhancer-ducking", P::DIALOG_ENHANCER_DUCKING),
            new SimpleValueSetter("mi-virtualizer-binaural-steering-enable",
                                  P::MI_VIRTUALIZER_BINAURAL_STEERING_ENABLE),
            new SimpleValueSetter("peak-value", P::PEAK_VALUE),
            new SimpleValueSetter("surround-decoder-enable", P::SURROUND_DECODER_ENABLE),
            new SimpleValueSetter("surround-boost", P::SURROUND_BOOST),
            new SimpleValueSetter("volmax-boost", P::VOLMAX_BOOST),
            new SimpleValueSetter("volume-leveler-enable", P::VOLUME_LEVELER_ENABLE),
            new SimpleValueSetter("volume-leveler-amount", P::VOLUME_LEVELER_AMOUNT),
            new SimpleValueSetter("volume-leveler-in-target", P::VOLUME_LEVELER_IN_TARGET),
            new SimpleValueSetter("volume-leveler-out-target", P::VOLUME_LEVELER_OUT_TARGET),
            new SimpleValueSetter("graphic-equalizer-enable", P::GRAPHIC_EQUALIZER_ENABLE),
            new SimpleValueSetter("virtualizer-enable", P::VIRTUALIZER_ENABLE),
            new SimpleValueSetter("virtualizer-start-band", P::VIRTUALIZER_START_BAND),
            new SimpleValueSetter("bass-enhancer-enable", P::BASS_ENHANCER_ENABLE),
            new SimpleValueSetter("virtual-bass-process-enable", P::VIRTUAL_BASS_ENABLE),
            new SimpleValueSetter("headphone-virtualizer-steerer-source-distance",
                                  P::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE),
            new SimpleValueSetter("hearing-protection-enable", P::HEARING_PROTECTION_ENABLE),
            new SimpleValueSetter("hearing-protection-rms-averaging-time-win-len",
                                  P::HEARING_PROTECTION_RMS_AVERAGING_TIME_WIN_LEN),
            new SimpleValueSetter("hearing-protection-rms-attenuation-target",
                                  P::HEARING_PROTECTION_RMS_ATTENUATION_TARGET),
            new SimpleValueSetter("hearing-protection-attenuation-attack-time",
                                  P::HEARING_PROTECTION_ATTENUATION_ATTACK_TIME),
            new SimpleValueSetter("hearing-protection-attenuation-release-time",
                                  P::HEARING_PROTECTION_ATTENUATION_RELEASE_TIME),
            new SimpleValueSetter("ieq-enable", P::IEQ_ENABLE),
            new SimpleValueSetter("ieq-amount", P::IEQ_AMOUNT),
            new SimpleValueSetter("mi-dv-leveler-steering-enable",
                                  P::MI_DV_LEVELER_STEERING_ENABLE),
            new SimpleValueSetter("mi-ieq-steering-enable", P::MI_IEQ_STEERING_ENABLE),
            new SimpleValueSetter("mi-surround-compressor-steering-enable",
                                  P::MI_SURROUND_COMPRESSOR_STEERING_ENABLE),
            new SimpleValueSetter("mi-adaptive-virtualizer-steering-enable",
                                  P::MI_ADAPTIVE_VIRTUALIZER_STEERING_ENABLE),
            new SimpleValueSetter("reverb-suppression-enable", P::REVERB_SUPPRESSION_ENABLE),
            new SimpleValueSetter("reverb-suppression-amount", P::REVERB_SUPPRESSION_AMOUNT),
            new SimpleValueSetter("volume-modeler-enable", P::VOLUME_MODELER_ENABLE),
            new DrcRowDataValueSetter("drc-metadata", P::CUSTOM_DRC_METADATA),
            new SimpleValueSetter("bass-enhancer-boost", P::BASS_ENHANCER_BOOST),
            new SimpleValueSetter("bass-enhancer-cutoff-frequency",
                                  P::BASS_ENHANCER_CUTOFF_FREQUENCY),
            new SimpleValueSetter("bass-enhancer-width", P::BASS_ENHANCER_WIDTH),
            new SimpleValueSetter("bass-extraction-cutoff-frequency",
                                  P::BASS_EXTRACTION_CUTOFF_FREQUENCY),
            new SimpleValueSetter("height-filter-mode", P::HEIGHT_FILTER_MODE),
            new SimpleValueSetter("regulator-overdrive", P::REGULATOR_OVERDRIVE),
            new SimpleValueSetter("regulator-timbre-preservation",
                                  P::REGULATOR_TIMBRE_PRESERVATION),
            new RowDataValueSetter("regulator-stress-amount", P::REGULATOR_STRESS_AMOUNT),
            new SimpleValueSetter("regulator-distortion-slope", P::REGULATOR_DISTORTION_SLOPE),
            new RowDataValueSetter("virtual-bass-harmgains", P::VIRTUAL_BASS_HARMGAINS),
            new RowDataValueSetter("virtual-bass-hybgains", P::VIRTUAL_BASS_HYBGAINS),
            new SimpleValueSetter("virtual-bass-rolloff-gain", P::VIRTUAL_BASS_ROLLOFF_GAIN),
            new SimpleValueSetter("virtual-bass-blend-linear-gain",
                                  P::VIRTUAL_BASS_BLEND_LINEAR_GAIN),
            new RowDataValueSetter("virtual-bass-mix-frequency", P::VIRTUAL_BASS_MIX_FREQUENCY),
            new RowDataValueSetter("virtual-bass-compressor-tuning",
                                   P::VIRTUAL_BASS_COMPRESSOR_TUNING),
            new SimpleValueSetter("virtual-bass-overall-gain", P::VIRTUAL_BASS_OVERALL_GAIN),
            new SimpleValueSetter("virtual-bass-slope-gain", P::VIRTUAL_BASS_SLOPE_GAIN),
            new VirtualBassValueSetter("virtual-bass-mix-freqs", {P::VIRTUAL_BASS_MIX_FREQ_LOW,
                                                                  P::VIRTUAL_BASS_MIX_FREQ_HIGH}),
            new VirtualBassValueSetter("virtual-bass-src-freqs", {P::VIRTUAL_BASS_SRC_FREQ_LOW,
                                                                  P::VIRTUAL_BASS_SRC_FREQ_HIGH}),
            new VirtualBassSubgainValueSetter("virtual-bass-subgains", P::VIRTUAL_BASS_SUBGAINS),
            new SimpleValueSetter("virtualizer-front-speaker-angle",
                                  P::VIRTUALIZER_FRONT_SPEAKER_ANGLE),
            new SimpleValueSetter("virtualizer-height-speaker-angle",
                                  P::VIRTUALIZER_HEIGHT_SPEAKER_ANGLE),
            new SimpleValueSetter("virtualizer-surround-speaker-angle",
                                  P::VIRTUALIZER_SURROUND_SPEAKER_ANGLE),
            new SimpleValueSetter("volume-leveler-compressor-enable",
                                  P::VOLUME_LEVELER_COMPRESSOR_ENABLE),
            new SimpleValueSetter("volume-modeler-calibration", P::VOLUME_MODELER_CALIBRATION),
            new SimpleValueSetter("audio-optimizer-enable", P::AUDIO_OPTIMIZER_ENABLE),
            new SimpleValueSetter("bass-extraction-enable", P::BASS_EXTRACTION_ENABLE),
            new SimpleValueSetter("regulator-enable", P::REGULATOR_ENABLE),
            new SimpleValueSetter("regulator-speaker-dist-enable",
                                  P::REGULATOR_SPEAKER_DIST_ENABLE),
            new MixMatrixValueSetter("output-mode", P::OUTPUT_MIX_MATRIX),
            new SimpleValueSetter("virtual-bass-mode", P::VIRTUAL_BASS_MODE),
            new SimpleValueSetter("complex-equalizer-enable", P::COMPLEX_EQUALIZER_ENABLE),
            new RowDataValueSetter("complex-equalizer-tuning-left",
                                   P::COMPLEX_EQUALIZER_TUNING_LEFT),
            new RowDataValueSetter("complex-equalizer-tuning-right",
                                   P::COMPLEX_EQUALIZER_TUNING_RIGHT),
            new RowDataValueSetter("complex-equalizer-tuning-left-surround",
                                   P::COMPLEX_EQUALIZER_TUNING_LEFT_SURROUND),
            new RowDataValueSetter("complex-equalizer-tuning-right-surround",
                                   P::COMPLEX_EQUALIZER_TUNING_RIGHT_SURROUND),
            new SimpleValueSetter("regulator-sibilance-suppress-enable",
                                  P::REGULATOR_SIBILANCE_SUPPRESS_ENABLE),
            new SimpleValueSetter("bass-mbdrc-enable", P::BASS_MBDRC_ENABLE),
            new RowDataValueSetter("regulator-sibilance-suppress-amounts-left",
                                   P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT),
            new RowDataValueSetter("regulator-sibilance-suppress-amounts-right",
                                   P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT),
            new RowDataValueSetter("regulator-sibilance-suppress-amounts-left-surround",
                                   P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_LEFT_SURROUND),
            new RowDataValueSetter("regulator-sibilance-suppress-amounts-right-surround",
                                   P::REGULATOR_SIBILANCE_SUPPRESS_AMOUNTS_RIGHT_SURROUND),
            new RowDataValueSetter("bass-mbdrc-tuning", P::BASS_MBDRC_TUNING),
            new AudioOptimizerValueSetter("audio-optimizer-bands",
                                          {P::AUDIO_OPTIMIZER_FREQUENCY, P::AUDIO_OPTIMIZER_GAIN_L,
                                           P::AUDIO_OPTIMIZER_GAIN_R, P::AUDIO_OPTIMIZER_GAIN_LS,
                                           P::AUDIO_OPTIMIZER_GAIN_RS}),
            new RegulatorTuningValueSetter(
                    "regulator-tuning", {P::REGULATOR_FREQUENCY, P::REGULATOR_THRESHOLD_LOW,
                                         P::REGULATOR_THRESHOLD_HIGH, P::REGULATOR_ISOLATED_BAND}),
            new IeqValueSetter("ieq", {P::IEQ_FREQUENCY, P::IEQ_TARGET}),
            new GeqValueSetter("geq", {P::GEQ_FREQUENCY, P::GEQ_GAIN}),
    };
}

}  // namespace

// Never destroyed, like the setters it holds, so they stay reachable until exit.
const std::vector<ValueSetter*>& SetterCollection::kAllValueSetters =
        *new std::vector<ValueSetter*>(createAllValueSetters());

// Defined here, right after the table it is built from: static objects are
// initialised in order only within one file.
SetterCollection TuningFileParser::sSetterCollection;

SetterCollection::SetterCollection() {
    for (ValueSetter* setter : kAllValueSetters) mSetters.emplace(setter->getNodeName(), setter);
}

ValueSetter* SetterCollection::getValueSetter(const std::string& name) {
    return mSetters[name];
}

}  // namespace vessa
