#pragma once

#include <string>

namespace vessa {

// The directory under which the service's fixed absolute paths (tuning files,
// settings database) are resolved. "/" unless the daemon or a test moves it.
class FileSystemRoot {
public:
    static void set(const std::string& root);
    static std::string get();
    // Joins an absolute path such as "/data/vendor/vessa/x.db" onto the root.
    static std::string resolve(const std::string& absolutePath);

private:
    FileSystemRoot() = delete;
};

}  // namespace vessa
