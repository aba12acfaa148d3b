#include "TuningTestSupport.h"
#include "tuning/DeviceData.h"

namespace vessa::test {
namespace {

// Only an endpoint whose IEQ is disabled is forced to "off"; one without any
// IEQ value (absent or empty) keeps its preset and gains no entry.
TEST(TheParsedData, ForcesTheOffPresetOnlyWhereIeqIsDisabled) {
    std::vector<ProfileEndpoint> endpoints(4, {0, Endpoint::SPEAKER, PresetType::WARM});
    endpoints[0].set(P::IEQ_ENABLE, {0});
    endpoints[1].set(P::IEQ_ENABLE, {1});
    endpoints[3].set(P::IEQ_ENABLE, {});
    DeviceData data;
    for (ProfileEndpoint& e : endpoints) data.getProfileEndpoints().insert(&e);
    data.validateData();
    V presets;
    for (const ProfileEndpoint& e : endpoints) presets.push_back(int(e.getSelectedIeqPreset()));
    EXPECT_EQ((V{0, 3, 3, 3}), presets);
    EXPECT_EQ(0u, endpoints[2].values().count(P::IEQ_ENABLE));
}

}  // namespace
}  // namespace vessa::test
