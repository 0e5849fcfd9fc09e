// The arguments of runhost run.
#pragma once

#include <CLI/CLI.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "run/run_plan.h"
#include "zelmar_kor/backend_extensions.h"

namespace runhost {

struct RunOptions {
    std::string document;
    std::string machine;
    std::string capabilities;  // what a capability library answers, a file; empty for none
    std::string backend;
    std::string library;
    std::vector<std::string> graphs;
    std::string road = "compose";
    std::optional<uint32_t> contexts;
    bool pools = false;
    bool detach = false;
    std::string profile;
    std::optional<uint32_t> iterations;
    uint32_t intervalMs = 0;
    std::optional<uint32_t> finalPauseMs;
    uint32_t executeMs = 2;
    std::vector<std::string> latencies;
    std::vector<std::string> failures;
    int32_t logLevel = ZANT_LOG_LEVEL_WARN;
    bool json = false;
};

// options has to outlive the parsing.
void addRunOptions(CLI::App& app, RunOptions& options);

// Throws UsageError for options that make no sense together.
RunPlan planOf(const RunOptions& options);
// How often the graphs run, in words.
std::string planText(const RunPlan& plan, uint32_t executeMs);

// "setPowerConfig=20": an operation and a number. Throws UsageError for any other form.
std::pair<std::string, uint32_t> operationAndNumber(const std::string& text);

}  // namespace runhost
