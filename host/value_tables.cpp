#include "value_tables.h"

#include <fmt/format.h>

#include <algorithm>

namespace runhost {

namespace {

constexpr NamedValue PERF_PROFILES[] = {
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

constexpr NamedValue POWER_MODES[] = {
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_UP_DOWN", 1},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_ONLY_UP", 2},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_MODE", 4},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_AGGRESSIVE_MODE", 8},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE", 16},
    {"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_DUTY_CYCLE_MODE", 32},
};

constexpr NamedValue CORNERS[] = {
    {"DCVS_VOLTAGE_CORNER_DISABLE", 16},      {"DCVS_VOLTAGE_VCORNER_MIN_VOLTAGE_CORNER", 32},
    {"DCVS_VOLTAGE_VCORNER_SVS2", 48},        {"DCVS_VOLTAGE_VCORNER_SVS", 64},
    {"DCVS_VOLTAGE_VCORNER_SVS_PLUS", 80},    {"DCVS_VOLTAGE_VCORNER_NOM", 96},
    {"DCVS_VOLTAGE_VCORNER_NOM_PLUS", 112},   {"DCVS_VOLTAGE_VCORNER_TURBO", 128},
    {"DCVS_VOLTAGE_VCORNER_TURBO_PLUS", 144}, {"DCVS_VOLTAGE_VCORNER_TURBO_L2", 146},
    {"DCVS_VOLTAGE_VCORNER_TURBO_L3", 147},   {"DCVS_VOLTAGE_VCORNER_TURBO_L4", 148},
    {"DCVS_VOLTAGE_VCORNER_TURBO_L5", 149},   {"DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER", 160},
};

constexpr NamedValue EXP_CORNERS[] = {
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

struct ShortName {
    std::string_view name;
    const char* text;
};

// What the parts common to all names of a table leave, where that is not short already.
constexpr ShortName SHORT_NAMES[] = {
    {"CORNER_DISABLE", "OFF"},
    {"DISABLE", "OFF"},
    {"MIN_VOLTAGE_CORNER", "MIN"},
    {"MAX_VOLTAGE_CORNER", "MAX"},
    {"SVS_PLUS", "SVS+"},
    {"NOM_PLUS", "NOM+"},
    {"TURBO_PLUS", "TURBO+"},
    {"PERFORMANCE_MODE", "performance"},
    {"POWER_SAVER_MODE", "power saver"},
    {"POWER_SAVER_AGGRESSIVE_MODE", "aggressive saver"},
    {"ADJUST_UP_DOWN", "adjust up/down"},
    {"ADJUST_ONLY_UP", "adjust up"},
    {"DUTY_CYCLE_MODE", "duty cycle"},
};

constexpr std::string_view COMMON_PARTS[] = {
    "DCVS_VOLTAGE_VCORNER_",
    "DCVS_VOLTAGE_",
    "DCVS_EXP_VCORNER_",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_",
};

}  // namespace

std::span<const NamedValue> perfProfiles() {
    return PERF_PROFILES;
}

std::span<const NamedValue> powerModes() {
    return POWER_MODES;
}

std::span<const NamedValue> corners() {
    return CORNERS;
}

std::span<const NamedValue> expCorners() {
    return EXP_CORNERS;
}

std::string nameOf(std::span<const NamedValue> table, uint32_t number) {
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const NamedValue& row) { return row.number == number; });
    return found == table.end() ? fmt::format("{}", number) : found->name;
}

std::optional<uint32_t> numberOf(std::span<const NamedValue> table, std::string_view name) {
    const auto found =
        std::find_if(table.begin(), table.end(), [&](const NamedValue& row) { return row.name == name; });
    if (found == table.end()) return std::nullopt;
    return found->number;
}

std::string shortName(const std::string& name) {
    std::string_view rest = name;
    for (const std::string_view common : COMMON_PARTS) {
        if (!rest.starts_with(common)) continue;
        rest.remove_prefix(common.size());
        break;
    }
    const auto* row = std::find_if(std::begin(SHORT_NAMES), std::end(SHORT_NAMES),
                                   [&](const ShortName& candidate) { return candidate.name == rest; });
    return row == std::end(SHORT_NAMES) ? std::string(rest) : row->text;
}

}  // namespace runhost
