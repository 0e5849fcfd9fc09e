#include "platform/dynamic_loader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/system.h"
#include "support/scratch_folder.h"

namespace zant::loader {
namespace {

constexpr uint32_t NOW_LOCAL = DL_NOW | DL_LOCAL;
constexpr const char* ANSWER = "zant_test_module_answer";

// A function of a library that every program depends on.
#if defined(_WIN32)
constexpr const char* SYSTEM_SYMBOL = "GetCurrentProcessId";
#else
constexpr const char* SYSTEM_SYMBOL = "getenv";
#endif

bool loaded() {
    return system::findLoadedModule(TEST_MODULE_PATH) != nullptr;
}

class DynamicLoaderTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(loaded());
        dlError();
    }
    void TearDown() override { EXPECT_FALSE(loaded()) << "a test kept a reference"; }
};

TEST_F(DynamicLoaderTest, AFailureSetsTheThreadsOwnTextWhichIsReadOnce) {
    EXPECT_EQ(dlOpen("libno_such_module.so", NOW_LOCAL), nullptr);
    std::thread([] { EXPECT_STREQ(dlError(), ""); }).join();
    // These set none.
    for (const uint32_t flags : {DL_NOLOAD, DL_NOW | DL_NOLOAD}) EXPECT_EQ(dlOpen(TEST_MODULE_PATH, flags), nullptr);
    EXPECT_EQ(dlClose(nullptr), 0);
    EXPECT_EQ(dlSym(nullptr, ANSWER), nullptr);
    EXPECT_EQ(dlSym(DL_DEFAULT, nullptr), nullptr);
    EXPECT_STREQ(dlError(), "load library failed");
    EXPECT_STREQ(dlError(), "");
    for (const uint32_t flags : {0U, DL_GLOBAL, DL_NOLOAD | DL_LOCAL}) {
        EXPECT_EQ(dlOpen(TEST_MODULE_PATH, flags), nullptr);
        EXPECT_STREQ(dlError(), "flags must either include DL_NOW or only specify DL_NOLOAD");
    }
}

TEST_F(DynamicLoaderTest, NoNameMeansTheMainModuleWhichOutlivesItsClosing) {
    for (const uint32_t flags : {0U, NOW_LOCAL, DL_NOLOAD}) {
        EXPECT_EQ(dlOpen(nullptr, flags), system::mainModule());
        EXPECT_EQ(dlClose(dlOpen("", flags)), 0);
    }
    EXPECT_EQ(dlSym(system::mainModule(), SYSTEM_SYMBOL), nullptr);
    EXPECT_NE(dlSym(DL_DEFAULT, SYSTEM_SYMBOL), nullptr);
}

TEST_F(DynamicLoaderTest, ALocalModuleIsHiddenUntilItIsOpenedGlobally) {
    void* const module = dlOpen(TEST_MODULE_PATH, NOW_LOCAL);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(dlSym(module, SYSTEM_SYMBOL), nullptr) << "which is a dependency's";
    EXPECT_EQ(dlSym(DL_DEFAULT, ANSWER), nullptr);
    EXPECT_STREQ(dlError(), "can't resolve symbol");
    const auto answer = reinterpret_cast<int (*)()>(dlSym(module, ANSWER));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);

    const std::string fileName = std::filesystem::path(TEST_MODULE_PATH).filename().string();
    for (const uint32_t flags : {DL_NOLOAD, DL_NOW | DL_NOLOAD}) {  // which take no reference
        EXPECT_EQ(dlOpen(TEST_MODULE_PATH, flags), module);
        EXPECT_EQ(dlOpen(fileName.c_str(), flags), module);
    }
    EXPECT_EQ(dlOpen(TEST_MODULE_PATH, DL_NOW | DL_GLOBAL), module);
    EXPECT_EQ(dlSym(DL_DEFAULT, ANSWER), reinterpret_cast<void*>(answer));
    for (int reference = 0; reference < 2; ++reference) EXPECT_EQ(dlClose(module), 0);
}

