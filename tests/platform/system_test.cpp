#include "platform/system.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace zant::system {
namespace {

TEST(SystemModules, TheListHoldsTheLoadersHandlesInLoadOrder) {
    void* const module = loadModule(TEST_MODULE_PATH);
    ASSERT_NE(module, nullptr);
    std::vector<void*> list(countModules().value());
    EXPECT_EQ(listModules(list.data(), list.size()), list.size());
    EXPECT_EQ(list.front(), mainModule());
    EXPECT_EQ(list.back(), module);
    std::vector<void*> shorter(2);
    EXPECT_EQ(listModules(shorter.data(), 1), 1U) << "a module may arrive between count and list";
    EXPECT_EQ(shorter, (std::vector<void*>{mainModule(), nullptr}));

    EXPECT_TRUE(unloadModule(module));
    EXPECT_EQ(listModules(list.data(), list.size()), list.size() - 1);
    EXPECT_FALSE(unloadModule(module));
    EXPECT_EQ(resolveSymbol(module, "getenv"), nullptr);
}

class SystemFiles : public testing::Test {
protected:
    void SetUp() override {
        std::string name = testing::TempDir() + "/zant_system_XXXXXX";
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        m_folder = name;
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string write(const char* name, const std::string& text) const {
        std::ofstream(m_folder / name, std::ios::binary) << text;
        return m_folder / name;
    }

    std::filesystem::path m_folder;
};

// The number that the next opened file would get.
int nextDescriptor() {
    const int descriptor = dup(STDIN_FILENO);
    close(descriptor);
    return descriptor;
}

TEST_F(SystemFiles, ARegularFileIsReadWhole) {
    const std::string text("{\0}\n", 4);
    const int before = nextDescriptor();
    FileContents contents;
    EXPECT_EQ(readWholeFile(write("file", text).c_str(), text.size(), contents), ReadFileStatus::ok);
    EXPECT_EQ(std::string(contents.text.get(), contents.size), text);
    EXPECT_EQ(contents.text[contents.size], '\0');
    EXPECT_EQ(readWholeFile(write("empty", "").c_str(), 0, contents), ReadFileStatus::ok);
    EXPECT_EQ(contents.size, 0U);
    EXPECT_STREQ(contents.text.get(), "");
    EXPECT_EQ(nextDescriptor(), before);
}

TEST_F(SystemFiles, WhatIsNotAReadableFileOfTheSizeIsRefused) {
    const std::string pipe = m_folder / "pipe";
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int before = nextDescriptor();
    FileContents contents;
    for (const std::string& path : {pipe, m_folder.string(), std::string("/dev/zero"), std::string("/no/such/file")}) {
        EXPECT_EQ(readWholeFile(path.c_str(), 100, contents), ReadFileStatus::cannotOpen) << path;
    }
    EXPECT_EQ(readWholeFile(write("long", "12345").c_str(), 4, contents), ReadFileStatus::noMemory);
    EXPECT_EQ(nextDescriptor(), before);
}

TEST(SystemClock, IsTheWallClockInNanoseconds) {
    const auto now = [] {
        return std::chrono::nanoseconds(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const auto before = now();
    const auto clock = static_cast<int64_t>(wallClockNs());
    EXPECT_LE(before, clock);
    EXPECT_LE(clock, now());
}

}  // namespace
}  // namespace zant::system
