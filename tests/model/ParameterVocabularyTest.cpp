#include <gtest/gtest.h>

#include "model/Parameter.h"

namespace vessa {
namespace {

TEST(ParameterVocabularyTest, NamesRoundTrip) {
    Parameter p;
    ASSERT_TRUE(parameterFromName("virtual_bass_type", &p));
    EXPECT_EQ(82, toInt(p));
}

}  // namespace
}  // namespace vessa
