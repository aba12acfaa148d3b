#include <gtest/gtest.h>

#include <set>

#include "model/ProfileEndpoint.h"
#include "model/Tuning.h"
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

    DeviceData data;
    data.setProfileEndPoints({&disabled, &enabled, &unset, &empty});
    data.validateData();
    EXPECT_EQ(PresetType::OFF, disabled.getSelectedIeqPreset());
    EXPECT_EQ(PresetType::WARM, enabled.getSelectedIeqPreset());
    EXPECT_EQ(PresetType::BALANCED, unset.getSelectedIeqPreset());
    EXPECT_EQ(0u, unset.values().count(Parameter::IEQ_ENABLE)) << "no entry is added";
    EXPECT_EQ(PresetType::DETAILED, empty.getSelectedIeqPreset());
}

TEST(DeviceDataTest, SettersCopyTheSetsAndGettersShareThem) {
    Tuning a("a", Endpoint::SPEAKER, false);
    Tuning b("b", Endpoint::HEADPHONE, false);
    std::set<Tuning*> tunings = {&a};

    DeviceData data;
    EXPECT_EQ("", data.getSignature());
    data.setTunings(tunings);
    tunings.insert(&b);
    EXPECT_EQ(1u, data.getTunings().size()) << "a copy, not the caller's set";

    // Consumers remove entries in place while merging.
    data.getTunings().erase(&a);
    EXPECT_TRUE(data.getTunings().empty());

    data.setFormatVersion("3.3.0");
    data.setToolVersion("2.4.1");
    data.setSignature("1700000000");
    EXPECT_EQ("3.3.0", data.getFormatVersion());
    EXPECT_EQ("2.4.1", data.getToolVersion());
    EXPECT_EQ("1700000000", data.getSignature());
}

}  // namespace
}  // namespace vessa
