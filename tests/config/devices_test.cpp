#include <gmock/gmock.h>

#include <stdexcept>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using D = kor::KORDeviceConfig;
using C = kor::KORCoreConfig;

template <auto Field>
double of(const D& device) {
    return fieldOf<Field>(device);
}
template <auto Field>
double core(const D& device) {
    return fieldOf<Field>(device.core);
}

const OptionRow<D> DEVICE_OPTIONS[] = {
    {"device_id", "3", "Key: @, Value: %d", of<&D::deviceId>},
    {"soc_id", "475", "Key: @, Value: %d", of<&D::socModel>},
    {"soc_model", "475", "Key: @, Value: %d", of<&D::socModel>},
    {"use_dynamic_partitioning", "true", "Key: @, Value: %d", of<&D::useDynamicPartitioning>},
    {"async_voting", "false", "Key: @, Value: %s", of<&D::asyncVoting>},
    {"use_client_context", "false", "Key: @, Value: %d", of<&D::useClientContext>},
    {"core_type", "2", "Key: @, Value: %d", of<&D::coreType>},
    {"device_type", "1", "Key: @, Value: %d", of<&D::deviceType>},
    {"enable_async_execute", "true", "Key: @, Value: %d", of<&D::enableAsyncExecute>},
    {"enable_kor_extension", "true", "Key: @, Value: %d", of<&D::enableKorExtension>},
    {"consolidate_kor_extension", "true", "Key: @, Value: %d", of<&D::consolidateKorExtension>},
};
const OptionRow<D> CORE_OPTIONS[] = {
    {"rpc_control_latency", "1", "Key: @, Value: %d", core<&C::rpcControlLatency>},
    {"rpc_polling_time", "2", "Key: @, Value: %d", core<&C::rpcPollingTime>},
    {"dru_timeout_us", "3", "Key: @, Value: %d", core<&C::druTimeoutUs>},
    {"adaptive_polling_time", "4", "Key: @, Value: %d", core<&C::adaptivePollingTime>},
    {"ddr_perf_mode", "true", "Key: @, Value: %s", core<&C::ddrPerfMode>},
};

TEST(Devices, EachOptionFillsItsField) {
    const auto first = [](const LoadedConfig& loaded) { return loaded.devices.at(0); };
    checkOptions(DEVICE_OPTIONS, R"({"devices":[{)", "}]}", first);
    checkOptions(CORE_OPTIONS, R"({"devices":[{"cores":[{)", "}]}]}", first);
}

TEST(Devices, ListsDefaultsAndLaterKeys) {
    const LoadedConfig loaded = loadDocument(
        R"({"devices":[{"core_id":[4,2],"soc_id":5,"soc_model":7,"cores":[{"perf_profile":"burst"},{"perf_profile":)"
        R"("balanced"}]},{"soc_model":7,"soc_id":5},{"x_soc_id_device_id":0},{"x":1}]})");
    ASSERT_EQ(loaded.devices.size(), 4U);
    EXPECT_THAT(loaded.devices[0].coreIds, ElementsAre(4U, 2U));
    EXPECT_EQ(loaded.devices[0].socModel, 7U);
    EXPECT_EQ(loaded.devices[0].core.perfProfile, 1U);
    EXPECT_EQ(loaded.devices[1].socModel, 5U);
    EXPECT_TRUE(loaded.devices[2].deviceIdSet && loaded.devices[2].deviceId == 0);
    EXPECT_FALSE(loaded.devices[3].deviceIdSet);
    const C& core = loaded.devices[3].core;
    EXPECT_EQ(core.perfProfile, 21U);
    EXPECT_EQ(core.rpcControlLatency, 100U);
    EXPECT_EQ(core.rpcPollingTime, 0xFFFFFFFFU);
    EXPECT_EQ(core.druTimeoutUs, 300000U);
}

