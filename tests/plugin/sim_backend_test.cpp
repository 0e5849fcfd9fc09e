// The simulated machine has to be right for the tests that lean on it to mean anything.
#include <gmock/gmock.h>

#include <filesystem>
#include <numeric>
#include <thread>

#include "support/loaded.h"
#include "support/process.h"
#include "zelmar_kor/power_records.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;

TEST(SimBackend, FailsTheNthCallOfOneOperationOnce) {
    const Sim sim;
    const ZantProviderRecord& provider = ourProvider(sim);
    sim.failNthCall("deviceSetConfig", 2, 7);
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 0U);
    EXPECT_EQ(provider.getApiVersion(nullptr), 0U);
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 7U);
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 0U);
    sim.failNthCall("deviceSetConfig", 0, 9);
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 9U);
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 9U);
    sim.find<ZantSimClearFn>("ZantSim_clear")();
    EXPECT_EQ(provider.deviceSetConfig(nullptr, nullptr), 0U);
    EXPECT_THAT(sim.ledger(), ElementsAre("deviceSetConfig(null, none) -> 0"));
}

TEST(SimBackend, AFailedCallGivesNothingOut) {
    const Sim sim;
    const ZantProviderRecord& provider = ourProvider(sim);
    for (const char* operation : {"deviceGetInfrastructure", "memoryRegister", "getApiVersion"}) {
        sim.failNthCall(operation, 1, 1);
    }
    const ZantPerfInfrastructure* table = nullptr;
    void* handle = nullptr;
    const MemRegisterDescriptor descriptor{};
    ZantApiVersion version{};
    EXPECT_EQ(provider.deviceGetInfrastructure(&table), 1U);
    EXPECT_EQ(provider.memoryRegister(nullptr, &descriptor, 1, &handle), 1U);
    EXPECT_EQ(provider.getApiVersion(&version), 1U);
    EXPECT_EQ(table, nullptr);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(version.backend.major, 0U);
}

TEST(SimBackend, WritesVotesDownDecoded) {
    const Sim sim;
    const ZantPerfInfrastructure& power = infrastructure(ourProvider(sim));
    uint32_t first = 0;
    uint32_t second = 0;
    EXPECT_EQ(power.createPowerConfigId(0, 1, &first), 0U);
    EXPECT_EQ(power.createPowerConfigId(0, 2, &second), 0U);
    EXPECT_NE(first, second);
    const PowerConfigRecord polling{{3, 9999}};
    const PowerConfigRecord corners{{5, 0, 512, 0, 640}};
    const PowerConfigRecord* records[] = {&polling, &corners, nullptr};
    EXPECT_EQ(power.setPowerConfig(first, records), 0U);
    EXPECT_EQ(sim.ledger().back(), "setPowerConfig(power config id " + std::to_string(first) +
                                       ", [option 3 9999], [option 5 0 512 0 640]) -> 0");
}

TEST(SimBackend, KeepsEveryLineOfTwoThreads) {
    constexpr int calls = 500;
    const Sim sim;
    const ZantPerfInfrastructure& power = infrastructure(ourProvider(sim));
    const size_t before = sim.ledger().size();
    const PowerMemoryRecord record{1, 0x02000000};
    const auto work = [&] {
        const PowerMemoryRecord* records[] = {&record, nullptr};
        for (int i = 0; i < calls; ++i) power.setMemoryConfig(0, 0, records);
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(sim.ledger().size(), before + 2 * calls);
}

uint64_t word(const std::string& table, size_t offset, size_t width) {
    uint64_t value = 0;
    for (size_t i = width; i > 0; --i) value = value << 8U | static_cast<uint8_t>(table.at(offset + i - 1));
    return value;
}

// A table's signature, length and checksum; a wrong one would read as a missing table.
void expectValid(const std::string& table, const char* signature) {
    EXPECT_EQ(table.substr(0, 4), signature);
    EXPECT_EQ(word(table, 4, 4), table.size());
    EXPECT_EQ(std::accumulate(table.begin(), table.end(), 0, [](int sum, char c) { return (sum + c) & 0xFF; }), 0);
}

struct MachineCase {
    const char* name;
    uint64_t first;
    uint64_t second;
};

class Machine : public testing::TestWithParam<MachineCase> {};

TEST_P(Machine, FirmwareNamesTheChip) {
    const auto firmware =
        std::filesystem::path(SIM_BACKEND_LIBRARY).parent_path() / "machines" / GetParam().name / "firmware";
    const std::string fixed = readText((firmware / "FACP").string());
    expectValid(fixed, "FACP");
    const bool namedByRevision = GetParam().first == 0;
    EXPECT_EQ(word(fixed, 24, 4) == 0x8180, namedByRevision);
    EXPECT_EQ(std::filesystem::exists(firmware / "PPTT"), !namedByRevision);
    if (namedByRevision) return;
    const std::string topology = readText((firmware / "PPTT").string());
    expectValid(topology, "PPTT");
    const size_t identifier = topology.find('\2', 36);
    ASSERT_NE(identifier, std::string::npos);
    EXPECT_EQ(word(topology, identifier + 8, 8), GetParam().first);
    EXPECT_EQ(word(topology, identifier + 16, 8), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Machines, Machine,
                         testing::Values(MachineCase{"chip405", 0, 0}, MachineCase{"chip435", 0x71, 0x1C1},
                                         MachineCase{"chip475", 0x76, 0x1E7}, MachineCase{"chip497", 0x76, 0x1F1},
                                         MachineCase{"chip498", 0x76, 0x1F2}, MachineCase{"chip538", 0x88, 0x22B},
                                         MachineCase{"chip662", 0xA1, 0x296}, MachineCase{"chip693", 0xA8, 0x2B5},
                                         MachineCase{"unknown", 0x7F, 0x7F}),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
