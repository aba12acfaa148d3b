#include <android/log.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "platform/LogCapture.h"

namespace vessa {
namespace {

TEST(LogCaptureTest, CapturesLinesExactlyUntilDestroyed) {
    const int previous = __android_log_set_minimum_priority(ANDROID_LOG_FATAL);
    {
        LogCapture log;
        __android_log_print(ANDROID_LOG_WARN, "First", "value %d of %s", 3, "x");
        __android_log_write(ANDROID_LOG_VERBOSE, "Second", "plain");
        EXPECT_EQ(2u, log.lines().size());
        EXPECT_TRUE(log.contains(ANDROID_LOG_WARN, "First", "value 3 of x"));
        EXPECT_TRUE(log.contains(ANDROID_LOG_VERBOSE, "Second", "plain"));
        EXPECT_FALSE(log.contains(ANDROID_LOG_ERROR, "Second", "plain"));
        EXPECT_FALSE(log.contains("First", "value 3"));
    }
    // The earlier minimum priority and the host's stderr logger are back: with
    // stderr sent to a file, a line logged now lands there.
    EXPECT_EQ(ANDROID_LOG_FATAL, __android_log_get_minimum_priority());
    FILE* file = std::tmpfile();
    const int saved = dup(STDERR_FILENO);
    dup2(fileno(file), STDERR_FILENO);
    __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
    __android_log_print(ANDROID_LOG_INFO, "Third", "after the capture");
    __android_log_set_minimum_priority(previous);
    dup2(saved, STDERR_FILENO);
    close(saved);
    char written[256] = {};
    std::rewind(file);
    std::fread(written, 1, sizeof(written) - 1, file);
    std::fclose(file);
    EXPECT_NE(nullptr, std::strstr(written, "after the capture")) << written;
}

}  // namespace
}  // namespace vessa
