#include <gmock/gmock.h>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using C = kor::KORContextConfig;
using testing::ElementsAre;
using testing::IsEmpty;

template <auto Field>
double of(const C& context) {
    return fieldOf<Field>(context);
}

const OptionRow<C> CONTEXT_OPTIONS[] = {
    {"reference_weight_sharing_enabled", "true", "Key: @, Value: %s", of<&C::referenceWeightSharingEnabled>},
    {"weight_sharing_enabled", "true", "Key: Weight Sharing, Value: %s", of<&C::weightSharingEnabled>},
    {"max_spill_fill_buffer_for_group", "5", "Key: @: %d", of<&C::maxSpillFillBufferForGroup>},
    {"file_read_memory_budget_in_mb", "9", "Key: @: %d", of<&C::fileReadMemoryBudgetInMb>},
    {"dsp_memory_profiling_enabled", "true", "Key: @: %d", of<&C::dspMemoryProfilingEnabled>},
    {"io_memory_estimation", "true", "Key: @: %d", of<&C::ioMemoryEstimation>},
    {"prepare_only", "true", "Key: @: %d", of<&C::prepareOnly>},
    {"init_acceleration", "true", "Key: @: %d", of<&C::initAcceleration>},
    {"skip_validation_on_binary_section", "true", "Key: @: %d", of<&C::skipValidationOnBinarySection>},
    {"extended_udma", "true", "Key: @, Value: %d", of<&C::extendedUdma>},
    {"lora_weight_sharing_ram_preload", "true", "Key: Lora Weight Sharing Ram Preload, Value: %d",
     of<&C::loraWeightSharingRamPreload>},
    {"lora_weight_sharing", "true", "Key: Lora Weight Sharing, Value: %d", of<&C::loraWeightSharing>},
    {"detachable_buffers_enabled", "true", "Key: Detachable buffers enabled, Value: %d",
     of<&C::detachableBuffersEnabled>},
    {"hard_detach_enabled", "true", "Key: Hard detach enabled, Value: %d", of<&C::hardDetachEnabled>},
    {"reused_io_limit_mb", "4294967297", "Key: @: %lu", of<&C::reusedIoLimitMb>},
};

const OptionRow<C> SPLITTING_OPTIONS[] = {
    {"graph_splitting_enabled", "true", "Key: graph_splitting_configs/@, Value: %s", of<&C::graphSplittingEnabled>},
    {"num_prepare_threads", "4294967295", "Key: graph_splitting_configs/@, Value: %u", of<&C::numPrepareThreads>},
};

LoadedConfig loadContext(const std::string& members) {
    return loadDocument("{\"context\":{" + members + "}}", ZANT_LOG_LEVEL_INFO);
}

TEST(Contexts, EachOptionFillsItsFieldInBothForms) {
    const auto first = [](const LoadedConfig& loaded) { return loaded.contexts.at(0); };
    const auto second = [](const LoadedConfig& loaded) { return loaded.contexts.at(1); };
    checkOptions(CONTEXT_OPTIONS, R"({"context":{)", "}}", first);
    checkOptions(CONTEXT_OPTIONS, R"({"context":[{"x":1},{)", "}]}", second);
    checkOptions(SPLITTING_OPTIONS, R"({"context":{"graph_splitting_configs":{)", "}}}", first);
}

TEST(Contexts, GroupsAndTexts) {
    LoadedConfig loaded = loadContext(
        R"("contextKey":"k","concurrent_deserialization_patch":"p","group_id":0,"x_group_id":5,"extended_udma":false,)"
        R"("file_read_memory_budget_in_mb":0,"concurrent_group_registration":{"group_id":0,)"
        R"("max_spill_fill_buffer_for_group":7})");
    EXPECT_TRUE(loaded.result);
    const C& context = loaded.contexts.at(0);
    EXPECT_EQ(context.contextKey, "k");
    EXPECT_EQ(context.concurrentDeserializationPatch, "p");
    EXPECT_TRUE(context.partOfNewGroup && context.concurrentPartOfNewGroup);
    EXPECT_EQ(context.groupId, 5U);
    EXPECT_EQ(context.maxSpillFillBufferForGroup, 0U);
    EXPECT_EQ(context.concurrentMaxSpillFillBufferForGroup, 7U);
    EXPECT_TRUE(context.extendedUdmaSet && context.fileReadMemoryBudgetSet);
    std::vector<std::string> formats;
    for (const LogLine& line : loaded.lines) formats.push_back(line.format);
    EXPECT_THAT(formats, ElementsAre("Key: contextKey, Value : %s", "Key: Concurrent Deserialization Patch, Value: %s",
                                     "Key: group_id: %p, is part of new group? %d",
                                     "Key: group_id: %p, is part of new group? %d", "Key: extended_udma, Value: %d",
                                     "Key: file_read_memory_budget_in_mb: %d",
                                     "concurrent_group_registration - Key: group_id: %p, is part of new group? %d",
                                     "concurrent_group_registration - Key: max_spill_fill_buffer_for_group: %d"));
    char groupId[32];
    std::snprintf(groupId, sizeof(groupId), "%p", reinterpret_cast<void*>(uintptr_t{5}));
    EXPECT_EQ(loaded.texts[3], "3 Key: group_id: " + std::string(groupId) + ", is part of new group? 1");
}

