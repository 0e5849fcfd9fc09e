// The closed backend's perf infrastructure: the table of functions that takes votes, and the record of a vote.
#pragma once

#include <cstddef>
#include <cstdint>

// One record of a vote: seventeen little-endian 32-bit words. Word 0 is the option number, the rest depends on it.
struct PowerConfigRecord {
    uint32_t words[17];
};

static_assert(sizeof(PowerConfigRecord) == 68);

using ZantCreatePowerConfigIdFn = uint64_t (*)(uint32_t deviceId, uint32_t coreId, uint32_t* powerConfigId);
using ZantDestroyPowerConfigIdFn = uint64_t (*)(uint32_t powerConfigId);
using ZantSetPowerConfigFn = uint64_t (*)(uint32_t powerConfigId, const PowerConfigRecord** records);
using ZantSetMemoryConfigFn = uint64_t (*)(uint32_t deviceId, uint32_t coreId, const PowerConfigRecord** records);

// Filled in by the provider record's deviceGetInfrastructure. Record lists end in a null pointer. Every function
// returns 0 on success. The table stays the backend's.
struct ZantPerfInfrastructure {
    uint64_t header;
    ZantCreatePowerConfigIdFn createPowerConfigId;
    ZantDestroyPowerConfigIdFn destroyPowerConfigId;
    ZantSetPowerConfigFn setPowerConfig;
    ZantSetMemoryConfigFn setMemoryConfig;
};

static_assert(sizeof(ZantPerfInfrastructure) == 40);
static_assert(offsetof(ZantPerfInfrastructure, createPowerConfigId) == 8);
static_assert(offsetof(ZantPerfInfrastructure, destroyPowerConfigId) == 16);
static_assert(offsetof(ZantPerfInfrastructure, setPowerConfig) == 24);
static_assert(offsetof(ZantPerfInfrastructure, setMemoryConfig) == 32);
