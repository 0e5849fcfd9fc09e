// The system's operations against the real registry, files and texts of Windows or a wine prefix.
#include <windows.h>
// Behind windows.h, which they build on.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <array>
#include <filesystem>
#include <fstream>

#include "platform/system.h"
#include "support/environment.h"
#include "support/machine.h"
#include "support/scratch_folder.h"
#include "thread_name.h"

namespace zant::system {
namespace {

class SystemWindows : public testing::Test {
protected:
    // Skips where the machine may not be changed.
    void become(const std::string& platform) {
        if (!m_machine.become(platform)) GTEST_SKIP() << "services and registry may not be changed here";
    }

    test::Machine m_machine;
    const test::ScratchFolder m_folder;
};

// fault: a size that a value's type or a short buffer leaves wrong, a key that stays open and cannot be deleted.
TEST_F(SystemWindows, RegistryValuesComeByTypeAndSize) {
    become(R"({"registry":{"HKCU":{"Software\\Zant Test":{"text":"abc","bytes":[1,2,3]}}}})");
    RegistryKey none;
    EXPECT_EQ(none.open(RegistryRoot::currentUser, "Software\\Zant Test\\none"), REGISTRY_NOT_FOUND);
    RegistryKey key;
    ASSERT_EQ(key.open(RegistryRoot::currentUser, "Software\\Zant Test"), REGISTRY_OK);
    std::array<char, 8> buffer{};
    uint32_t size = 0;
    EXPECT_EQ(key.read("text", RegistryType::text, nullptr, size), REGISTRY_OK);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(key.read("text", RegistryType::text, buffer.data(), size), REGISTRY_OK);
    EXPECT_STREQ(buffer.data(), "abc");
    EXPECT_EQ(key.read("text", RegistryType::binary, nullptr, size), REGISTRY_WRONG_TYPE);
    EXPECT_EQ(key.read("none", RegistryType::any, nullptr, size), REGISTRY_NOT_FOUND);
    size = 2;
    EXPECT_EQ(key.read("bytes", RegistryType::binary, buffer.data(), size), REGISTRY_MORE_DATA);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(key.read("bytes", RegistryType::any, buffer.data(), size), REGISTRY_OK);
    EXPECT_EQ(std::string(buffer.data(), size), "\1\2\3");
}

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
