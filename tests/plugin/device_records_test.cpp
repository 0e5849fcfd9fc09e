// From the text of a document to the bytes that a backend gets.
#include <gmock/gmock.h>

#include <array>
#include <cstring>

#include "support/loaded.h"
#include "support/process.h"

namespace {

using namespace testing_support;
using Bytes = std::array<uint8_t, sizeof(KORDeviceCustomConfig)>;
using testing::ElementsAre;

// Little-endian: option at byte 0, id at byte 8, value at byte 12.
constexpr Bytes record(uint8_t option, uint8_t id, uint8_t value) {
    Bytes bytes{};
    bytes[0] = option;
    bytes[8] = id;
    bytes[12] = value;
    return bytes;
}

std::vector<Bytes> deviceRecords(const Extension& extension) {
    ZantConfigWrapper** list = nullptr;
    uint32_t count = UINT32_MAX;
    EXPECT_TRUE(extension->beforeDeviceCreate(&list, &count));
    std::vector<Bytes> records(count);
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(list[i]->option, ZANT_CONFIG_OPTION_CUSTOM);
        std::memcpy(records[i].data(), list[i]->customConfig, sizeof(Bytes));
    }
    EXPECT_TRUE(extension->afterDeviceCreate());
    return records;
}

TEST(DeviceRecords, OfTheExampleByteByByte) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(example("burst_async_voting.json")));
    EXPECT_THAT(deviceRecords(extension),
                ElementsAre(record(2, 0, 1), record(1, 0, 73), record(0, 60, 0), record(4, 0, 1)));
}

TEST(DeviceRecords, CarryTheDeviceIdAndComeAgainAfterTheAfterHook) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(
        R"({"devices":[{"device_id":7,"use_dynamic_partitioning":true},{"device_id":8,"dsp_arch":"v81"}]})"));
    EXPECT_THAT(deviceRecords(extension), ElementsAre(record(5, 7, 1)));
    EXPECT_THAT(deviceRecords(extension), ElementsAre(record(5, 7, 1)));
}

TEST(DeviceRecords, NoneForADocumentWithoutDevices) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig("{}"));
    EXPECT_TRUE(deviceRecords(extension).empty());
}

TEST(DeviceRecords, NullOutPointersAreRefusedWithALine) {
    const Extension extension;
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    EXPECT_FALSE(extension->beforeDeviceCreate(nullptr, &count));
    EXPECT_FALSE(extension->beforeDeviceCreate(&list, nullptr));
    EXPECT_THAT(Extension::errors(), ElementsAre("Invalid device config args", "Invalid device config args"));
}

}  // namespace
