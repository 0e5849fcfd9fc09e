#include "platform/system.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <string>
#include <vector>

#include "support/scratch_folder.h"

namespace zant::system {
namespace {

#if defined(_WIN32)
constexpr const char* ENDLESS_DEVICE = "NUL";
#else
constexpr const char* ENDLESS_DEVICE = "/dev/zero";
#endif

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
}

class SystemFiles : public testing::Test {
protected:
    std::string write(const char* name, const std::string& text) const {
        std::ofstream(m_folder.path(name), std::ios::binary) << text;
        return m_folder.path(name);
    }

    const test::ScratchFolder m_folder;
};

TEST_F(SystemFiles, ARegularFileIsReadWhole) {
    const std::string text("{\0}\n", 4);
    const size_t before = test::openDescriptors();
    FileContents contents;
    EXPECT_EQ(readWholeFile(write("file", text).c_str(), text.size(), contents), ReadFileStatus::ok);
    EXPECT_EQ(std::string(contents.text.get(), contents.size), text);
    EXPECT_EQ(contents.text[contents.size], '\0');
    EXPECT_EQ(readWholeFile(write("empty", "").c_str(), 0, contents), ReadFileStatus::ok);
    EXPECT_EQ(contents.size, 0U);
    EXPECT_STREQ(contents.text.get(), "");
    EXPECT_EQ(test::openDescriptors(), before);
}

TEST_F(SystemFiles, WhatIsNotAReadableFileOfTheSizeIsRefused) {
    const std::string pipe = m_folder.pipe("pipe");
    const size_t before = test::openDescriptors();
    FileContents contents;
    for (const std::string& path :
         {pipe, m_folder.path(""), std::string(ENDLESS_DEVICE), std::string("/no/such/file")}) {
        EXPECT_EQ(readWholeFile(path.c_str(), 100, contents), ReadFileStatus::cannotOpen) << path;
    }
    EXPECT_EQ(readWholeFile(write("long", "12345").c_str(), 4, contents), ReadFileStatus::noMemory);
    EXPECT_EQ(test::openDescriptors(), before);
}

// A machine's clock may be set between the looks.
TEST(SystemClock, IsTheWallClockInNanoseconds) {
    constexpr int64_t second = 1000000000;
    const std::chrono::nanoseconds now = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_NEAR(static_cast<double>(static_cast<int64_t>(wallClockNs()) - now.count()), 0, second);
}

}  // namespace
}  // namespace zant::system
