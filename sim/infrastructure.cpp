// The perf infrastructure: takes votes and writes them down.
#include <atomic>

#include "decode.h"
#include "ledger.h"
#include "provider.h"

namespace zant::sim {

namespace {

std::atomic<uint32_t> g_powerConfigIds{0};

std::string deviceAndCore(uint32_t deviceId, uint32_t coreId) {
    return "device id " + std::to_string(deviceId) + ", core id " + std::to_string(coreId);
}

uint64_t createPowerConfigId(uint32_t deviceId, uint32_t coreId, uint32_t* powerConfigId) {
    const uint64_t status = ledger().call("createPowerConfigId", deviceAndCore(deviceId, coreId));
    if (status == 0 && powerConfigId != nullptr) *powerConfigId = ++g_powerConfigIds;
    return status;
}

uint64_t destroyPowerConfigId(uint32_t powerConfigId) {
    return ledger().call("destroyPowerConfigId", "power config id " + std::to_string(powerConfigId));
}

uint64_t setPowerConfig(uint32_t powerConfigId, const PowerConfigRecord** records) {
    return ledger().call("setPowerConfig",
                         "power config id " + std::to_string(powerConfigId) + ", " + describePowerRecords(records));
}

uint64_t setMemoryConfig(uint32_t deviceId, uint32_t coreId, const PowerConfigRecord** records) {
    return ledger().call("setMemoryConfig", deviceAndCore(deviceId, coreId) + ", " + describePowerRecords(records));
}

constexpr ZantPerfInfrastructure INFRASTRUCTURE{0, createPowerConfigId, destroyPowerConfigId, setPowerConfig,
                                                setMemoryConfig};

}  // namespace

const ZantPerfInfrastructure* perfInfrastructure() {
    return &INFRASTRUCTURE;
}

}  // namespace zant::sim
