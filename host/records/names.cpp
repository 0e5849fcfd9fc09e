#include "records/names.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <utility>

#include "machine/paths.h"

namespace runhost {

namespace {

constexpr size_t MOST_NAMES_LISTED = 24;

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

std::vector<std::string> namesOf(std::span<const NamedValue> table) {
    std::vector<std::string> names;
    for (const NamedValue& row : table) names.emplace_back(row.name);
    return names;
}

std::vector<std::string> valueNames(std::string_view path) {
    const auto holds = [&](std::string_view word) { return path.find(word) != std::string_view::npos; };
    const std::string_view member = path.substr(path.rfind('/') + 1);
    if (holds("VoltageCorner")) {
        if (holds("dcvsExpControl") || holds("druControl") || holds("cengExpControl")) return namesOf(expCorners());
        return namesOf(corners());
    }
    if (holds("graphState")) return {std::begin(GRAPH_STATES), std::end(GRAPH_STATES)};
    if (member == "perf_profile") return namesOf(perfProfiles());
    if (member == "powerMode") return namesOf(powerModes());
    if (member == "dsp_arch") return {std::begin(DSP_ARCHS), std::end(DSP_ARCHS)};
    if (member == "pd_session") return {std::begin(PD_SESSIONS), std::end(PD_SESSIONS)};
    if (member == "profiling_level") return {std::begin(PROFILING_LEVELS), std::end(PROFILING_LEVELS)};
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

std::string suggestion(const std::string& text, const std::vector<std::string>& names) {
    const std::string closest = closestName(text, names);
    if (!closest.empty()) return fmt::format("; did you mean \"{}\"?", closest);
    if (names.empty() || names.size() > MOST_NAMES_LISTED) return {};
    return fmt::format("; known are {}", fmt::join(names, ", "));
}

uint32_t profileNumber(const std::string& name) {
    if (const auto number = numberOf(perfProfiles(), name)) return *number;
    throw UsageError(fmt::format("no perf profile \"{}\"{}", name, suggestion(name, namesOf(perfProfiles()))));
}

}  // namespace runhost
