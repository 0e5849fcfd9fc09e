// The chip that the machine names, on the machines that a folder can stand for.
#include <gmock/gmock.h>
#include <stdlib.h>

#include <filesystem>
#include <string>

#include "platform/system.h"
#include "soc/firmware_identifier.h"
#include "soc/info_providers.h"
#include "soc/soc_info_registry.h"
#include "support/twice.h"

namespace soc {
namespace {

using zant::test::twice;

void runAsMachine(const std::string& name) {
    const auto machine = std::filesystem::path(SIM_MACHINES_DIR) / name;
    ASSERT_TRUE(std::filesystem::exists(machine));
    ASSERT_EQ(setenv("ZELMAR_PLATFORM_ROOT", machine.c_str(), 1), 0);
}

struct Chip {
    uint32_t id;
    uint32_t arch;
};

constexpr Chip NAMEABLE[] = {{405, 66}, {435, 66}, {475, 68}, {497, 68}, {498, 68}, {538, 73}, {662, 81}, {693, 81}};

TEST(RunningChip, EachMachineIsNamedToItsRow) {
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

TEST(RunningChipDeathTest, TheProcessHasOneChipAndItsProviders) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(askProcessWide("chip538", FACT_FOUND, 73), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("chip405", FACT_NOT_ANSWERED, 66), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(askProcessWide("unknown", FACT_NOT_ANSWERED, 0), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace soc
