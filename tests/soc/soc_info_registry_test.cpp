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
    const auto machines = std::filesystem::path(__FILE__).parent_path() / "../../sim/machines";
    ASSERT_TRUE(std::filesystem::exists(machines / name));
    ASSERT_EQ(setenv("ZELMAR_PLATFORM_ROOT", (machines / name).c_str(), 1), 0);
}

// Runs a function in two threads that start it together, with 0 and with 1.
template <class Function>
void twice(Function function) {
    std::barrier<> start(2);
    const auto body = [&](uint32_t i) {
        start.arrive_and_wait();
        function(i);
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

TEST(SocInfoRegistry, TheMachinesAreNamedToTheirRows) {
    for (const Chip& chip : NAMEABLE) {
        SCOPED_TRACE(chip.id);
        runAsMachine("chip" + std::to_string(chip.id));
        FirmwareIdentifier firmware(zant::system::readFirmwareTable);
        EXPECT_EQ(firmware.identify(), chip.id);
        SocInfoRegistry registry;
        const SocFacts& facts = registry.buildCurrent(chip.id)->facts();
        EXPECT_THAT(facts.socIds, testing::Contains(chip.id));
        EXPECT_EQ(facts.dspInfos[0].arch, chip.arch);
    }
    runAsMachine("unknown");
    EXPECT_EQ(FirmwareIdentifier(zant::system::readFirmwareTable).identify(), 0U);
    unsetenv("ZELMAR_PLATFORM_ROOT");
}

TEST(SocInfoRegistry, AnIdentifierSelectsTheFirstRowThatListsIt) {
    const auto keyOf = [](uint32_t id) { return SocInfoRegistry().buildCurrent(id)->facts().socKey; };
    EXPECT_EQ(keyOf(688), 66U);
    EXPECT_EQ(keyOf(497), keyOf(498));
    EXPECT_EQ(keyOf(538), 60U);
    EXPECT_EQ(keyOf(662), 88U);
    EXPECT_EQ(keyOf(693), 94U);

    SocInfoRegistry registry;
    SocInfo* chip = registry.buildCurrent(481);
    const SocFacts& row = registry.table().at(72).facts();
    EXPECT_EQ(chip->getDspInfos().size(), 2U);
    EXPECT_EQ(chip->getDspInfosOnce()[1].domainNames, row.dspInfos[1].domainNames);
    EXPECT_EQ(chip->getGpuInfos().size(), 2U);
    EXPECT_EQ(chip->getSocIdentity().number, 72);
    EXPECT_EQ(chip->getSocIdentity().name, row.name);
    EXPECT_EQ(chip->getCpuInfos()[0].numThreads, 6U);
}

TEST(SocInfoRegistry, AChipWithoutARowKeepsItsIdentifierAndDefaults) {
    for (const uint32_t id : {0U, 799U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(id);
        SocInfoRegistry registry;
        SocInfo* chip = registry.buildCurrent(id);
        EXPECT_EQ(chip->getSocIdentity().name, "UNKNOWN_VRD");
        EXPECT_EQ(chip->getSocIdentity().number, 0);
        EXPECT_EQ(chip->facts().socIds, std::vector<uint32_t>{id});
        ASSERT_EQ(chip->getDspInfosOnce().size(), 1U);
        EXPECT_EQ(chip->getDspInfosOnce()[0].arch, 0U);
        ASSERT_EQ(chip->getSocPairs().size(), 1U);
        EXPECT_EQ(chip->getSocPairs()[0].second, 16U);
        EXPECT_EQ(chip->getCpuInfos().size() + chip->getGpuInfos().size() + chip->getAuxInfos().size(), 3U);
        EXPECT_EQ(chip->getCpuInfos()[0].numThreads, 0U);
    }
}

TEST(SocInfoRegistry, TheFirstIdentifierIsTheRunningChipForGood) {
    for (int i = 0; i < 100; ++i) {
        SocInfoRegistry registry;
        SocInfo* chips[2] = {};
        twice([&](uint32_t which) { chips[which] = registry.buildCurrent(which == 0 ? 538 : 662); });
        ASSERT_NE(chips[0], nullptr);
        ASSERT_EQ(chips[0], chips[1]);
        ASSERT_EQ(registry.buildCurrent(0), chips[0]);
        ASSERT_NE(chips[0]->facts().socKey, 0U);
    }
}

class CountingSocInfo : public HybridSocInfo {
public:
    CountingSocInfo() : HybridSocInfo(0) {}
    std::vector<DspInfo> getDspInfos() override { return std::vector<DspInfo>(2 + calls++); }
    std::atomic<size_t> calls = 0;
};

TEST(SocInfoRegistry, TheDspListIsAskedForOnce) {
    for (int i = 0; i < 100; ++i) {
        CountingSocInfo chip;
        const std::vector<DspInfo>* lists[2] = {};
        size_t sizes[2] = {};
        twice([&](uint32_t which) {
            lists[which] = &chip.getDspInfosOnce();
            sizes[which] = lists[which]->size();
        });
        ASSERT_EQ(chip.calls, 1U);
        ASSERT_EQ(lists[0], lists[1]);
        ASSERT_EQ(sizes[0] + sizes[1], 4U);
    }
}

template <class Provider, class Value>
uint32_t ask(Value& value, uint32_t index = 0) {
    Provider provider(index);
    return provider.getValue(value, provider.isAvailable());
}

// Exits with the number of the check that failed; in a process of its own, whose chip nobody has asked for yet.
[[noreturn]] void askProcessWide(const char* machine, uint32_t status, uint32_t arch) {
    runAsMachine(machine);
    SocInfo* chips[2] = {};
    twice([&](uint32_t which) { chips[which] = SocInfoRegistry::instance().registry->getSocInfo(); });
    if (chips[0] == nullptr || chips[0] != chips[1] || SocInfoRegistry::instance().selector != 0) std::exit(1);
    unsetenv("ZELMAR_PLATFORM_ROOT");
    if (SocInfoRegistry::instance().registry->getSocInfo() != chips[0]) std::exit(2);
    if (currentDspInfos().at(0).arch != arch) std::exit(3);

    runAsMachine(machine);
    const GpuInfo gpu = chips[0]->facts().gpuInfos[0];
    uint64_t threads = 99;
    uint64_t height = 99;
    std::string description = "as it was";
    GpuType type{99};
    if (ask<NumThreadProvider>(threads) != status || ask<Image2DMaxHeightProvider>(height) != status) std::exit(4);
    if (ask<GpuDescProvider>(description) != status || ask<GpuTypeProvider>(type) != status) std::exit(5);
    const bool answered = status == FACT_FOUND;
    if (threads != (answered ? 6 : 99) || height != (answered ? gpu.image2DMaxHeight : 99)) std::exit(6);
    if (type != (answered ? gpu.type : GpuType{99})) std::exit(7);
    if (description != (answered ? gpu.description : "as it was")) std::exit(8);
    if (ask<NumThreadProvider>(threads, 1) != FACT_NOT_ANSWERED) std::exit(9);
    std::exit(0);
}

TEST(SocInfoRegistryDeathTest, TheProcessHasOneChipAndItsProviders) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(askProcessWide("chip538", FACT_FOUND, 73), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("chip475", FACT_NOT_ANSWERED, 68), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("chip405", FACT_NOT_ANSWERED, 66), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("unknown", FACT_NOT_ANSWERED, 0), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace soc
