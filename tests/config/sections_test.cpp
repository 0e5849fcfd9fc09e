// What the keys of each section fill, which of them count, and what wrong ones cost.
#include <gmock/gmock.h>

#include <stdexcept>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using D = kor::KORDeviceConfig;
using C = kor::KORContextConfig;

LoadedConfig loadGraph(const std::string& members) {
    return loadDocument("{\"graphs\":[{" + members + "}]}", ZANT_LOG_LEVEL_INFO);
}

LoadedConfig loadContext(const std::string& members) {
    return loadDocument("{\"context\":{" + members + "}}", ZANT_LOG_LEVEL_INFO);
}

TEST(Devices, NumbersListsAndDefaults) {
    const LoadedConfig loaded = loadDocument(
        R"({"devices":[{"device_id":3,"core_type":2,"device_type":1,"core_id":[4,2],"soc_id":5,"soc_model":7,)"
        R"("async_voting":false,"use_client_context":false,"cores":[{"perf_profile":"burst","rpc_control_latency":11,)"
        R"("rpc_polling_time":12,"dru_timeout_us":13},{"perf_profile":"balanced","adaptive_polling_time":14,)"
        R"("ddr_perf_mode":true}]},{"soc_model":7,"soc_id":5},{"x_soc_id_device_id":0},{"x":1}]})");
    ASSERT_EQ(loaded.devices.size(), 4U);
    const D& first = loaded.devices[0];
    EXPECT_THAT((std::vector{first.deviceId, first.coreType, first.deviceType, first.socModel}),
                ElementsAre(3U, 2U, 1U, 7U));
    EXPECT_THAT(first.coreIds, ElementsAre(4U, 2U));
    EXPECT_FALSE(first.asyncVoting || first.useClientContext);
    const auto numbers = [](const kor::KORCoreConfig& core) {
        return std::vector{core.perfProfile, core.rpcControlLatency, core.rpcPollingTime, core.druTimeoutUs,
                           core.adaptivePollingTime};
    };
    EXPECT_THAT(numbers(first.core), ElementsAre(1U, 11U, 12U, 13U, 14U));
    EXPECT_TRUE(first.core.ddrPerfMode);
    EXPECT_EQ(loaded.devices[1].socModel, 5U);
    EXPECT_TRUE(loaded.devices[2].deviceIdSet && loaded.devices[2].deviceId == 0);
    EXPECT_FALSE(loaded.devices[3].deviceIdSet);
    EXPECT_THAT(numbers(loaded.devices[3].core), ElementsAre(21U, 100U, 0xFFFFFFFFU, 300000U, 0U));
}

TEST(Devices, NamesThatAreReadByTheParser) {
    const std::string badPd = "1 Invalid pd_session option: x provided, Setting default pd_session = unsigned";
    const std::tuple<const char*, std::vector<uint32_t>, std::vector<std::string>> cases[] = {
        {R"("dsp_arch":"v81a")", {81, 0, 0}, {"3 Key: dsp_arch, Value: 81"}},
        {R"("dsp_arch":"")", {0, 0, 0}, {"3 Key: dsp_arch, Value: 0"}},
        {R"("dsp_arch":"68")", {0, 0, 0}, {"1 Error invalid dsp_arch value: 68", "3 Key: dsp_arch, Value: 0"}},
        {R"("dsp_arch":"v0")", {0, 0, 0}, {"1 Error invalid dsp_arch value: v0", "3 Key: dsp_arch, Value: 0"}},
        {R"("pd_session":"signed","pd_session_":"x")", {0, 1, 0}, {"3 Key: pd_session, Value: 1", badPd}},
        {R"("profiling_level":"linting")", {0, 0, 7001}, {"3 Key: profile_level, Value: 7001"}},
        {R"("profiling_level":"basic")", {0, 0, 0}, {"3 Profiling level basic is not supported"}},
    };
    for (const auto& [members, values, texts] : cases) {
        const LoadedConfig loaded = loadDocument("{\"devices\":[{" + std::string(members) + "}]}", ZANT_LOG_LEVEL_INFO);
        EXPECT_TRUE(loaded.result);
        EXPECT_EQ(loaded.texts, texts);
        const D& device = loaded.devices.at(0);
        EXPECT_EQ((std::vector<uint32_t>{device.dspArch, device.pdSessionSigned, device.profilingLevel}), values);
    }
}