TEST(Devices, NamesThatAreReadByTheParser) {
    struct Case {
        const char* members;
        double (*field)(const D&);
        double value;
        std::vector<std::string> texts;
    };
    const std::string badPd = " provided, Setting default pd_session = unsigned";
    const Case cases[] = {
        {R"("dsp_arch":"v68")", of<&D::dspArch>, 68, {"3 Key: dsp_arch, Value: 68"}},
        {R"("dsp_arch":"v81a")", of<&D::dspArch>, 81, {"3 Key: dsp_arch, Value: 81"}},
        {R"("dsp_arch":"")", of<&D::dspArch>, 0, {"3 Key: dsp_arch, Value: 0"}},
        {R"("dsp_arch":"68")", of<&D::dspArch>, 0, {"1 Error invalid dsp_arch value: 68", "3 Key: dsp_arch, Value: 0"}},
        {R"("dsp_arch":"v0")", of<&D::dspArch>, 0, {"1 Error invalid dsp_arch value: v0", "3 Key: dsp_arch, Value: 0"}},
        {R"("pd_session":"unsigned")", of<&D::pdSessionSigned>, 0, {"3 Key: pd_session, Value: 0"}},
        {R"("pd_session":"Signed")", of<&D::pdSessionSigned>, 0, {"1 Invalid pd_session option: Signed" + badPd}},
        {R"("pd_session":"signed","pd_session_":"x")",
         of<&D::pdSessionSigned>,
         1,
         {"3 Key: pd_session, Value: 1", "1 Invalid pd_session option: x" + badPd}},
        {R"("profiling_level":"linting")", of<&D::profilingLevel>, 7001, {"3 Key: profile_level, Value: 7001"}},
        {R"("profiling_level":"basic")", of<&D::profilingLevel>, 0, {"3 Profiling level basic is not supported"}},
    };
    for (const Case& row : cases) {
        const std::string config = std::string(R"({"devices":[{)") + row.members + "}]}";
        const LoadedConfig loaded = loadDocument(config, ZANT_LOG_LEVEL_INFO);
        EXPECT_TRUE(loaded.result);
        EXPECT_EQ(loaded.texts, row.texts);
        EXPECT_EQ(row.field(loaded.devices.at(0)), row.value) << row.members;
    }
}

TEST(Devices, Complaints) {
    checkComplaints({
        {R"({"devices":[{"device_type":2,"dsp_arch":"x"}]})",
         false,
         {"1 Invalid device_type value: 2. Must be 0 (on-chip) or 1 (off-chip)"}},
        {R"({"devices":[{"cores":[{"x":{"y":[true]}}]}]})",
         true,
         {"1 Unknown Key: devices/0/cores/0/x/y/0 provided in KOR extensions config"}},
        {R"({"devices":[{"dsp_arch/":"v68"}]})", false, {"1 Exception occurred: Invalid key: devices/0/dsp_arch/"}},
        {R"({"x_devices":{"device_id":"x"}})",
         false,
         {"1 Exception occurred: Value of key (x_devices/device_id) is not convertible to uint32_t"}},
    });
}

// An index without a record ends the whole load: what the later sections would read stays unwritten.
TEST(Devices, AnIndexWithoutARecordEndsTheLoad) {
    const std::string memory = R"(,"memory":{"mem_type":"shared_buffer"}})";
    const std::pair<std::string, const char*> cases[] = {
        {R"({"devices":[{},{"soc_id":1}])", "invalid vector subscript"},
        {R"({"graphs":[{},{"num_cores":1}])", "invalid vector subscript"},
        {R"({"devices":[{"x":1}],"y":{"devices/2147483648/x":1})", "stoi argument out of range"},
        // The key of the second device sets the index of the contexts too.
        {R"({"devices":[{"x":1},{"use_client_context":true}],"context":{"group_id":1})", "invalid vector subscript"},
    };
    for (const auto& [config, text] : cases) {
        ConfigRecords records;
        try {
            records.load(config + memory);
            ADD_FAILURE() << config;
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), text) << config;
        }
        EXPECT_EQ(records.memory.memType, kor::ZANT_KOR_MEM_UNDEFINED) << config;
    }
}

}  // namespace
}  // namespace zant::test
