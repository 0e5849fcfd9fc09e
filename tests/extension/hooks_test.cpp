// The object behind the hook table: loading, graph options, and the device hooks.
#include <gmock/gmock.h>

#include <map>

#include "extension/kor_backend.h"
#include "support/bind_provider.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr uint32_t NO = 0xFFFFFFFFU;

class HooksTest : public testing::Test {
protected:
    // Each record of the list as "option:device or chip,value".
    std::vector<std::string> deviceRecords() {
        ZantConfigWrapper** list = nullptr;
        uint32_t count = NO;
        EXPECT_TRUE(m_backend.beforeDeviceCreate(&list, &count));
        std::vector<std::string> records;
        for (uint32_t i = 0; i < count; ++i) {
            const auto& record = *static_cast<KORDeviceCustomConfig*>(list[i]->customConfig);
            records.push_back(std::to_string(record.option) + ":" + std::to_string(record.deviceIdOrSocModel) + "," +
                              std::to_string(record.value.number));
        }
        return records;
    }
    bool setOptions(int32_t index, const std::string& arch, uint32_t spadMb = NO, uint32_t level = NO,
                    uint32_t dlbc = NO, uint32_t sharing = NO, uint32_t threads = NO) {
        return m_backend.setGraphOptions(index, arch, spadMb, "g", level, dlbc, sharing, threads);
    }

    FakeInfrastructure m_infrastructure;
    LogCapture m_log;
    kor::KORBackend m_backend;
};

TEST_F(HooksTest, AnEmptyObjectAnswersEveryQuestion) {
    EXPECT_EQ(m_backend.getProfilingLevel(), 0U);
    EXPECT_EQ(m_backend.getCoreId(), 0U);
    EXPECT_FALSE(m_backend.detachableBuffersEnabled());
    EXPECT_EQ(m_backend.getDefaultTimeout(), 6000U);
    EXPECT_TRUE(m_backend.loadConfig(""));
    EXPECT_TRUE(m_backend.runExtensionTestClient(1, 2, 3, 4, 5, 6, 7, 8));
    EXPECT_TRUE(m_backend.beforeDeviceFree());
}

TEST_F(HooksTest, NamesAreSanitized) {
    const std::pair<const char*, const char*> names[] = {
        {"", "_"}, {"Graph_1", "Graph_1"}, {"9th graph-a", "_9th_graph_a"}, {"\xC3\xA9z", "__z"}};
    for (const auto& [name, sanitized] : names) EXPECT_EQ(m_backend.sanitizeName(name), sanitized);
}

TEST_F(HooksTest, LoadConfigCatchesWhatTheSectionsLetOut) {
    EXPECT_FALSE(
        m_backend.loadConfig(R"({"devices":[{},{"soc_id":1}],"context":{"detachable_buffers_enabled":true}})"));
    const std::string text = "1 Exception occurred while loading backend extensions config: ";
    EXPECT_EQ(m_log.takeTexts().back(), text + "invalid vector subscript");
    EXPECT_FALSE(m_backend.loadConfig(R"({"x":{"devices/99999999999":1}})"));
    EXPECT_EQ(m_log.takeTexts().back(), text + "stoi argument out of range");
    EXPECT_FALSE(m_backend.detachableBuffersEnabled());
}

TEST_F(HooksTest, DeviceRecordsStandInTheirOrder) {
    EXPECT_THAT(deviceRecords(), IsEmpty());
    ASSERT_TRUE(bindProvider(m_backend, m_infrastructure));
    ASSERT_TRUE(m_backend.loadConfig(
        R"({"devices":[{"device_id":0,"enable_async_execute":true,"soc_id":475,"dsp_arch":"v73","pd_session":"signed",)"
        R"("use_dynamic_partitioning":true},{"device_id":9,"soc_id":1}]})"));
    // A pair of before and after may be repeated, and so may before alone.
    for (const bool withAfter : {true, false, true}) {
        EXPECT_THAT(deviceRecords(), ElementsAre("2:0,1", "5:0,1", "1:0,73", "0:475,0", "4:0,1"));
        EXPECT_TRUE(!withAfter || m_backend.afterDeviceCreate());
    }
    EXPECT_TRUE(m_backend.loadConfig(R"({"devices":[{"device_id":3}]})"));
    EXPECT_THAT(deviceRecords(), ElementsAre("2:3,1", "5:3,1", "1:3,73", "0:475,0", "4:3,1"));
}

TEST_F(HooksTest, AfterDeviceCreateTellsWhatFailed) {
    EXPECT_FALSE(m_backend.afterDeviceCreate()) << "beforeDeviceCreate comes first";
    ASSERT_TRUE(bindProvider(m_backend, m_infrastructure));
    for (const std::string failing : {"create", "memory", ""}) {
        m_infrastructure.answer = [failing](const std::string& call) {
            return !failing.empty() && call.starts_with(failing) ? 5U : 0U;
        };
        deviceRecords();
        EXPECT_EQ(m_backend.afterDeviceCreate(), failing.empty()) << failing;
    }
}

