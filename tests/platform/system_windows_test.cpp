// The system's operations against the real files of Windows or a wine prefix.
#include <windows.h>
// Behind windows.h, which they build on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <filesystem>
#include <fstream>

#include "platform/system.h"
#include "support/environment.h"
#include "support/scratch_folder.h"
#include "thread_name.h"

namespace zant::system {
namespace {

class SystemWindows : public testing::Test {
protected:
    const test::ScratchFolder m_folder;
};

// fault: a descriptor that a child inherits, a file that others cannot write, rename or delete meanwhile.
TEST_F(SystemWindows, AnOpenFileIsSharedAndNotInherited) {
    const std::string path = m_folder.path(
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
    EXPECT_EQ(openForUpdate(m_folder.path("no/such/folder").c_str(), error), -1);
    EXPECT_NE(error, "");
}

TEST_F(SystemWindows, TextsAndNamesKeepTheirCharacters) {
    const test::ScopedVariable variable("ZANT_TEST", "\xF0\x9F\x98\x80");
    EXPECT_EQ(environmentVariable(L"ZANT_TEST"), L"\xD83D\xDE00");
    EXPECT_EQ(environmentVariable(L"ZANT_NO_SUCH"), std::nullopt);
    EXPECT_EQ(narrow(L"\xD83D\xDE00 \xD83D"), "\xF0\x9F\x98\x80 \xEF\xBF\xBD");
    const std::string before = sim::threadName();
    setThreadName("zant_perf_driver");
    EXPECT_EQ(sim::threadName(), "zant_perf_driver") << "whole: Windows cuts no name";
    setThreadName(before.c_str());
}

}  // namespace
}  // namespace zant::system
