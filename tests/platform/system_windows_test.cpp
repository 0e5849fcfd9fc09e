// The system's files on Windows or in a wine prefix.
#include <windows.h>
// Behind windows.h, which they build on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <filesystem>
#include <fstream>

#include "platform/system.h"
#include "support/scratch_folder.h"

namespace zant::system {
namespace {

// fault: a descriptor that a child inherits, a file that others cannot write, rename or delete meanwhile.
TEST(SystemWindows, AnOpenFileIsSharedAndNotInherited) {
    const test::ScratchFolder folder;
    const std::string path = folder.path(
        "Gr\xC3\xB6\xC3\x9F"
        "e");
    std::string error;
    const int descriptor = openForUpdate(path.c_str(), error);
    ASSERT_GE(descriptor, 0) << error;
    DWORD flags = HANDLE_FLAG_INHERIT;
    EXPECT_NE(GetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)), &flags), 0);
    EXPECT_EQ(flags & HANDLE_FLAG_INHERIT, 0U);
    const std::filesystem::path file(reinterpret_cast<const char8_t*>(path.c_str()));
    std::ofstream(file, std::ios::binary) << "a\r\n\x1A";
    FileContents contents;
    EXPECT_EQ(readWholeFile(path.c_str(), 100, contents), ReadFileStatus::ok);
    EXPECT_EQ(std::string(contents.text.get(), contents.size), "a\r\n\x1A") << "nothing is translated";
    EXPECT_TRUE(std::filesystem::remove(file));
    char text[ERROR_TEXT_CAPACITY] = {};
    EXPECT_TRUE(closeDescriptor(descriptor, text));
    EXPECT_FALSE(closeDescriptor(descriptor, text));
    EXPECT_STRNE(text, "");
    EXPECT_EQ(openForUpdate(folder.path("no/such/folder").c_str(), error), -1);
    EXPECT_NE(error, "");
}

}  // namespace
}  // namespace zant::system
