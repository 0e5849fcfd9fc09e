// Files and handles that only Linux has: links, relative loads, paths of any length.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "platform/dynamic_loader.h"
#include "support/scratch_folder.h"

namespace zant::loader {
namespace {

TEST(DynamicLoaderFiles, AModulesPathIsWhereItWasLoadedFromAndShorterThanTheBuffer) {
    namespace fs = std::filesystem;
    const test::ScratchFolder scratch;
    const fs::path folder = fs::canonical(scratch.path(""));
    const fs::path start = fs::current_path();
    const auto pathOf = [](const fs::path& library) {
        void* const module = dlOpen(library.c_str(), DL_NOW | DL_LOCAL);
        EXPECT_EQ(dlOpen(library.filename().c_str(), DL_NOLOAD), module) << "known by its bare file name";
        fs::current_path("/");
        std::string path = "before";
        const int found = dlAddr(dlSym(module, "zant_test_module_answer"), path);
        EXPECT_EQ(found, path.empty() ? 0 : 1);
        EXPECT_EQ(dlClose(module), 0);
        return path;
    };

    fs::current_path(folder);
    fs::copy_file(TEST_MODULE_PATH, "real.so");
    fs::create_symlink("real.so", "link.so");
    EXPECT_EQ(pathOf("./real.so"), folder / "real.so") << "the working directory changed after the load";
    EXPECT_EQ(pathOf(folder / "link.so"), folder / "link.so");

    const std::string longest = (folder / std::string(258 - folder.native().size(), 'x')).string();
    fs::copy_file(TEST_MODULE_PATH, longest);
    fs::copy_file(TEST_MODULE_PATH, longest + "x");
    EXPECT_EQ(longest.size(), 259U);
    EXPECT_EQ(pathOf(longest), longest);
    EXPECT_EQ(pathOf(longest + "x"), "");
    EXPECT_STREQ(dlError(), "Failed to get module file name");
    fs::current_path(start);
}

TEST(DynamicLoaderFiles, WhatOthersDependOnCannotBeClosed) {
    EXPECT_EQ(dlClose(dlOpen("libc.so.6", DL_NOLOAD)), -1);
    EXPECT_STREQ(dlError(), "free library failed");
}

}  // namespace
}  // namespace zant::loader
