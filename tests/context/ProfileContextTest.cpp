#include <android/log.h>
#include <gtest/gtest.h>

#include "SampleRoot.h"
#include "storage/Provider.h"

namespace vessa {
namespace {

// A provider over the sample database whose profiles have speaker settings only.
class SpeakerOnlyProvider : public Provider {
  public:
    SpeakerOnlyProvider() { mEndpoints.insert(&mSpeaker); }
    ProfileEndpointSet loadProfileEndpoints(int) override { return mEndpoints; }
    ProfileEndpointSet loadDefaultProfileEndpoints(int) override { return mEndpoints; }

  private:
    ProfileEndpoint mSpeaker{0, Endpoint::SPEAKER, PresetType::OFF};
    ProfileEndpointSet mEndpoints;
};

TEST(AProfileContextDeathTest, EndsTheProcessOnAnEndpointItWasNotGiven) {
    test::SampleRoot root;
    { SxContextManager populate; }
    SpeakerOnlyProvider provider;
    ASSERT_EQ(0, provider.init());
    ProfileContext context(&provider, 0);
    context.load();
    EXPECT_NE(nullptr, context.getProfileEndpoint(Endpoint::SPEAKER));
    __android_log_set_minimum_priority(ANDROID_LOG_ERROR);  // the fatal line reaches stderr
    EXPECT_EXIT(context.getProfileEndpoint(Endpoint::OTHER), ::testing::ExitedWithCode(255),
                "Couldn't find the profile endpoint fo 2");
    EXPECT_EXIT(context.getSelectedIeqPreset(Endpoint::HEADPHONE), ::testing::ExitedWithCode(255),
                "Couldn't find the profile endpoint fo 1");
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
}

}  // namespace
}  // namespace vessa