// An index without a record ends the whole load: what the later sections would read stays unwritten.
TEST(Devices, AnIndexWithoutARecordEndsTheLoad) {
    const std::string memory = R"(,"memory":{"mem_type":"shared_buffer"}})";
    for (const char* config :
         {R"({"graphs":[{},{"num_cores":1}])", R"({"devices":[{"x":1}],"y":{"devices/2147483648/x":1})",
          // The key of the second device sets the index of the contexts too.
          R"({"devices":[{"x":1},{"use_client_context":true}],"context":{"group_id":1})"}) {
        ConfigRecords records;
        EXPECT_THROW(records.load(config + memory), std::out_of_range) << config;
        EXPECT_EQ(records.memory.memType, kor::ZANT_KOR_MEM_UNDEFINED) << config;
    }
}

// A capital O anywhere counts, unless an earlier word of the chain is there.
TEST(Graphs, TheWordOStandsAnywhere) {
    const kor::KORGraphConfig graph = loadGraph(R"("x_O_assume_same_quant":7,"num_cores_O":8)").graphs.at(0);
    EXPECT_EQ(graph.optimizationLevel, 7U);
    EXPECT_EQ(graph.numCores, 8U);
}

TEST(Graphs, SpadSizeWinsOverSpadMb) {
    const std::string overflow = "1 spad_mb: 4096; Value, in MiB, would cause overflow once converted to bytes";
    const std::string ignored = "2 Ignoring 'spad_mb', since 'spad_size' overrides and has been processed";
    const std::string size = "3 Key: graphs/0/spad_size, Value: 1000, 1000 in bytes";
    const std::string mb = "3 Key: graphs/0/spad_mb, Value: ";
    const std::tuple<const char*, uint32_t, std::vector<std::string>> cases[] = {
        {R"("spad_mb":4095)", 4293918720U, {mb + "4095, -1048576 in bytes"}},
        {R"("spad_mb":64,"spad_size":1000)", 1000, {mb + "64, 67108864 in bytes", size}},
        {R"("spad_size":1000,"spad_mb":64)", 1000, {size, ignored}},
        {R"("spad_size":1000,"spad_mb":4096)", 1000, {size, overflow}},
    };
    for (const auto& [members, bytes, texts] : cases) {
        const LoadedConfig loaded = loadGraph(members);
        EXPECT_TRUE(loaded.result) << members;
        EXPECT_EQ(loaded.graphs.at(0).spadSize, bytes) << members;
        EXPECT_EQ(loaded.texts, texts);
    }
}

TEST(Graphs, FinalizeConfigIsTakenWholeAndOnce) {
    const std::string text = R"({"a":1.0,"b":{"context":{"0":1},"c":null},"d/e":"x"})";
    const LoadedConfig loaded = loadGraph(R"("x":{"finalize_config":"y"},"finalize_config":)" + text);
    EXPECT_TRUE(loaded.result);
    EXPECT_THAT(loaded.texts, ElementsAre("3 Finalize config: " + text));
    EXPECT_EQ(loaded.graphs.at(0).finalizeConfig, text);
    EXPECT_EQ(loaded.contexts.size(), 1U) << "a member of it counts for the other sections too";
    EXPECT_EQ(loadGraph(R"("O":1,"finalize_config":{"a":null,"b":{}})").graphs.at(0).finalizeConfig, "");
}

template <class Record, size_t N>
void expectOwnFields(const std::pair<const char*, bool Record::*> (&flags)[N],
                     std::vector<Record> ConfigRecords::*section, const std::string& open, const std::string& close) {
    for (const auto& [member, field] : flags) {
        const LoadedConfig loaded = loadDocument(open + "{\"" + member + "\":true}" + close);
        for (const auto& other : flags) {
            EXPECT_EQ((loaded.*section).at(0).*other.second, other.second == field) << member;
        }
    }
}

