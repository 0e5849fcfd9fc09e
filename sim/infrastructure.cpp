// The perf infrastructure: takes votes, refuses wrong ones, and writes all of them down.
#include <utility>

#include "decode.h"
#include "ledger.h"
#include "power_check.h"
#include "power_ids.h"
#include "provider.h"

namespace zant::sim {

namespace {

std::string deviceAndCore(uint32_t deviceId, uint32_t coreId) {
    return "device id " + std::to_string(deviceId) + ", core id " + std::to_string(coreId);
}

uint64_t createPowerConfigId(uint32_t deviceId, uint32_t coreId, uint32_t* powerConfigId) {
    return answer("createPowerConfigId", deviceAndCore(deviceId, coreId), [&]() -> std::string {
        if (powerConfigId == nullptr) return "nowhere to put the id";
        *powerConfigId = powerIds().create(deviceId, coreId);
        return {};
    });
}

uint64_t destroyPowerConfigId(uint32_t powerConfigId) {
    return answer("destroyPowerConfigId", "power config id " + std::to_string(powerConfigId),
                  [&] { return powerIds().destroy(powerConfigId); });
}

uint64_t setPowerConfig(uint32_t powerConfigId, const PowerConfigRecord** records) {
    const std::string arguments =
        "power config id " + std::to_string(powerConfigId) + ", " + describePowerRecords(records);
    return answer("setPowerConfig", arguments, [&] {
        std::vector<PowerConfigRecord> taken;
        const std::string fault = takePowerRecords(powerConfigId, records, taken);
        return fault.empty() ? powerIds().vote(powerConfigId, std::move(taken)) : fault;
    });
}

uint64_t setMemoryConfig(uint32_t deviceId, uint32_t coreId, const PowerMemoryRecord** records) {
    return answer("setMemoryConfig", deviceAndCore(deviceId, coreId) + ", " + describeMemoryRecords(records),
                  [&] { return checkMemoryRecords(records); });
}

constexpr ZantPerfInfrastructure INFRASTRUCTURE{0, createPowerConfigId, destroyPowerConfigId, setPowerConfig,
                                                setMemoryConfig};

}  // namespace

const ZantPerfInfrastructure* perfInfrastructure() {
    return &INFRASTRUCTURE;
}

}  // namespace zant::sim
