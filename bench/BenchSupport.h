#pragma once

// Files and folders the benchmark programs share: the sample tuning file, a
// generated file ten times its size, and a temporary device root.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace vessa::bench {

// glibc leaves freed small blocks in a pile that the next large allocation tidies
// up. A measurement that ends with this pays for its own frees, and the work timed
// after it does not pay for them.
inline void settleFreedMemory() {
    void* volatile block = malloc(4096);
    free(block);
}

inline const std::string& sampleDefaultFile() {
    static const std::string path =
            std::string(VESSA_SOURCE_DIR) + "/etc/multimedia_vessa_zan_default.xml";
    return path;
}

inline std::string readText(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// Renames every attribute `attr` of `block`: name="x" becomes name="x_<suffix>".
inline std::string renamed(std::string block, const std::string& attr, const std::string& suffix) {
    const std::string key = " " + attr + "=\"";
    for (size_t pos = block.find(key); pos != std::string::npos; pos = block.find(key, pos)) {
        size_t close = block.find('"', pos + key.size());
        block.insert(close, "_" + suffix);
        pos = close;
    }
    return block;
}

// The default file with its tunings replicated, under new tuning names and
// device ids, until it is at least `factor` times as large.
inline std::string scaledText(const std::string& text, size_t factor) {
    const std::string open = "    <tuning ";
    const std::string close = "</tuning>\n";
    size_t first = text.find(open);
    size_t last = text.rfind(close) + close.size();
    const std::string tunings = text.substr(first, last - first);
    std::string out = text.substr(0, last);
    for (int copy = 1; out.size() < factor * text.size(); ++copy) {
        out += renamed(renamed(tunings, "name", "copy" + std::to_string(copy)), "id",
                       "copy" + std::to_string(copy));
    }
    return out + text.substr(last);
}

inline std::string tenfoldText(const std::string& text) {
    return scaledText(text, 10);
}

// A temporary folder, removed with its contents at destruction.
class TempFolder {
  public:
    TempFolder() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base ? base : "/tmp") + "/vessa-bench-XXXXXX";
        if (mkdtemp(pattern.data()) != nullptr) mPath = pattern;
    }
    ~TempFolder() {
        std::error_code ec;
        if (!mPath.empty()) std::filesystem::remove_all(mPath, ec);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return mPath; }
    // Writes a file at an absolute device path below the folder.
    std::string write(const std::string& devicePath, const std::string& content) const {
        std::filesystem::path full = std::filesystem::path(mPath) / devicePath.substr(1);
        std::filesystem::create_directories(full.parent_path());
        std::ofstream(full, std::ios::binary) << content;
        return full.string();
    }

  private:
    std::string mPath;
};

// The sample default file ten times over, written once per program.
inline const std::string& tenfoldSampleFile() {
    static TempFolder sFolder;
    static const std::string sPath =
            sFolder.write("/tenfold.xml", tenfoldText(readText(sampleDefaultFile())));
    return sPath;
}

}  // namespace vessa::bench