TEST_F(HooksTest, HooksNeedTheirOutPointers) {
    ZantConfigWrapper** list = nullptr;
    GraphConfigInfo_t** infos = nullptr;
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>> perContext;
    uint32_t count = 0;
    EXPECT_FALSE(m_backend.beforeContextCreate(nullptr, &count));
    EXPECT_FALSE(m_backend.beforeGraphsCompose(&infos, nullptr));
    EXPECT_FALSE(m_backend.beforeGraphExecute("g", nullptr, &count));
    EXPECT_FALSE(m_backend.beforeContextCreateFromBinary(&list, nullptr));
    EXPECT_FALSE(m_backend.beforeContextCreateFromBinaryList(nullptr, &list, &count));
    EXPECT_FALSE(m_backend.beforeContextCreateFromBinaryList(&perContext, &list, nullptr));
    EXPECT_THAT(m_log.takeTexts(), testing::AllOf(testing::SizeIs(6), testing::Each(StartsWith("1 "))));
    EXPECT_FALSE(m_backend.beforeDeviceCreate(nullptr, &count) || m_backend.beforeDeviceCreate(&list, nullptr));
    EXPECT_THAT(m_log.takeTexts(), ElementsAre("1 Invalid device config args", "1 Invalid device config args"));
}

// A later load checks the first device's profile against its corners: there the override shows.
TEST_F(HooksTest, ThePerfProfileOfTheHostOverridesTheDocuments) {
    ASSERT_TRUE(bindProvider(m_backend, m_infrastructure));
    ASSERT_TRUE(m_backend.loadConfig(R"({"devices":[{"cores":[{"perf_profile":"burst"}]}]})"));
    for (const uint32_t profile : {21U, 22U}) {
        EXPECT_TRUE(m_backend.setPerfProfile(profile));
        deviceRecords();
        EXPECT_TRUE(m_backend.afterDeviceCreate());
        EXPECT_EQ(m_backend.loadConfig("{}"), profile == 21) << "which stands for none";
    }
}

// Which would keep the profile that a later load finds without corners.
TEST_F(HooksTest, AppTypeOneSwitchesThePerfDriverOffForGood) {
    EXPECT_TRUE(m_backend.setAppType(1) && m_backend.setAppType(0));
    EXPECT_TRUE(m_backend.setPerfProfile(22));
    deviceRecords();
    EXPECT_TRUE(m_backend.afterDeviceCreate());
    EXPECT_TRUE(m_backend.loadConfig("{}"));
}

TEST_F(HooksTest, GraphOptionsGoThroughTheirSetters) {
    EXPECT_TRUE(setOptions(0, "V73", 4, 3, 1, 5, 8));
    EXPECT_THAT(m_log.takeTexts(),
                ElementsAre("3 Setting spad size: 4 MB, 4194304 in bytes", "3 Setting optimization level: 3",
                            "3 Setting DLBC enable: 1", StartsWith("3 Setting reference weight sharing enabled: "),
                            "3 Setting SLU threads: 8"));
    EXPECT_THAT(deviceRecords(), ElementsAre("1:0,73"));
    for (const char* arch : {"V75", "v81", "", "V811"}) {
        EXPECT_TRUE(setOptions(0, arch));
        EXPECT_THAT(deviceRecords(), ElementsAre("1:0,73")) << arch;
    }
    // A refused value ends the hook before its later steps.
    m_log.take();
    EXPECT_FALSE(setOptions(0, "V68", 2048, 3));
    EXPECT_EQ(m_log.take().size(), 1U);
    EXPECT_THAT(deviceRecords(), ElementsAre("1:0,73"));
}

TEST_F(HooksTest, GraphOptionsRefuseAnIndexBeyondTheEnd) {
    for (const int32_t index : {-1, 1, INT32_MAX}) {
        EXPECT_FALSE(setOptions(index, "V73", 4)) << index;
        EXPECT_THAT(m_log.takeTexts(), ElementsAre(StartsWith("1 "))) << index;
    }
    EXPECT_TRUE(setOptions(0, "V69"));
    EXPECT_TRUE(setOptions(1, "V73"));
    EXPECT_THAT(deviceRecords(), ElementsAre("1:0,69"));
}

// With more graphs than devices a text that names no architecture leaves every field alone.
TEST_F(HooksTest, GraphOptionsWithoutAnArchitectureNeedNoDevice) {
    ASSERT_TRUE(m_backend.loadConfig(R"({"graphs":[{"num_cores":1},{"num_cores":1},{"num_cores":1}]})"));
    EXPECT_TRUE(setOptions(2, "", 4));
    m_log.take();
    EXPECT_FALSE(setOptions(2, "V73"));
    EXPECT_THAT(m_log.takeTexts(), ElementsAre("1 dsp_arch V73 has no device config at index 2"));
    EXPECT_TRUE(setOptions(2, "V73")) << "each call makes one device config";
}

}  // namespace
}  // namespace zant::test
