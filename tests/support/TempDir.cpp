#include "TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vessa::test {

namespace fs = std::filesystem;

TempDir::TempDir() {
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base ? base : "/tmp") + "/vessa-test-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
    mPath = pattern;
}

TempDir::~TempDir() {
    std::error_code ec;
    fs::remove_all(mPath, ec);
}

std::string TempDir::write(const std::string& relative, const std::string& content) const {
    fs::path full = fs::path(mPath) / fs::path(relative).relative_path();
    fs::create_directories(full.parent_path());
    std::ofstream(full, std::ios::binary) << content;
    return full.string();
}

std::string sourcePath(const std::string& relative) {
    const char* dir = std::getenv("VESSA_SOURCE_DIR");
    return std::string(dir ? dir : VESSA_SOURCE_DIR) + "/" + relative;
}

}  // namespace vessa::test
