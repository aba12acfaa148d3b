#include "ModelTestSupport.h"

namespace vessa::test {
namespace {

TEST(AProfileView, ReportsOnlyTheProfileLevelParametersOfItsProfileAndPreset) {
    RecordingObserver observer;
    ProfileParameters view(&observer);
    EXPECT_EQ(&view, observer.lastSource);
    EXPECT_EQ(-1, view.getId());
    Profile profile(0, "Music", false);
    profile.set(P::VOLUME_MODELER_ENABLE, {1});
    profile.set(P::CUSTOM_DRC_METADATA, {0});
    profile.set(P::IEQ_AMOUNT, {3});  // device-level: ignored by this view
    GeqPreset geq(0);
    geq.set(P::GEQ_GAIN, {0, 1});
    geq.set(P::GEQ_FREQUENCY, {32, 64});
    observer.take();
    view.setProfile(profile);
    view.setGeqPreset(geq);
    EXPECT_EQ((Events{"custom_drc_metadata", "volume_modeler_enable", "geq_frequency", "geq_gain"}),
              observer.take());
    EXPECT_EQ(0u, view.values().count(P::IEQ_AMOUNT));
    EXPECT_EQ(&profile, view.getProfile());
    EXPECT_EQ(&geq, view.getGeqPreset());
}

}  // namespace
}  // namespace vessa::test
