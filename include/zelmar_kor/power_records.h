// The closed backend's perf infrastructure: the records of a vote, and the table of functions that takes votes.
//
// A vote is a list of records for one power config id. A record is seventeen little-endian 32-bit words: the option
// number, then what the option carries; words that an option has no use for are 0. Corners are numbers of the voltage
// corner table, or of the expanded one where a record says so.
#pragma once

#include <cstddef>
#include <cstdint>

enum PowerOption : uint32_t {
    POWER_OPTION_DCVS = 1,
    POWER_OPTION_RPC_POLLING = 3,    // value: polling time
    POWER_OPTION_DRU_TIMEOUT = 4,    // value: microseconds
    POWER_OPTION_DRU = 5,            // expanded corners always
    POWER_OPTION_DDR_PERF_MODE = 7,  // value: 1
    POWER_OPTION_CENG = 8,
    POWER_OPTION_DCVS_EXP = 9,  // expanded corners
    POWER_OPTION_CENG_EXP = 10  // expanded corners
};

struct PowerCorners {
    uint32_t min;
    uint32_t target;
    uint32_t max;
};

static_assert(sizeof(PowerCorners) == 12);

struct PowerDcvsRecord {
    uint32_t option;  // POWER_OPTION_DCVS
    uint32_t contextId;
    uint32_t dcvsEnableValid;
    uint32_t dcvsEnable;
    uint32_t powerMode;
    uint32_t sleepLatencyValid;
    uint32_t sleepLatency;  // microseconds
    uint32_t sleepDisableValid;
    uint32_t sleepDisable;
    uint32_t busCornersValid;
    PowerCorners bus;
    uint32_t coreCornersValid;
    PowerCorners core;
};

static_assert(sizeof(PowerDcvsRecord) == 68);
static_assert(offsetof(PowerDcvsRecord, contextId) == 4);
static_assert(offsetof(PowerDcvsRecord, dcvsEnableValid) == 8);
static_assert(offsetof(PowerDcvsRecord, dcvsEnable) == 12);
static_assert(offsetof(PowerDcvsRecord, powerMode) == 16);
static_assert(offsetof(PowerDcvsRecord, sleepLatencyValid) == 20);
static_assert(offsetof(PowerDcvsRecord, sleepLatency) == 24);
static_assert(offsetof(PowerDcvsRecord, sleepDisableValid) == 28);
static_assert(offsetof(PowerDcvsRecord, sleepDisable) == 32);
static_assert(offsetof(PowerDcvsRecord, busCornersValid) == 36);
static_assert(offsetof(PowerDcvsRecord, bus) == 40);
static_assert(offsetof(PowerDcvsRecord, coreCornersValid) == 52);
static_assert(offsetof(PowerDcvsRecord, core) == 56);

struct PowerDcvsExpRecord {
    uint32_t option;  // POWER_OPTION_DCVS_EXP
    uint32_t contextId;
    uint32_t powerMode;
    uint32_t sleepLatencyValid;
    uint32_t sleepLatency;  // microseconds
    uint32_t sleepDisableValid;
    uint32_t sleepDisable;
    uint32_t busCornersValid;
    PowerCorners bus;
    uint32_t coreCornersValid;
    PowerCorners core;
    uint32_t corePerfMode;
    uint32_t busPerfMode;
};

static_assert(sizeof(PowerDcvsExpRecord) == 68);
static_assert(offsetof(PowerDcvsExpRecord, contextId) == 4);
static_assert(offsetof(PowerDcvsExpRecord, powerMode) == 8);
static_assert(offsetof(PowerDcvsExpRecord, sleepLatencyValid) == 12);
static_assert(offsetof(PowerDcvsExpRecord, sleepLatency) == 16);
static_assert(offsetof(PowerDcvsExpRecord, sleepDisableValid) == 20);
static_assert(offsetof(PowerDcvsExpRecord, sleepDisable) == 24);
static_assert(offsetof(PowerDcvsExpRecord, busCornersValid) == 28);
static_assert(offsetof(PowerDcvsExpRecord, bus) == 32);
static_assert(offsetof(PowerDcvsExpRecord, coreCornersValid) == 44);
static_assert(offsetof(PowerDcvsExpRecord, core) == 48);
static_assert(offsetof(PowerDcvsExpRecord, corePerfMode) == 60);
static_assert(offsetof(PowerDcvsExpRecord, busPerfMode) == 64);

struct PowerDruRecord {
    uint32_t option;  // POWER_OPTION_DRU
    uint32_t pickDefault;
    PowerCorners corners;
    uint32_t perfMode;
    uint32_t padding0[11];
};

static_assert(sizeof(PowerDruRecord) == 68);
static_assert(offsetof(PowerDruRecord, pickDefault) == 4);
static_assert(offsetof(PowerDruRecord, corners) == 8);
static_assert(offsetof(PowerDruRecord, perfMode) == 20);

struct PowerCengRecord {
    uint32_t option;  // POWER_OPTION_CENG or POWER_OPTION_CENG_EXP
    PowerCorners corners;
    uint32_t perfMode;
    uint32_t padding0[12];
};

static_assert(sizeof(PowerCengRecord) == 68);
static_assert(offsetof(PowerCengRecord, corners) == 4);
static_assert(offsetof(PowerCengRecord, perfMode) == 16);

// The options of one number: RPC polling, DRU timeout, DDR perf mode.
struct PowerValueRecord {
    uint32_t option;
    uint32_t value;
    uint32_t padding0[15];
};

static_assert(sizeof(PowerValueRecord) == 68);
static_assert(offsetof(PowerValueRecord, value) == 4);

// One record of a vote; option, the first word of each, tells which.
union PowerConfigRecord {
    uint32_t words[17];
    uint32_t option;
    PowerDcvsRecord dcvs;
    PowerDcvsExpRecord dcvsExp;
    PowerDruRecord dru;
    PowerCengRecord ceng;
    PowerValueRecord single;
};

static_assert(sizeof(PowerConfigRecord) == 68);

// The record of setMemoryConfig.
struct PowerMemoryRecord {
    uint32_t option;
    uint32_t value;
};

static_assert(sizeof(PowerMemoryRecord) == 8);
static_assert(offsetof(PowerMemoryRecord, value) == 4);

using ZantCreatePowerConfigIdFn = uint64_t (*)(uint32_t deviceId, uint32_t coreId, uint32_t* powerConfigId);
using ZantDestroyPowerConfigIdFn = uint64_t (*)(uint32_t powerConfigId);
using ZantSetPowerConfigFn = uint64_t (*)(uint32_t powerConfigId, const PowerConfigRecord** records);
using ZantSetMemoryConfigFn = uint64_t (*)(uint32_t deviceId, uint32_t coreId, const PowerMemoryRecord** records);

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