// fault: the first hidden module ends the search.
TEST_F(DynamicLoaderTest, AVisibleModuleIsFoundBehindAHiddenOne) {
    const test::ScratchFolder folder;
    const std::string copy = folder.path("copy_of_test_module.dll");
    std::filesystem::copy_file(TEST_MODULE_PATH, copy);
    void* const hidden = dlOpen(TEST_MODULE_PATH, NOW_LOCAL);
    void* const visible = dlOpen(copy.c_str(), DL_NOW | DL_GLOBAL);
    ASSERT_NE(visible, nullptr);
    EXPECT_EQ(dlSym(DL_DEFAULT, ANSWER), dlSym(visible, ANSWER));
    EXPECT_EQ(dlClose(visible), 0);
    EXPECT_EQ(dlClose(hidden), 0);
}

TEST_F(DynamicLoaderTest, AModuleThatWasThereBeforeStaysVisibleAndClosingEndsLocality) {
    for (const bool thereBefore : {true, false}) {
        void* const module = thereBefore ? system::loadModule(TEST_MODULE_PATH) : dlOpen(TEST_MODULE_PATH, NOW_LOCAL);
        ASSERT_NE(module, nullptr);
        EXPECT_EQ(thereBefore ? dlOpen(TEST_MODULE_PATH, NOW_LOCAL) : system::loadModule(TEST_MODULE_PATH), module);
        EXPECT_EQ(dlSym(DL_DEFAULT, ANSWER) != nullptr, thereBefore);
        EXPECT_EQ(dlClose(module), 0);
        EXPECT_NE(dlSym(DL_DEFAULT, ANSWER), nullptr);
        EXPECT_EQ(dlClose(module), 0);
    }
}

TEST_F(DynamicLoaderTest, HandlesThatAreNoneAreHarmless) {
    void* const stale = dlOpen(TEST_MODULE_PATH, NOW_LOCAL);
    ASSERT_EQ(dlClose(stale), 0);
    int noModule = 0;
    for (void* handle : {stale, static_cast<void*>(&noModule), reinterpret_cast<void*>(uintptr_t{5})}) {
        EXPECT_EQ(dlSym(handle, ANSWER), nullptr);
        EXPECT_STREQ(dlError(), "can't resolve symbol");
        EXPECT_EQ(dlClose(handle), -1);
        EXPECT_STREQ(dlError(), "free library failed");
    }
}

TEST_F(DynamicLoaderTest, AnAddressLeadsToItsModulesFile) {
    void* const module = dlOpen(TEST_MODULE_PATH, NOW_LOCAL);
    std::string path;
    EXPECT_EQ(dlAddr(dlSym(module, ANSWER), path), 1);
    EXPECT_TRUE(std::filesystem::equivalent(path, TEST_MODULE_PATH)) << path;
    EXPECT_EQ(dlAddr(reinterpret_cast<const void*>(&loaded), path), 1);
    EXPECT_TRUE(std::filesystem::equivalent(path, testing::internal::GetArgvs().at(0))) << path;
    for (const void* noModule : {static_cast<const void*>(&path), static_cast<const void*>(nullptr)}) {
        path = "before";
        EXPECT_EQ(dlAddr(noModule, path), 0);
        EXPECT_STREQ(dlError(), noModule == nullptr ? "Input address is nullptr" : "Failed to get module handle");
        EXPECT_EQ(path, "");
    }
    EXPECT_EQ(dlClose(module), 0);
}

TEST_F(DynamicLoaderTest, OverlappingCallsKeepTheLocalSetWhole) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 30; ++round) {
                void* const module = dlOpen(TEST_MODULE_PATH, round % 2 == 0 ? NOW_LOCAL : DL_NOW);
                EXPECT_NE(dlSym(module, ANSWER), nullptr);
                EXPECT_EQ(dlSym(DL_DEFAULT, "zant_no_such_symbol"), nullptr);
                EXPECT_EQ(dlClose(module), 0);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace zant::loader
