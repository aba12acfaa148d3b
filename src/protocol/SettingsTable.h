#pragma once

#include <string>
#include <vector>

#include "model/Parameter.h"
#include "model/Vocabulary.h"
#include "vessa/Setting.h"

namespace vessa {

// The settings clients address by id: one row each, read by the parameter
// adapter (what to store where, clamped or not), the manager and the service
// (the ids they treat specially), and every client that prints or parses them.
class SettingsTable {
  public:
    enum Id : int {
        kHeadphoneVirtualizer = 101,
        kSpeakerVirtualizer = 102,
        kVolumeLeveler = 103,
        kIeqPreset = 104,
        kDialogEnhancer = 105,
        kGraphicEq = 106,
        kIeqAmount = 107,
        kDialogEnhancerAmount = 108,
        kDialogEnhancerDucking = 109,
        kGeqGains = 110,
        kBassEnhancer = 111,
        kVirtualBass = 112,
        kVirtualizerDistance = 113,
        kReverbSuppression = 114,
        kReverbSuppressionAmount = 115,
        kVolumeLevelerAmount = 116,
    };
    // Ids count from here; this one is a hole in the table (no setting).
    static constexpr int kBaseId = 100;

    struct Row {
        client::Setting setting;
        Parameter parameter;
        Endpoint endpoint;  // FIXED_ENDPOINT rows only
    };

    static const std::vector<Row>& rows();
    // Null for an id or name that is no setting.
    static const Row* find(int id);
    static const Row* find(const std::string& name);

  private:
    SettingsTable() = delete;
};

}  // namespace vessa
