#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <utime.h>

#include <fstream>
#include <iterator>
#include <string>

#include "TempDir.h"
#include "context/SxContextManager.h"
#include "platform/FileSystemRoot.h"

namespace vessa::test {

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// A device root holding the sample default tuning file, made the process root
// for the life of the object.
class SampleRoot {
  public:
    SampleRoot() {
        defaultFile = dir.write(SxContextManager::kDefaultTuningFile,
                                readFile(sourcePath("etc/multimedia_vessa_zan_default.xml")));
        FileSystemRoot::set(dir.path());
    }
    ~SampleRoot() { FileSystemRoot::set("/"); }

    std::string installOem(const std::string& content) {
        return dir.write(SxContextManager::kOemTuningFile, content);
    }
    std::string sampleOem() const { return readFile(sourcePath("etc/zan-extra.xml")); }
    // Moves the default file's modification time, as an update of the file would.
    void touchDefault(long seconds) const {
        struct stat st;
        stat(defaultFile.c_str(), &st);
        struct utimbuf times = {st.st_atime, st.st_mtime + seconds};
        utime(defaultFile.c_str(), &times);
    }

    TempDir dir;
    std::string defaultFile;
};

// Installs one SampleRoot for a whole test binary, for code that reaches the
// context through the process-wide singleton.
class SampleRootEnvironment : public ::testing::Environment {
  public:
    void SetUp() override { root = new SampleRoot(); }
    void TearDown() override {
        SxContextManager::getInstance().release();
        delete root;
    }
    SampleRoot* root = nullptr;
};

}  // namespace vessa::test
