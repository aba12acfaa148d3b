#include <android/log.h>
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/LogCapture.h"
#include "platform/LogRepeats.h"

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

TEST(ALogRepeats, AdmitsAFailureAgainOnceItsWindowIsOver) {
    LogCapture log;
    {
        LogRepeats repeats("Tag", ANDROID_LOG_WARN, std::chrono::milliseconds(1));
        EXPECT_TRUE(repeats.admit("send failed"));
        EXPECT_TRUE(repeats.admit("store full"));  // another failure, its own count
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        EXPECT_TRUE(repeats.admit("send failed"));
    }
    EXPECT_TRUE(log.lines().empty()) << "nothing was held back, so nothing to sum up";
}

TEST(ALogRepeats, SumsUpWhatItHeldBackWhenDestroyed) {
    LogCapture log;
    {
        LogRepeats repeats("Tag", ANDROID_LOG_WARN);
        EXPECT_TRUE(repeats.admit("send failed"));
        for (int i = 0; i < 3; ++i) EXPECT_FALSE(repeats.admit("send failed"));
        EXPECT_TRUE(repeats.admit("store full"));
        EXPECT_FALSE(repeats.admit("store full"));
        EXPECT_TRUE(log.lines().empty());
    }
    ASSERT_EQ(2u, log.lines().size());
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, "Tag", "send failed: 3 more times in the last 1 s"));
    EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, "Tag", "store full: 1 more times in the last 1 s"));
}

}  // namespace
}  // namespace vessa
