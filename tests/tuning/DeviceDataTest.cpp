#include <gtest/gtest.h>

#include "model/ProfileEndpoint.h"
#include "tuning/DeviceData.h"

namespace vessa {
namespace {

TEST(DeviceDataTest, ValidateDataForcesOffOnlyWhereIeqIsDisabled) {
    ProfileEndpoint disabled(0, Endpoint::SPEAKER, PresetType::WARM);
    disabled.set(Parameter::IEQ_ENABLE, {0});
    ProfileEndpoint enabled(0, Endpoint::HEADPHONE, PresetType::WARM);
    enabled.set(Parameter::IEQ_ENABLE, {1});
    ProfileEndpoint unset(0, Endpoint::OTHER, PresetType::BALANCED);
    ProfileEndpoint empty(1, Endpoint::OTHER, PresetType::DETAILED);
    empty.set(Parameter::IEQ_ENABLE, {});

    std::set<ProfileEndpoint*> endpoints = {&disabled, &enabled, &unset};
    DeviceData data;
    data.setProfileEndPoints(endpoints);
    endpoints.clear();
    data.getProfileEndpoints().insert(&empty);  // the getter shares the held set
    data.validateData();
    EXPECT_EQ(PresetType::OFF, disabled.getSelectedIeqPreset());
    EXPECT_EQ(PresetType::WARM, enabled.getSelectedIeqPreset());
    EXPECT_EQ(PresetType::BALANCED, unset.getSelectedIeqPreset());
    EXPECT_EQ(0u, unset.values().count(Parameter::IEQ_ENABLE)) << "no entry is added";
    EXPECT_EQ(PresetType::DETAILED, empty.getSelectedIeqPreset());
}

}  // namespace
}  // namespace vessa
