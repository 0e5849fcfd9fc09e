#include "records/value_tables.h"

#include <fmt/format.h>

#include <algorithm>

namespace runhost {

namespace {

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
    return ZANT_PERF_PROFILE_NAMES;
}

std::span<const NamedValue> powerModes() {
    return ZANT_POWER_MODE_NAMES;
}

std::span<const NamedValue> corners() {
    return ZANT_CORNER_NAMES;
}

std::span<const NamedValue> expCorners() {
    return ZANT_EXP_CORNER_NAMES;
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
