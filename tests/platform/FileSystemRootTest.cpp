#include <gtest/gtest.h>

#include <string>

#include "platform/FileSystemRoot.h"

namespace vessa {
namespace {

TEST(TheFileSystemRoot, ResolvesPathsUnderItWithoutDoublingSlashes) {
    const std::string previous = FileSystemRoot::get();
    const std::string path = "/data/vendor/vessa/vessa.db";
    FileSystemRoot::set("/");
    EXPECT_EQ(path, FileSystemRoot::resolve(path));
    for (const char* root : {"/tmp/r", "/tmp/r/", "/tmp/r//"}) {
        FileSystemRoot::set(root);
        EXPECT_EQ("/tmp/r/data/vendor/vessa/vessa.db", FileSystemRoot::resolve(path)) << root;
        EXPECT_EQ("/tmp/r/odm", FileSystemRoot::resolve("odm")) << root;
    }
    FileSystemRoot::set("");  // no root given: "/"
    EXPECT_EQ("/", FileSystemRoot::get());
    EXPECT_EQ(path, FileSystemRoot::resolve(path));
    FileSystemRoot::set(previous);
}

}  // namespace
}  // namespace vessa
