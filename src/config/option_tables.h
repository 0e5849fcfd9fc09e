// Names of the document and their wire numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/flat_keys.h"

namespace zant::kor {

// Marks a value refused at load.
constexpr uint32_t INVALID_OPTION_VALUE = 0x7FFFFFFFU;

// Perf profile numbers that the code itself names; the whole table stands in option_tables.cpp.
constexpr uint32_t PERF_PROFILE_HIGH_PERFORMANCE = 3;
constexpr uint32_t PERF_PROFILE_NOT_SET = 21;
constexpr uint32_t PERF_PROFILE_CUSTOM = 22;

// Stages of a graph's life; they index customPerfStates and number the perf events.
constexpr uint32_t GRAPH_STATE_INIT_START = 0;
constexpr uint32_t GRAPH_STATE_INIT_DONE = 1;
constexpr uint32_t GRAPH_STATE_INFERENCE_START = 2;
constexpr uint32_t GRAPH_STATE_INFERENCE_DONE = 3;
constexpr uint32_t GRAPH_STATE_DEINIT_START = 4;
constexpr uint32_t GRAPH_STATE_DEINIT_DONE = 5;
constexpr uint32_t GRAPH_STATE_COUNT = 6;

// The number, or INVALID_OPTION_VALUE after a level 1 line that names what was not found.
uint32_t lookupVoltageCorner(const std::string& name);
uint32_t lookupExpVoltageCorner(const std::string& name);
uint32_t lookupPowerMode(const std::string& name);
// Nothing after a level 1 line.
std::optional<uint32_t> lookupGraphState(const std::string& name);

// The value itself up to 255, else INVALID_OPTION_VALUE after a level 1 line.
uint32_t checkClockPerfMode(uint32_t value);

// Reads a profile name. An unknown one costs a level 1 line and counts as high_performance.
void parsePerfProfile(const FlatKey& key, uint32_t& profile);

}  // namespace zant::kor
