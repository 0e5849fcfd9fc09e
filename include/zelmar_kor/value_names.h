// Names that documents use for numbers that the backend gets. The numbers are wire values.
#pragma once

#include <cstdint>

struct ZantNamedValue {
    const char* name;
    uint32_t number;
};

// Perf profiles. 21 has no name: it is the profile that was not set.
inline constexpr ZantNamedValue ZANT_PERF_PROFILE_NAMES[] = {
    {"low_balanced", 0},
    {"balanced", 1},
    {"default", 2},
    {"high_performance", 3},
    {"sustained_high_performance", 4},
    {"burst", 5},
    {"llm_decode_burst", 6},
    {"llm_decode_low_balanced", 7},
    {"llm_decode_balanced", 8},
    {"llm_decode_default", 9},
    {"llm_decode_high_performance", 10},
    {"llm_decode_sustained_high_performance", 11},
    {"llm_decode_extreme_power_saver", 12},
    {"llm_decode_low_power_saver", 13},
    {"llm_decode_power_saver", 14},
    {"llm_decode_high_power_saver", 15},
    {"extreme_power_saver", 16},
    {"low_power_saver", 17},
    {"power_saver", 18},
    {"high_power_saver", 19},
    {"system_settings", 20},
    {"custom", 22},
};

inline constexpr ZantNamedValue ZANT_POWER_MODE_NAMES[] = {
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_UP_DOWN", 1},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_ONLY_UP", 2},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_MODE", 4},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_AGGRESSIVE_MODE", 8},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE", 16},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_DUTY_CYCLE_MODE", 32},
};

// Voltage corners of the bus and core votes.
inline constexpr ZantNamedValue ZANT_CORNER_NAMES[] = {
    {"DCVS_VOLTAGE_CORNER_DISABLE", 16},      {"DCVS_VOLTAGE_VCORNER_MIN_VOLTAGE_CORNER", 32},
    {"DCVS_VOLTAGE_VCORNER_SVS2", 48},        {"DCVS_VOLTAGE_VCORNER_SVS", 64},
    {"DCVS_VOLTAGE_VCORNER_SVS_PLUS", 80},    {"DCVS_VOLTAGE_VCORNER_NOM", 96},
    {"DCVS_VOLTAGE_VCORNER_NOM_PLUS", 112},   {"DCVS_VOLTAGE_VCORNER_TURBO", 128},
    {"DCVS_VOLTAGE_VCORNER_TURBO_PLUS", 144}, {"DCVS_VOLTAGE_VCORNER_TURBO_L2", 146},
    {"DCVS_VOLTAGE_VCORNER_TURBO_L3", 147},   {"DCVS_VOLTAGE_VCORNER_TURBO_L4", 148},
    {"DCVS_VOLTAGE_VCORNER_TURBO_L5", 149},   {"DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER", 160},
};

// Voltage corners of the expanded votes. Two names share 736.
inline constexpr ZantNamedValue ZANT_EXP_CORNER_NAMES[] = {
    {"DCVS_EXP_VCORNER_DISABLE", 0},        {"DCVS_EXP_VCORNER_MIN", 256},
    {"DCVS_EXP_VCORNER_RET", 272},          {"DCVS_EXP_VCORNER_MIN_SVS", 304},
    {"DCVS_EXP_VCORNER_LOW_SVS_D3_0", 305}, {"DCVS_EXP_VCORNER_LOW_SVS_D3", 306},
    {"DCVS_EXP_VCORNER_LOW_SVS_D2_1", 307}, {"DCVS_EXP_VCORNER_LOW_SVS_D2", 308},
    {"DCVS_EXP_VCORNER_LOW_SVS_D1_2", 309}, {"DCVS_EXP_VCORNER_LOW_SVS_D1_1", 310},
    {"DCVS_EXP_VCORNER_LOW_SVS_D1_0", 311}, {"DCVS_EXP_VCORNER_LOW_SVS_D1", 312},
    {"DCVS_EXP_VCORNER_LOW_SVS_D0_1", 314}, {"DCVS_EXP_VCORNER_LOW_SVS_D0_0", 315},
    {"DCVS_EXP_VCORNER_LOW_SVS_D0", 316},   {"DCVS_EXP_VCORNER_LOW_SVS", 320},
    {"DCVS_EXP_VCORNER_LOW_SVS_P1", 328},   {"DCVS_EXP_VCORNER_LOW_SVS_L0", 332},
    {"DCVS_EXP_VCORNER_LOW_SVS_L1", 336},   {"DCVS_EXP_VCORNER_LOW_SVS_L2", 352},
    {"DCVS_EXP_VCORNER_SVS", 384},          {"DCVS_EXP_VCORNER_SVS_L0", 400},
    {"DCVS_EXP_VCORNER_SVS_L0_1", 401},     {"DCVS_EXP_VCORNER_SVS_L0_2", 402},
    {"DCVS_EXP_VCORNER_SVS_L1", 448},       {"DCVS_EXP_VCORNER_SVS_L2", 480},
    {"DCVS_EXP_VCORNER_SVS_L2_0", 481},     {"DCVS_EXP_VCORNER_NOM", 512},
    {"DCVS_EXP_VCORNER_NOM_L0", 544},       {"DCVS_EXP_VCORNER_NOM_L0_0", 545},
    {"DCVS_EXP_VCORNER_NOM_L1", 576},       {"DCVS_EXP_VCORNER_NOM_L2", 592},
    {"DCVS_EXP_VCORNER_NOM_L3", 608},       {"DCVS_EXP_VCORNER_TUR", 640},
    {"DCVS_EXP_VCORNER_TUR_L0", 656},       {"DCVS_EXP_VCORNER_TUR_L1", 672},
    {"DCVS_EXP_VCORNER_TUR_L1_0", 673},     {"DCVS_EXP_VCORNER_TUR_L1_1", 674},
    {"DCVS_EXP_VCORNER_TUR_L1_2", 675},     {"DCVS_EXP_VCORNER_TUR_L2", 688},
    {"DCVS_EXP_VCORNER_TUR_L3", 704},       {"DCVS_EXP_VCORNER_TUR_L3_0", 705},
    {"DCVS_EXP_VCORNER_TUR_L3_1", 706},     {"DCVS_EXP_VCORNER_TUR_L3_2", 707},
    {"DCVS_EXP_VCORNER_TUR_L4", 708},       {"DCVS_EXP_VCORNER_TUR_L5", 712},
    {"DCVS_EXP_VCORNER_SUPER_TURBO", 720},  {"DCVS_EXP_VCORNER_SUPER_TURBO_NO_CPR", 736},
    {"DCVS_EXP_VCORNER_DEFINED_MAX", 736},  {"DCVS_EXP_VCORNER_MAX", 65535},
};
