// What the environment and the working directory may not do.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "platform/dynamic_loader.h"
#include "platform/system.h"
#include "support/environment.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

namespace fs = std::filesystem;

std::string outputOf(const std::string& program) {
    std::FILE* pipe = popen(program.c_str(), "r");
    std::array<char, 512> line{};
    if (pipe == nullptr || std::fgets(line.data(), line.size(), pipe) == nullptr) line[0] = '\0';
    if (pipe != nullptr) pclose(pipe);
    return line.data();
}

// fault: whoever starts a program of more rights than his own has it load a library of his.
TEST(Environment, APrivilegedProcessIgnoresTheMachineThatItNames) {
    const ScratchFolder folder;
    fs::permissions(folder.path(""), fs::perms(0755));
    std::ofstream(folder.path("platform.json"))
        << R"({"services":{"cvdarlink":{"binaryPathName":"\\SystemRoot\\d\\d.sys"}}})";
    const ScopedVariable root("ZELMAR_PLATFORM_ROOT", folder.path("").c_str());
    const ScopedVariable windows("windir", "/w");
    const std::string probe = folder.path("probe");
    fs::copy_file(DRIVER_DIRECTORY_PROBE, probe);
    fs::permissions(probe, fs::perms(0755));
    EXPECT_EQ(outputOf(probe), "plain /w\\d\n");
    constexpr uid_t NOBODY = 65534;
    if (geteuid() != 0 || chown(probe.c_str(), NOBODY, NOBODY) != 0 || chmod(probe.c_str(), 04755) != 0) {
        GTEST_SKIP() << "only root can make a program of another user's";
    }
    const std::string output = outputOf(probe);
    if (output.starts_with("plain")) GTEST_SKIP() << "programs of other users run with one's own rights here";
    EXPECT_EQ(output, "privileged \n");
}

// fault: a library that lies in the working directory is loaded for one of the system's.
TEST(Environment, ADecoyInTheWorkingDirectoryIsNotLoaded) {
    const ScratchFolder folder;
    fs::copy_file(TEST_MODULE_PATH, folder.path("decoy.dll"));
    const fs::path before = fs::current_path();
    fs::current_path(folder.path(""));
    EXPECT_EQ(loader::dlOpen("decoy.dll", loader::DL_NOW | loader::DL_LOCAL), nullptr);
    fs::current_path(before);
}

// fault: a character that is cut off at the end takes what lies behind the variable for its rest.
TEST(Environment, ACutCharacterEndsWithItsVariable) {
    for (const char* cut : {"w\xC3", "w\xE2\x82", "w\xF0\x9F\x98"}) {
        const ScopedVariable variable("ZELMAR_TEST_TEXT", cut);
        const std::wstring text = system::environmentVariable(L"ZELMAR_TEST_TEXT").value();
        EXPECT_EQ(text[0], L'w');
        EXPECT_EQ(text.find_first_not_of(wchar_t{0xFFFD}, 1), std::wstring::npos) << cut;
    }
}

}  // namespace
}  // namespace zant::test
