#include "EffectTestUtil.h"
#include "effect/AupController.h"

namespace vessa::test {
namespace {

// The controller writes every batch into one buffer it keeps: a small batch after
// a large one must carry its own entries only, and an empty one must send nothing.
TEST(AnAupController, SendsASmallBatchAfterALargeOneWithoutAnyOfItsEntries) {
    AupParamStore& store = AupParamStore::getInstance();
    store.reset();
    AupEffect effect(0, android::String16("ignored"));
    AupController controller(2, effect);
    Tuning tuning("spk", Endpoint::SPEAKER, false);
    for (P p : Tuning::kValidParams) tuning.set(p, {toInt(p), 1, 2});
    controller.getContext()->setTuning(Port::INTERNAL_SPEAKER, tuning);
    controller.sendParameters(kDeviceOutDefault);
    ASSERT_EQ(1u, store.getCommitCount());
    ASSERT_GT(store.lastCommit().size(), 30u);

    ProfileEndpoint endpoint(0, Endpoint::SPEAKER, PresetType::OFF);
    endpoint.set(P::DIALOG_ENHANCER_AMOUNT, {5});
    controller.getContext()->setProfileEndpoint(Port::INTERNAL_SPEAKER, endpoint);
    controller.sendParameters(kDeviceOutDefault);
    EXPECT_EQ(std::vector<AupParamCache>({AupParamCache(kDevice, aupParameterId(A::DEA), {5})}),
              store.lastCommit());
    controller.sendParameters(kDeviceOutDefault);
    EXPECT_EQ(2u, store.getCommitCount());
}

}  // namespace
}  // namespace vessa::test
