#pragma once

#include <set>

#include "model/DeviceTuning.h"
#include "model/ProfileEndpoint.h"

namespace vessa {

// Orders the provider's record sets by what they stand for rather than by address,
// so every walk over them (saves, device lists) is the same from run to run.
struct RecordOrder {
    // Profile endpoints by endpoint kind; ties by address.
    bool operator()(const ProfileEndpoint* a, const ProfileEndpoint* b) const {
        if (a->getEndpoint() != b->getEndpoint()) return a->getEndpoint() < b->getEndpoint();
        return a < b;
    }
    // Device tunings by row id, which follows the order of the tuning file; ties by address.
    bool operator()(const DeviceTuning* a, const DeviceTuning* b) const {
        if (a->getId() != b->getId()) return a->getId() < b->getId();
        return a < b;
    }
};

using ProfileEndpointSet = std::set<ProfileEndpoint*, RecordOrder>;
using DeviceTuningSet = std::set<DeviceTuning*, RecordOrder>;

}  // namespace vessa
