#include "config/option_tables.h"

#include <span>
#include <string_view>

#include "config/typed_access.h"
#include "platform/logger.h"
#include "zelmar_kor/value_names.h"

namespace zant::kor {

namespace {

constexpr ZantNamedValue GRAPH_STATES[] = {
    {"init_start", GRAPH_STATE_INIT_START},           {"init_done", GRAPH_STATE_INIT_DONE},
    {"inference_start", GRAPH_STATE_INFERENCE_START}, {"inference_done", GRAPH_STATE_INFERENCE_DONE},
    {"deinit_start", GRAPH_STATE_DEINIT_START},       {"deinit_done", GRAPH_STATE_DEINIT_DONE},
};

std::optional<uint32_t> find(std::span<const ZantNamedValue> table, std::string_view name) {
    for (const ZantNamedValue& row : table) {
        if (row.name == name) return row.number;
    }
    return std::nullopt;
}

}  // namespace

uint32_t lookupVoltageCorner(const std::string& name) {
    if (const auto number = find(ZANT_CORNER_NAMES, name)) return *number;
    ZANT_LOG_ERROR("Invalid Voltage Corner Passed : %s", name.c_str());
    return INVALID_OPTION_VALUE;
}

uint32_t lookupExpVoltageCorner(const std::string& name) {
    if (const auto number = find(ZANT_EXP_CORNER_NAMES, name)) return *number;
    ZANT_LOG_ERROR("Invalid Exp Voltage Corner Passed: %s", name.c_str());
    return INVALID_OPTION_VALUE;
}

uint32_t lookupPowerMode(const std::string& name) {
    if (const auto number = find(ZANT_POWER_MODE_NAMES, name)) return *number;
    ZANT_LOG_ERROR("Invalid Power Mode : %s", name.c_str());
    return INVALID_OPTION_VALUE;
}

std::optional<uint32_t> lookupGraphState(const std::string& name) {
    const auto number = find(GRAPH_STATES, name);
    if (!number) ZANT_LOG_ERROR("Invalid graph state string: %s", name.c_str());
    return number;
}

uint32_t checkClockPerfMode(uint32_t value) {
    if (value <= 0xFF) return value;
    ZANT_LOG_ERROR("Invalid Clock Perf Mode: %d (exceeds CLK_PERF_MAX 0xFF)", static_cast<int>(value));
    return INVALID_OPTION_VALUE;
}

void parsePerfProfile(const FlatKey& key, uint32_t& profile) {
    const std::string name = getString(key);
    ZANT_LOG_INFO("Key: perf profile, Value: %s ", name.c_str());
    if (const auto number = find(ZANT_PERF_PROFILE_NAMES, name)) {
        profile = *number;
        return;
    }
    ZANT_LOG_ERROR("Invalid perf_profile %s passed, Setting perf_profile to default HIGH_PERFORMANCE", name.c_str());
    profile = PERF_PROFILE_HIGH_PERFORMANCE;
}

}  // namespace zant::kor
