#include "names.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <utility>

namespace runhost {

namespace {

constexpr size_t MOST_NAMES_LISTED = 24;

constexpr const char* PERF_PROFILES[] = {
    "low_balanced",
    "balanced",
    "default",
    "high_performance",
    "sustained_high_performance",
    "burst",
    "llm_decode_burst",
    "llm_decode_low_balanced",
    "llm_decode_balanced",
    "llm_decode_default",
    "llm_decode_high_performance",
    "llm_decode_sustained_high_performance",
    "llm_decode_extreme_power_saver",
    "llm_decode_low_power_saver",
    "llm_decode_power_saver",
    "llm_decode_high_power_saver",
    "extreme_power_saver",
    "low_power_saver",
    "power_saver",
    "high_power_saver",
    "system_settings",
    "custom",
};

constexpr const char* POWER_MODES[] = {
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_UP_DOWN",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_ADJUST_ONLY_UP",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_MODE",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_AGGRESSIVE_MODE",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE",
    "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_DUTY_CYCLE_MODE",
};

constexpr const char* CORNERS[] = {
    "DCVS_VOLTAGE_CORNER_DISABLE",     "DCVS_VOLTAGE_VCORNER_MIN_VOLTAGE_CORNER",
    "DCVS_VOLTAGE_VCORNER_SVS2",       "DCVS_VOLTAGE_VCORNER_SVS",
    "DCVS_VOLTAGE_VCORNER_SVS_PLUS",   "DCVS_VOLTAGE_VCORNER_NOM",
    "DCVS_VOLTAGE_VCORNER_NOM_PLUS",   "DCVS_VOLTAGE_VCORNER_TURBO",
    "DCVS_VOLTAGE_VCORNER_TURBO_PLUS", "DCVS_VOLTAGE_VCORNER_TURBO_L2",
    "DCVS_VOLTAGE_VCORNER_TURBO_L3",   "DCVS_VOLTAGE_VCORNER_TURBO_L4",
    "DCVS_VOLTAGE_VCORNER_TURBO_L5",   "DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER",
};

constexpr const char* EXP_CORNERS[] = {
    "DCVS_EXP_VCORNER_DISABLE",      "DCVS_EXP_VCORNER_MIN",          "DCVS_EXP_VCORNER_RET",
    "DCVS_EXP_VCORNER_MIN_SVS",      "DCVS_EXP_VCORNER_LOW_SVS_D3_0", "DCVS_EXP_VCORNER_LOW_SVS_D3",
    "DCVS_EXP_VCORNER_LOW_SVS_D2_1", "DCVS_EXP_VCORNER_LOW_SVS_D2",   "DCVS_EXP_VCORNER_LOW_SVS_D1_2",
    "DCVS_EXP_VCORNER_LOW_SVS_D1_1", "DCVS_EXP_VCORNER_LOW_SVS_D1_0", "DCVS_EXP_VCORNER_LOW_SVS_D1",
    "DCVS_EXP_VCORNER_LOW_SVS_D0_1", "DCVS_EXP_VCORNER_LOW_SVS_D0_0", "DCVS_EXP_VCORNER_LOW_SVS_D0",
    "DCVS_EXP_VCORNER_LOW_SVS",      "DCVS_EXP_VCORNER_LOW_SVS_P1",   "DCVS_EXP_VCORNER_LOW_SVS_L0",
    "DCVS_EXP_VCORNER_LOW_SVS_L1",   "DCVS_EXP_VCORNER_LOW_SVS_L2",   "DCVS_EXP_VCORNER_SVS",
    "DCVS_EXP_VCORNER_SVS_L0",       "DCVS_EXP_VCORNER_SVS_L0_1",     "DCVS_EXP_VCORNER_SVS_L0_2",
    "DCVS_EXP_VCORNER_SVS_L1",       "DCVS_EXP_VCORNER_SVS_L2",       "DCVS_EXP_VCORNER_SVS_L2_0",
    "DCVS_EXP_VCORNER_NOM",          "DCVS_EXP_VCORNER_NOM_L0",       "DCVS_EXP_VCORNER_NOM_L0_0",
    "DCVS_EXP_VCORNER_NOM_L1",       "DCVS_EXP_VCORNER_NOM_L2",       "DCVS_EXP_VCORNER_NOM_L3",
    "DCVS_EXP_VCORNER_TUR",          "DCVS_EXP_VCORNER_TUR_L0",       "DCVS_EXP_VCORNER_TUR_L1",
    "DCVS_EXP_VCORNER_TUR_L1_0",     "DCVS_EXP_VCORNER_TUR_L1_1",     "DCVS_EXP_VCORNER_TUR_L1_2",
    "DCVS_EXP_VCORNER_TUR_L2",       "DCVS_EXP_VCORNER_TUR_L3",       "DCVS_EXP_VCORNER_TUR_L3_0",
    "DCVS_EXP_VCORNER_TUR_L3_1",     "DCVS_EXP_VCORNER_TUR_L3_2",     "DCVS_EXP_VCORNER_TUR_L4",
    "DCVS_EXP_VCORNER_TUR_L5",       "DCVS_EXP_VCORNER_SUPER_TURBO",  "DCVS_EXP_VCORNER_SUPER_TURBO_NO_CPR",
    "DCVS_EXP_VCORNER_DEFINED_MAX",  "DCVS_EXP_VCORNER_MAX",
};

constexpr const char* GRAPH_STATES[] = {
    "init_start", "init_done", "inference_start", "inference_done", "deinit_start", "deinit_done",
};
constexpr const char* DSP_ARCHS[] = {"v68", "v69", "v73", "v81"};
constexpr const char* PD_SESSIONS[] = {"unsigned", "signed"};
constexpr const char* PROFILING_LEVELS[] = {"linting"};

// Twice the cost, so that a difference of case alone can count half.
size_t replacementCost(char left, char right) {
    if (left == right) return 0;
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return lower(left) == lower(right) ? 1 : 2;
}

// The part of a corner's name that tells it from other corners, of its own table and of the other one.
std::string_view ownPart(std::string_view name) {
    constexpr std::string_view common = "VCORNER_";
    const size_t found = name.find(common);
    return found == std::string_view::npos ? name : name.substr(found + common.size());
}

}  // namespace

std::span<const char* const> valueNames(std::string_view path) {
    const auto holds = [&](std::string_view word) { return path.find(word) != std::string_view::npos; };
    const std::string_view member = path.substr(path.rfind('/') + 1);
    if (holds("VoltageCorner")) {
        if (holds("dcvsExpControl") || holds("druControl") || holds("cengExpControl")) return EXP_CORNERS;
        return CORNERS;
    }
    if (holds("graphState")) return GRAPH_STATES;
    if (member == "perf_profile") return PERF_PROFILES;
    if (member == "powerMode") return POWER_MODES;
    if (member == "dsp_arch") return DSP_ARCHS;
    if (member == "pd_session") return PD_SESSIONS;
    if (member == "profiling_level") return PROFILING_LEVELS;
    return {};
}

size_t editDistance(std::string_view left, std::string_view right) {
    std::vector<size_t> beforeLast, last, row(right.size() + 1);
    for (size_t j = 0; j <= right.size(); ++j) row[j] = 2 * j;
    for (size_t i = 1; i <= left.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = 2 * i;
        for (size_t j = 1; j <= right.size(); ++j) {
            const size_t replaced = last[j - 1] + replacementCost(left[i - 1], right[j - 1]);
            row[j] = std::min({last[j] + 2, row[j - 1] + 2, replaced});
            const bool swapped = i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
            if (swapped) row[j] = std::min(row[j], beforeLast[j - 2] + 2);
        }
    }
    return (row[right.size()] + 1) / 2;
}

std::string closestName(const std::string& text, const std::vector<std::string>& names) {
    std::string closest;
    size_t least = std::min<size_t>(ownPart(text).size() / 3 + 1, 6) + 1;
    for (const std::string& name : names) {
        // A name with its common prefix left out is meant as well.
        const bool isEnd = text.size() > 3 && name.ends_with("_" + text);
        const size_t distance = isEnd ? 1 : editDistance(ownPart(text), ownPart(name));
        if (distance < least) {
            least = distance;
            closest = name;
        }
    }
    return closest;
}

std::vector<std::string> asVector(std::span<const char* const> names) {
    return {names.begin(), names.end()};
}

std::string suggestion(const std::string& text, const std::vector<std::string>& names) {
    const std::string closest = closestName(text, names);
    if (!closest.empty()) return fmt::format("; did you mean \"{}\"?", closest);
    if (names.empty() || names.size() > MOST_NAMES_LISTED) return {};
    return fmt::format("; known are {}", fmt::join(names, ", "));
}

}  // namespace runhost
