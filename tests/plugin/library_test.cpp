// The shipped file itself: what it exports, and that it can be loaded and unloaded at will.
#include <gmock/gmock.h>

#include "support/loaded.h"
#include "support/process.h"

namespace {

using namespace testing_support;

TEST(Library, ExportsTwoNames) {
    if (!platform::canStandIn()) GTEST_SKIP() << "the leg for Windows reads the file itself";
    EXPECT_THAT(runProgram("nm", "-D --defined-only -j '" EXTENSIONS_LIBRARY "'").lines(),
                testing::UnorderedElementsAre("createBackendInterface", "destroyBackendInterface"));
}

TEST(Library, IsReallyGoneAfterEachOfAHundredUnloads) {
    const std::string document = readText(example("custom_corners_array.json"));
    for (int i = 0; i < 100; ++i) {
        {
            const Extension extension;
            ASSERT_TRUE(extension->loadConfig(document));
        }
        ASSERT_FALSE(isLoaded(EXTENSIONS_LIBRARY)) << "after round " << i;
    }
}

TEST(Library, TwoObjectsKeepTheirDocumentsApart) {
    const Extension first;
    const Extension second;
    ASSERT_TRUE(first->loadConfig(R"({"devices":[{"core_id":[3],"profiling_level":"linting"}]})"));
    ASSERT_TRUE(second->loadConfig(R"({"devices":[{"core_id":[5]}]})"));
    EXPECT_EQ(first->getCoreId(), 3U);
    EXPECT_EQ(second->getCoreId(), 5U);
    EXPECT_EQ(second->getProfilingLevel(), 0U);
}

}  // namespace
