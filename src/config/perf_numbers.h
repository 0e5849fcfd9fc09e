// Perf profile and graph state numbers that the code itself names. They are wire values; the names of all stand in
// zelmar_kor/value_names.h and, for graph states, in option_tables.cpp.
#pragma once

#include <cstdint>

namespace zant::kor {

constexpr uint32_t PERF_PROFILE_HIGH_PERFORMANCE = 3;
constexpr uint32_t PERF_PROFILE_SYSTEM_SETTINGS = 20;  // nothing is voted
constexpr uint32_t PERF_PROFILE_NOT_SET = 21;
constexpr uint32_t PERF_PROFILE_CUSTOM = 22;

// Stages of a graph's life; they index customPerfStates and number the perf events.
constexpr uint32_t GRAPH_STATE_INIT_START = 0;
constexpr uint32_t GRAPH_STATE_INIT_DONE = 1;
constexpr uint32_t GRAPH_STATE_INFERENCE_START = 2;
constexpr uint32_t GRAPH_STATE_INFERENCE_DONE = 3;
constexpr uint32_t GRAPH_STATE_DEINIT_START = 4;
constexpr uint32_t GRAPH_STATE_DEINIT_DONE = 5;

}  // namespace zant::kor