// fault: an option that fills the field of another, or a word that hides a longer one.
TEST(Sections, EachFlagFillsItsFieldAndNoOther) {
    const std::pair<const char*, bool D::*> ofDevices[] = {
        {"use_dynamic_partitioning", &D::useDynamicPartitioning},
        {"enable_async_execute", &D::enableAsyncExecute},
        {"enable_kor_extension", &D::enableKorExtension},
        {"consolidate_kor_extension", &D::consolidateKorExtension},
    };
    expectOwnFields(ofDevices, &ConfigRecords::devices, R"({"devices":[)", "]}");
    const std::pair<const char*, bool C::*> ofContexts[] = {
        {"reference_weight_sharing_enabled", &C::referenceWeightSharingEnabled},
        {"weight_sharing_enabled", &C::weightSharingEnabled},
        {"dsp_memory_profiling_enabled", &C::dspMemoryProfilingEnabled},
        {"io_memory_estimation", &C::ioMemoryEstimation},
        {"prepare_only", &C::prepareOnly},
        {"init_acceleration", &C::initAcceleration},
        {"skip_validation_on_binary_section", &C::skipValidationOnBinarySection},
        {"extended_udma", &C::extendedUdma},
        {"lora_weight_sharing_ram_preload", &C::loraWeightSharingRamPreload},
        {"lora_weight_sharing", &C::loraWeightSharing},
        {"detachable_buffers_enabled", &C::detachableBuffersEnabled},
        {"hard_detach_enabled", &C::hardDetachEnabled},
    };
    expectOwnFields(ofContexts, &ConfigRecords::contexts, R"({"context":)", "}");
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
        EXPECT_TRUE(loaded.result);
        EXPECT_THAT(loaded.texts, testing::Contains(warning));
        EXPECT_FALSE(loaded.contexts.at(0).graphSplittingEnabled) << members;
        EXPECT_EQ(loaded.contexts.at(0).numPrepareThreads, 0xFFFFFFFFU);
    }
    const LoadedConfig alone = loadContext(old);
    EXPECT_TRUE(alone.contexts.at(0).graphSplittingEnabled);
    EXPECT_FALSE(alone.contexts.at(0).graphSplittingConfigured);
    EXPECT_THAT(alone.texts, ElementsAre(warning, "3 Key: graph_splitting_enabled (deprecated), Value: true"));
}

TEST(Contexts, KeysThatOnlyHoldTheWordCount) {
    EXPECT_EQ(loadDocument(R"({"devices":[{"use_client_context":true}]})").contexts.size(), 1U);
    EXPECT_TRUE(loadDocument(R"({"groupContext":{"share_resources":true}})").contexts.empty());
    // The first element named like the section gives the index, wherever it stands.
    const LoadedConfig nested = loadDocument(R"({"a":{"context":[{"prepare_only":true},{"prepare_only":true}]}})");
    ASSERT_EQ(nested.contexts.size(), 2U);
    EXPECT_TRUE(nested.contexts[1].prepareOnly);
}

TEST(Contexts, AGroupOfNumberZeroIsNew) {
    const C group = loadContext(R"("group_id":0,"x_group_id":5)").contexts.at(0);
    EXPECT_TRUE(group.partOfNewGroup && group.groupId == 5) << "a group that was new stays so";
    for (const uint32_t id : {0U, 5U}) {
        const C other =
            loadContext(R"("concurrent_group_registration":{"group_id":)" + std::to_string(id) + "}").contexts.at(0);
        EXPECT_EQ(other.concurrentPartOfNewGroup, id == 0);
        EXPECT_TRUE(other.concurrentGroupId == id && !other.partOfNewGroup);
    }
}

TEST(Sections, Complaints) {
    const std::string exception = "1 Exception occurred: ";
    const std::string splitting = "Invalid key: context/graph_splitting_configs/num_prepare_threads";
    checkComplaints({
        {R"({"devices":[{"device_type":2,"dsp_arch":"x"}]})",
         false,
         {"1 Invalid device_type value: 2. Must be 0 (on-chip) or 1 (off-chip)"}},
        {R"({"devices":[{"cores":[{"x":{"y":[true]}}]}]})",
         true,
         {"1 Unknown Key: devices/0/cores/0/x/y/0 provided in KOR extensions config"}},
        {R"({"graphs":[{"x/y":1,"O":3.0}]})", true, {"1 Unknown Key: graphs/0/x/y provided in KOR extensions config"}},
        {R"({"graphs":[{"dru_op_bounding":{"dru_frequency":1,"dsp_core_frequency":2,"dru_x":true}}]})",
         true,
         {"1 Unknown DRU Op Bounding key: graphs/0/dru_op_bounding/dru_x"}},
        {R"({"graphs":[{"finalize_config":{}}],"x":{"graphs/finalize_config":1}})",
         false,
         {exception + "Value of key (graphs/0/finalize_config) is an empty object"}},
        {R"({"memory/mem_type":1})", false, {exception + "Invalid key: memory/mem_type"}},
        {R"({"context":{"lora_preload_buffer_group/0/0":"x","num_prepare_threads":1}})",
         true,
         {"1 Invalid lora_preload_buffer_group index in key: context/lora_preload_buffer_group/0/0"}},
        {R"({"context":{"graph_splitting_configs/num_prepare_threads":1}})",
         false,
         {"1 " + splitting, exception + splitting}},
    });
}

}  // namespace
}  // namespace zant::test
