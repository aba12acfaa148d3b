#include "protocol/SettingsTable.h"

namespace vessa {

const std::vector<SettingsTable::Row>& SettingsTable::rows() {
    using L = client::Setting::Level;
    using P = Parameter;
    constexpr Endpoint kAny = Endpoint::SPEAKER;
    // clang-format off
    static const std::vector<Row> kRows = {
        {{kHeadphoneVirtualizer, "headphone-virtualizer", L::FIXED_ENDPOINT, 0, 1, 1, false,
          "headphone virtualizer on (the headphone endpoint only)"}, P::VIRTUALIZER_ENABLE, Endpoint::HEADPHONE},
        {{kSpeakerVirtualizer, "speaker-virtualizer", L::FIXED_ENDPOINT, 0, 1, 1, false,
          "speaker virtualizer on (the speaker endpoint only)"}, P::VIRTUALIZER_ENABLE, Endpoint::SPEAKER},
        {{kVolumeLeveler, "volume-leveler", L::ENDPOINT, 0, 1, 1, true,
          "volume leveler on"}, P::VOLUME_LEVELER_ENABLE, kAny},
        {{kIeqPreset, "ieq-preset", L::ENDPOINT, 0, 3, 1, true,
          "intelligent EQ preset: 0 off, 1 detailed, 2 balanced, 3 warm"}, P::IEQ_ID, kAny},
        {{kDialogEnhancer, "dialog-enhancer", L::ENDPOINT, 0, 1, 1, true,
          "dialog enhancer on"}, P::DIALOG_ENHANCER_ENABLE, kAny},
        {{kGraphicEq, "graphic-eq", L::ENDPOINT, 0, 1, 1, true,
          "graphic EQ on"}, P::GRAPHIC_EQUALIZER_ENABLE, kAny},
        {{kIeqAmount, "ieq-amount", L::ENDPOINT, 0, 16, 1, true,
          "intelligent EQ amount"}, P::IEQ_AMOUNT, kAny},
        {{kDialogEnhancerAmount, "dialog-enhancer-amount", L::ENDPOINT, 0, 16, 1, true,
          "dialog enhancer amount"}, P::DIALOG_ENHANCER_AMOUNT, kAny},
        {{kDialogEnhancerDucking, "dialog-enhancer-ducking", L::ENDPOINT, 0, 16, 1, true,
          "dialog enhancer ducking"}, P::DIALOG_ENHANCER_DUCKING, kAny},
        {{kGeqGains, "geq-gains", L::GEQ, -576, 576, 20, true,
          "graphic EQ band gains"}, P::GEQ_GAIN, kAny},
        {{kBassEnhancer, "bass-enhancer", L::ENDPOINT, 0, 1, 1, true,
          "bass enhancer on (also sets virtual-bass)"}, P::BASS_ENHANCER_ENABLE, kAny},
        {{kVirtualBass, "virtual-bass", L::ENDPOINT, 0, 1, 1, true,
          "virtual bass processing on"}, P::VIRTUAL_BASS_ENABLE, kAny},
        {{kVirtualizerDistance, "virtualizer-distance", L::ENDPOINT, 4, 64, 1, true,
          "headphone virtualizer source distance"}, P::HEADPHONE_VIRTUALIZER_STEERER_SOURCE_DISTANCE, kAny},
        {{kReverbSuppression, "reverb-suppression", L::PROFILE, 0, 1, 1, true,
          "reverb suppression on (profile-wide)"}, P::REVERB_SUPPRESSION_ENABLE, kAny},
        {{kReverbSuppressionAmount, "reverb-suppression-amount", L::PROFILE, 0, 9, 1, true,
          "reverb suppression amount (profile-wide)"}, P::REVERB_SUPPRESSION_AMOUNT, kAny},
        {{kVolumeLevelerAmount, "volume-leveler-amount", L::ENDPOINT, 0, 10, 1, true,
          "volume leveler amount"}, P::VOLUME_LEVELER_AMOUNT, kAny},
    };
    // clang-format on
    return kRows;
}

const SettingsTable::Row* SettingsTable::find(int id) {
    for (const Row& row : rows()) {
        if (row.setting.id == id) return &row;
    }
    return nullptr;
}

const SettingsTable::Row* SettingsTable::find(const std::string& name) {
    for (const Row& row : rows()) {
        if (name == row.setting.name) return &row;
    }
    return nullptr;
}

}  // namespace vessa