TEST(Contexts, LoraGroupsGrowToTheirIndex) {
    const LoadedConfig loaded = loadContext(R"("lora_preload_buffer_group":[["a","c"],[],["b"]])");
    EXPECT_THAT(loaded.contexts.at(0).loraPreloadBufferGroups,
                ElementsAre(ElementsAre("a", "c"), IsEmpty(), ElementsAre("b")));
    EXPECT_EQ(loaded.texts.back(), "3 Key: lora_preload_buffer_group[2] += b");
    const LoadedConfig bad =
        loadContext(R"("x_lora_preload_buffer_group":{"x":["a"],"0":[1,"b"],"4294967296":["c"],"y":"d","00":["e"]},)"
                    R"("lora_preload_buffer_group_":["f"],"prepare_only":true)");
    EXPECT_TRUE(bad.result);
    EXPECT_THAT(bad.contexts.at(0).loraPreloadBufferGroups, ElementsAre(ElementsAre("b", "e")));
    const std::string line = "1 Invalid lora_preload_buffer_group index in key: context/x_lora_preload_buffer_group/";
    EXPECT_THAT(bad.texts, ElementsAre(line + "x/0", line + "0/0", "3 Key: lora_preload_buffer_group[0] += b",
                                       line + "4294967296/0", "3 Key: lora_preload_buffer_group[0] += e",
                                       "3 Key: prepare_only: 1"));
}

TEST(Contexts, TheNewFormOfGraphSplittingWins) {
    const std::string warning =
        "2 Found deprecated graph_splitting_enabled config. Use graph_splitting_configs/graph_splitting_enabled "
        "instead.";
    const std::string old = R"("graph_splitting_enabled":true)";
    const std::string now =
        R"("graph_splitting_configs":{"num_prepare_threads":"auto","graph_splitting_enabled":false})";
    for (const std::string& members : {old + "," + now, now + "," + old}) {
        const LoadedConfig loaded = loadContext(members);
        EXPECT_THAT(loaded.texts, testing::Contains(warning));
        EXPECT_FALSE(loaded.contexts.at(0).graphSplittingEnabled) << members;
        EXPECT_TRUE(loaded.contexts.at(0).graphSplittingConfigured);
        EXPECT_EQ(loaded.contexts.at(0).numPrepareThreads, 0xFFFFFFFFU);
    }
    const LoadedConfig alone = loadContext(old);
    EXPECT_TRUE(alone.contexts.at(0).graphSplittingEnabled);
    EXPECT_FALSE(alone.contexts.at(0).graphSplittingConfigured);
    EXPECT_EQ(alone.contexts.at(0).numPrepareThreads, 1U);
    EXPECT_THAT(alone.texts, ElementsAre(warning, "3 Key: graph_splitting_enabled (deprecated), Value: true"));
}

TEST(Contexts, AKeyOfAnotherSectionCounts) {
    EXPECT_EQ(loadDocument(R"({"devices":[{"use_client_context":true}]})").contexts.size(), 1U);
    EXPECT_TRUE(loadDocument(R"({"groupContext":{"share_resources":true}})").contexts.empty());
    // The first element named like the section gives the index, wherever it stands.
    const LoadedConfig nested = loadDocument(R"({"a":{"context":[{"prepare_only":true},{"prepare_only":true}]}})");
    ASSERT_EQ(nested.contexts.size(), 2U);
    EXPECT_TRUE(nested.contexts[1].prepareOnly);
}

TEST(SharedSections, ExactKeysOnly) {
    const LoadedConfig loaded = loadDocument(
        R"({"groupContext":{"share_resources":true,"share_resources_optimization_type":2,"reused_io_limit_mb":4294967297,)"
        R"("x":{"groupContext":{"share_resources":false}}},"a":{"groupContext":{"share_resources":1}},)"
        R"("memory":{"mem_type":"shared_buffer"},"b":{"memory":{"mem_type":1}}})",
        ZANT_LOG_LEVEL_INFO);
    EXPECT_TRUE(loaded.result);
    EXPECT_TRUE(loaded.groupContext.shareResources);
    EXPECT_EQ(loaded.groupContext.shareResourcesOptimizationType, 2U);
    EXPECT_EQ(loaded.groupContext.reusedIoLimitMb, 4294967297U);
    EXPECT_EQ(loaded.memory.memType, 1U);
    EXPECT_THAT(
        loaded.texts,
        ElementsAre("3 Key: share_resources, value: true", "3 Key: share_resources_optimization_type, value 2",
                    "3 Key: reused_io_limit_mb, value: " + std::to_string(static_cast<unsigned long>(4294967297U)),
                    "3 Key: memory type, Value: shared_buffer "));
    checkComplaints({
        {R"({"groupContext":{"reused_io_limit_mb":-1}})",
         false,
         {"1 Exception occurred: Value of key (groupContext/reused_io_limit_mb) is not convertible to uint64_t"}},
        {R"({"memory/mem_type":1})", false, {"1 Exception occurred: Invalid key: memory/mem_type"}},
        {R"({"context":{"lora_preload_buffer_group/0/0":"x","num_prepare_threads":1}})",
         true,
         {"1 Invalid lora_preload_buffer_group index in key: context/lora_preload_buffer_group/0/0"}},
        {R"({"context":{"graph_splitting_configs/num_prepare_threads":1}})",
         false,
         {"1 Invalid key: context/graph_splitting_configs/num_prepare_threads",
          "1 Exception occurred: Invalid key: context/graph_splitting_configs/num_prepare_threads"}},
    });
}

}  // namespace
}  // namespace zant::test
