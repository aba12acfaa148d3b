#include "platform/FileSystemRoot.h"

#include <mutex>

namespace vessa {

namespace {
std::mutex gRootLock;
std::string& rootStorage() {
    static std::string root = "/";
    return root;
}
}  // namespace

void FileSystemRoot::set(const std::string& root) {
    std::lock_guard<std::mutex> guard(gRootLock);
    rootStorage() = root.empty() ? "/" : root;
}

std::string FileSystemRoot::get() {
    std::lock_guard<std::mutex> guard(gRootLock);
    return rootStorage();
}

std::string FileSystemRoot::resolve(const std::string& absolutePath) {
    std::string root = get();
    while (root.size() > 1 && root.back() == '/') root.pop_back();
    if (root == "/") return absolutePath;
    if (absolutePath.empty() || absolutePath.front() != '/') return root + "/" + absolutePath;
    return root + absolutePath;
}

}  // namespace vessa
