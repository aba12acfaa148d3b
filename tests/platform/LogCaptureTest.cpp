#include <android/log.h>
#include <gtest/gtest.h>

#include "platform/LogCapture.h"

namespace vessa {
namespace {

TEST(ALogCapture, RecordsEachLineWithItsPriorityAndTagExactly) {
    LogCapture log;
    __android_log_print(ANDROID_LOG_WARN, "First", "value %d of %s", 3, "x");
    __android_log_write(ANDROID_LOG_VERBOSE, "Second", "plain");
    EXPECT_EQ(2u, log.lines().size());
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, "First", "value 3 of x"));
    EXPECT_TRUE(log.contains(ANDROID_LOG_VERBOSE, "Second", "plain"));
    EXPECT_FALSE(log.contains(ANDROID_LOG_ERROR, "Second", "plain"));
    EXPECT_FALSE(log.contains("First", "value 3"));
}

}  // namespace
}  // namespace vessa
