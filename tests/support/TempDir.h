#pragma once

#include <string>

namespace vessa::test {

// A fresh directory under $TMPDIR, removed with everything in it on destruction.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return mPath; }
    // Writes a file below the directory, creating parent folders; returns its path.
    std::string write(const std::string& relative, const std::string& content) const;

private:
    std::string mPath;
};

// Path of a file in the source tree (for the sample tuning files in etc/).
std::string sourcePath(const std::string& relative);

}  // namespace vessa::test
