#include "platform/JournalLogger.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <string>

#include "TempDir.h"

namespace vessa::test {
namespace {

class AStderrThatMayBeTheJournal : public ::testing::Test {
  protected:
    ~AStderrThatMayBeTheJournal() override { unsetenv("JOURNAL_STREAM"); }
    std::string streamOf(const std::string& path) {
        struct stat status{};
        stat(path.c_str(), &status);
        return std::to_string(status.st_dev) + ":" + std::to_string(status.st_ino);
    }
    TempDir dir;
};

TEST_F(AStderrThatMayBeTheJournal, IsTheJournalOnlyWhenTheVariableNamesTheOpenFile) {
    const std::string path = dir.write("stream", "");
    const std::string other = dir.write("other", "");
    FILE* file = fopen(path.c_str(), "r");
    ASSERT_NE(nullptr, file);
    const int fd = fileno(file);
    EXPECT_FALSE(JournalLogger::isJournalStream(fd));  // unset
    setenv("JOURNAL_STREAM", streamOf(path).c_str(), 1);
    EXPECT_TRUE(JournalLogger::isJournalStream(fd));
    // Inherited by a child whose stderr was redirected elsewhere: not the journal.
    setenv("JOURNAL_STREAM", streamOf(other).c_str(), 1);
    EXPECT_FALSE(JournalLogger::isJournalStream(fd));
    setenv("JOURNAL_STREAM", "garbage", 1);
    EXPECT_FALSE(JournalLogger::isJournalStream(fd));
    fclose(file);
}

}  // namespace
}  // namespace vessa::test
