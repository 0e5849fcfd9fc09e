#include "platform/system.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "support/scratch_folder.h"

namespace zant::system {
namespace {

#if defined(_WIN32)
constexpr const char* ENDLESS_DEVICE = "NUL";
#else
constexpr const char* ENDLESS_DEVICE = "/dev/zero";
#endif

TEST(SystemFiles, OnlyARegularFileOfTheSizeIsReadAndThenWhole) {
    const test::ScratchFolder folder;
    const std::string pipe = folder.pipe("pipe");
    const std::string path = folder.path("file");
    const std::string text("{\0}\n", 4);
    std::ofstream(path, std::ios::binary) << text;
    const std::string empty = folder.path("empty");
    std::ofstream(empty, std::ios::binary).flush();
    const size_t before = test::openDescriptors();
    FileContents contents;
    EXPECT_EQ(readWholeFile(path.c_str(), text.size(), contents), ReadFileStatus::ok);
    EXPECT_EQ(std::string(contents.text.get(), contents.size + 1), text + '\0');
    EXPECT_EQ(readWholeFile(path.c_str(), text.size() - 1, contents), ReadFileStatus::noMemory);
    EXPECT_EQ(readWholeFile(empty.c_str(), 0, contents), ReadFileStatus::ok);
    EXPECT_EQ(contents.size, 0U);
    EXPECT_STREQ(contents.text.get(), "");
    for (const std::string& none : {pipe, folder.path(""), std::string(ENDLESS_DEVICE), std::string("/no/such/file")}) {
        EXPECT_EQ(readWholeFile(none.c_str(), 100, contents), ReadFileStatus::cannotOpen) << none;
    }
    EXPECT_EQ(test::openDescriptors(), before);
}

}  // namespace
}  // namespace zant::system
