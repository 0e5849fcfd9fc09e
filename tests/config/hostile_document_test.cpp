// Documents that once made a load slow, large or undefined. Each is big enough to be felt if it did so again.
#include <gtest/gtest.h>

#include <string>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

std::string repeated(const std::string& text, int count, const char* between = "") {
    std::string all;
    for (int i = 0; i < count; ++i) all += (i == 0 ? "" : between) + text;
    return all;
}

struct Hostile {
    const char* name;
    std::string text;
    bool isAccepted;
};

class HostileDocument : public testing::TestWithParam<Hostile> {};

TEST_P(HostileDocument, LoadsInProportionToItsSize) {
    // Without a logger: a line for each of so many keys would be most of the work.
    LoadedConfig config;
    EXPECT_EQ(config.load(GetParam().text), GetParam().isAccepted);
    size_t groups = 0;
    for (const auto& context : config.contexts) groups += context.loraPreloadBufferGroups.size();
    EXPECT_LE(groups, GetParam().text.size());
}

INSTANTIATE_TEST_SUITE_P(
    Documents, HostileDocument,
    testing::Values(Hostile{"runs_of_digits_in_a_string", R"({"a":")" + repeated("1234567890+", 300000) + R"("})",
                            true},
                    Hostile{"group_index_in_a_name",
                            R"({"context":[)" +
                                repeated(R"({"x":{"lora_preload_buffer_group":{"119900":["a"]}}})", 2000, ",") + "]}",
                            true},
                    Hostile{"finalize_config_behind_many_members",
                            "{" + repeated(R"("a":0)", 60000, ",") + R"(,"graphs":[)" +
                                repeated(R"({"finalize_config":{"a":1}})", 20000, ",") + "]}",
                            true},
                    Hostile{"smallest_integer", R"({"graphs":[{"O":-9223372036854775808}]})", false},
                    Hostile{"forms_of_custom",
                            R"({"devices":[{"cores":[)" + repeated(R"({"custom":[]})", 100000, ",") + "]}]}", true},
                    Hostile{"long_group_name_above_many_leaves",
                            R"({"context":{"z":{"lora_preload_buffer_group":{")" + std::string(100000, 'x') + R"(":[)" +
                                repeated("[1]", 25000, ",") + "]}}}}",
                            true},
                    Hostile{"long_name_above_many_leaves",
                            R"({"context":{")" + std::string(200000, 'x') + R"(lora_preload_buffer_group":[)" +
                                repeated(R"(["a"])", 50000, ",") + "]}}",
                            true}),
    [](const testing::TestParamInfo<Hostile>& each) { return each.param.name; });

}  // namespace
}  // namespace zant::test
