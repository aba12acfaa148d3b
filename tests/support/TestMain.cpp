#include <android/log.h>
#include <gtest/gtest.h>

// Tests stay quiet on the terminal: the code under test logs nothing unless a
// test installs a LogCapture to assert on its lines.
int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    __android_log_set_minimum_priority(ANDROID_LOG_SILENT);
    return RUN_ALL_TESTS();
}
