#include "soc/soc_info_registry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <barrier>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/system.h"
#include "soc/firmware_identifier.h"
#include "soc/info_providers.h"

namespace soc {
namespace {

void runAsMachine(const std::string& name) {
    const auto machine = std::filesystem::path(__FILE__).parent_path() / "../../sim/machines" / name;
    ASSERT_TRUE(std::filesystem::exists(machine));
    ASSERT_EQ(setenv("ZELMAR_PLATFORM_ROOT", machine.c_str(), 1), 0);
}

// Runs a function in two threads that start it together, with 0 and with 1.
template <class Function>
void twice(Function function) {
    std::barrier<> start(2);
    const auto body = [&](uint32_t which) {
        start.arrive_and_wait();
        function(which);
    };
    std::thread other(body, 1);
    body(0);
    other.join();
}

struct Chip {
    uint32_t id;
    uint32_t arch;
};

constexpr Chip NAMEABLE[] = {{405, 66}, {435, 66}, {475, 68}, {497, 68}, {498, 68}, {538, 73}, {662, 81}, {693, 81}};

TEST(SocInfoRegistry, EachMachineIsNamedToItsRow) {
    for (const auto& [id, arch] : NAMEABLE) {
        runAsMachine("chip" + std::to_string(id));
        EXPECT_EQ(FirmwareIdentifier(zant::system::readFirmwareTable).identify(), id);
        SocInfoRegistry registry;
        EXPECT_THAT(registry.buildCurrent(id)->facts().socIds, testing::Contains(id));
        EXPECT_EQ(registry.buildCurrent(id)->getDspInfosOnce().at(0).arch, arch);
    }
    runAsMachine("unknown");
    EXPECT_EQ(FirmwareIdentifier(zant::system::readFirmwareTable).identify(), 0U);
    unsetenv("ZELMAR_PLATFORM_ROOT");

    const auto keyOf = [](uint32_t id) { return SocInfoRegistry().buildCurrent(id)->getSocIdentity().number; };
    EXPECT_EQ(std::vector({keyOf(688), keyOf(538), keyOf(662), keyOf(693)}), (std::vector{66, 60, 88, 94}));
    EXPECT_EQ(keyOf(497), keyOf(498));
}

TEST(SocInfoRegistry, AChipWithoutARowKeepsItsIdentifierAndDefaults) {
    for (const uint32_t id : {0U, 799U, 0xFFFFFFFFU}) {
        SocInfoRegistry registry;
        SocInfo* chip = registry.buildCurrent(id);
        EXPECT_EQ(chip->getSocIdentity().name, "UNKNOWN_VRD");
        EXPECT_EQ(chip->getSocIdentity().number, 0);
        EXPECT_EQ(chip->facts().socIds, std::vector<uint32_t>{id});
        EXPECT_EQ(chip->getDspInfosOnce().at(0).arch, 0U);
        EXPECT_EQ(chip->getSocPairs().at(0).second, 16U);
        EXPECT_EQ(chip->getCpuInfos().size() + chip->getGpuInfos().size() + chip->getAuxInfos().size(), 3U);
    }
}

class CountingSocInfo : public HybridSocInfo {
public:
    CountingSocInfo() : HybridSocInfo(0) {}
    std::vector<DspInfo> getDspInfos() override { return std::vector<DspInfo>(2 + calls++); }
    std::atomic<size_t> calls = 0;
};

TEST(SocInfoRegistry, TwoThreadsShareOneChipAndOneDspList) {
    for (int i = 0; i < 100; ++i) {
        SocInfoRegistry registry;
        SocInfo* chips[2] = {};
        CountingSocInfo counting;
        size_t sizes[2] = {};
        twice([&](uint32_t which) {
            chips[which] = registry.buildCurrent(which == 0 ? 538 : 662);
            sizes[which] = counting.getDspInfosOnce().size();
        });
        ASSERT_EQ(chips[0], chips[1]);
        ASSERT_EQ(registry.buildCurrent(0), chips[0]);
        ASSERT_NE(chips[0]->facts().socKey, 0U);
        ASSERT_EQ(counting.calls, 1U);
        ASSERT_EQ(sizes[0] + sizes[1], 4U);
    }
}

// Whether a provider gives the status and, with it, the value; without an answer nothing is written.
template <class Provider, class Value>
bool gives(uint32_t status, const Value& expected, uint32_t index = 0) {
    Provider provider(index);
    Value value{};
    const uint32_t given = provider.getValue(value, provider.isAvailable());
    return given == status && value == (status == FACT_FOUND ? expected : Value{});
}

// Exits with the number of the check that failed; in a process of its own, whose chip nobody has asked for yet.
[[noreturn]] void askProcessWide(const char* machine, uint32_t status, uint32_t arch) {
    runAsMachine(machine);
    SocInfo* chips[2] = {};
    twice([&](uint32_t which) { chips[which] = SocInfoRegistry::instance().registry->getSocInfo(); });
    if (chips[0] != chips[1] || currentDspInfos().at(0).arch != arch) std::exit(1);
    const GpuInfo gpu = chips[0]->getGpuInfos().at(0);
    if (!gives<NumThreadProvider>(status, uint64_t{6}) || !gives<GpuTypeProvider>(status, gpu.type)) std::exit(2);
    if (!gives<GpuDescProvider>(status, gpu.description)) std::exit(3);
    if (!gives<Image2DMaxHeightProvider>(status, gpu.image2DMaxHeight)) std::exit(4);
    if (!gives<NumThreadProvider>(FACT_NOT_ANSWERED, uint64_t{0}, 1)) std::exit(5);
    runAsMachine("chip693");  // nobody asks the firmware again
    if (SocInfoRegistry::instance().registry->getSocInfo() != chips[0] || currentDspInfos()[0].arch != arch)
        std::exit(6);
    if (!gives<GpuTypeProvider>(status, gpu.type)) std::exit(7);
    std::exit(0);
}

TEST(SocInfoRegistryDeathTest, TheProcessHasOneChipAndItsProviders) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(askProcessWide("chip538", FACT_FOUND, 73), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("chip405", FACT_NOT_ANSWERED, 66), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("unknown", FACT_NOT_ANSWERED, 0), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace soc
