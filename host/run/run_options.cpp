#include "run/run_options.h"

#include <fmt/format.h>

#include <iterator>

#include "machine/paths.h"
#include "records/names.h"

namespace runhost {

namespace {

// What the example is shown with: runs that follow each other within the hold of its profile, then a pause beyond it.
constexpr uint32_t EXAMPLE_ITERATIONS = 3;
constexpr uint32_t EXAMPLE_FINAL_PAUSE_MS = 400;

struct RoadRow {
    const char* name;
    Road road;
};

constexpr RoadRow ROADS[] = {{"compose", Road::COMPOSE}, {"binary", Road::BINARY}, {"binary-list", Road::BINARY_LIST}};

Road roadOf(const std::string& name) {
    std::vector<std::string> names;
    for (const RoadRow& row : ROADS) {
        if (row.name == name) return row.road;
        names.emplace_back(row.name);
    }
    throw UsageError(fmt::format("no road \"{}\": give one of {}", name, fmt::join(names, ", ")));
}

void addContextOptions(CLI::App& app, RunOptions& options) {
    constexpr uint32_t mostContexts = 64;
    app.add_option("--road", options.road,
                   "how contexts and graphs come to be: compose, binary, or binary-list for several contexts at once")
        ->capture_default_str();
    app.add_option("--contexts", options.contexts,
                   "number of contexts on the road binary-list (default: the document's keys)")
        ->check(CLI::Range(1U, mostContexts));
    app.add_flag("--pools", options.pools, "external buffers for all contexts, from pools that they share");
    app.add_flag("--detach", options.detach, "detach and attach each context's buffers between the first two runs");
}

void addPlanOptions(CLI::App& app, RunOptions& options) {
    constexpr uint32_t longestMs = 3600000;
    constexpr uint32_t mostIterations = 1000000;
    const CLI::Range duration(0U, longestMs);
    app.add_option("--graphs", options.graphs, "graphs to compose and to run, a,b (default: the document's)")
        ->delimiter(',')
        ->allow_extra_args(false);
    addContextOptions(app, options);
    app.add_option("--profile", options.profile, "perf profile by name, instead of the document's");
    app.add_option("--iterations", options.iterations,
                   "how often each graph runs (default: 1; 2 with --detach, 3 for the example)")
        ->check(CLI::Range(1U, mostIterations));
    app.add_option("--interval-ms", options.intervalMs, "pause between two runs")
        ->check(duration)
        ->capture_default_str();
    app.add_option("--final-pause-ms", options.finalPauseMs,
                   "pause after the last run (default: 0; 400 for the example)")
        ->check(duration);
    app.add_option("--execute-ms", options.executeMs, "how long the simulated backend takes for a graph")
        ->check(duration)
        ->capture_default_str();
    app.add_option("--latency", options.latencies, "slow calls of the simulated backend, OPERATION=MICROSECONDS")
        ->allow_extra_args(false);
    app.add_option("--fail", options.failures,
                   "a failing call of the simulated libraries, OPERATION=N for the Nth, 0 for all")
        ->allow_extra_args(false);
}

}  // namespace

RunPlan planOf(const RunOptions& options) {
    const bool isExample = options.document.empty();
    RunPlan plan;
    plan.graphs = options.graphs;
    for (const std::string& name : plan.graphs) {
        if (name.empty()) throw UsageError("--graphs holds an empty name");
    }
    if (!options.profile.empty()) plan.profile = profileNumber(options.profile);
    plan.road = roadOf(options.road);
    plan.contexts = options.contexts;
    if (plan.contexts && plan.road != Road::BINARY_LIST) throw UsageError("--contexts needs --road binary-list");
    plan.pools = options.pools;
    plan.detach = options.detach;
    // Between runs means that there are two.
    const uint32_t usual = isExample ? EXAMPLE_ITERATIONS : options.detach ? 2 : 1;
    plan.iterations = options.iterations.value_or(usual);
    if (plan.detach && plan.iterations < 2) throw UsageError("--detach needs --iterations 2 or more");
    plan.interval = std::chrono::milliseconds(options.intervalMs);
    plan.finalPause = std::chrono::milliseconds(options.finalPauseMs.value_or(isExample ? EXAMPLE_FINAL_PAUSE_MS : 0));
    return plan;
}

std::string planText(const RunPlan& plan, uint32_t executeMs) {
    std::string text =
        fmt::format("{} run{} of each graph, {} ms each", plan.iterations, plan.iterations == 1 ? "" : "s", executeMs);
    if (plan.interval.count() > 0) text += fmt::format(", {} ms between them", plan.interval.count());
    if (plan.iterations > 1 && plan.interval.count() == 0) text += ", back to back";
    if (plan.finalPause.count() > 0) text += fmt::format(", then a pause of {} ms", plan.finalPause.count());
    return text;
}

std::pair<std::string, uint32_t> operationAndNumber(const std::string& text) {
    const size_t sign = text.find('=');
    const std::string number = sign == std::string::npos ? "" : text.substr(sign + 1);
    const bool isNumber = !number.empty() && number.size() < 10 &&
                          number.find_first_not_of("0123456789") == std::string::npos && sign > 0;
    if (!isNumber) throw UsageError(fmt::format("\"{}\" is not of the form OPERATION=NUMBER", text));
    return {text.substr(0, sign), static_cast<uint32_t>(std::stoul(number))};
}

void addRunOptions(CLI::App& app, RunOptions& options) {
    app.add_option("document", options.document, "configuration document; an example when there is none");
    addPlanOptions(app, options);
    app.add_option("--machine", options.machine,
                   "machine to run as: a name such as chip538 or unknown, or a directory (default: this one)");
    app.add_option("--capabilities", options.capabilities,
                   "answers of a simulated capability library, a JSON file (default: the machine's own library)");
    app.add_option("--backend", options.backend, "backend library (default: the simulated one)");
    app.add_option("--library", options.library, "extension library (default: the one found beside this program)");
    app.add_option("--log-level", options.logLevel, "1 errors, 2 warnings, 3 info, 4 verbose, 5 debug")
        ->check(CLI::Range(1, 5))
        ->capture_default_str();
    app.add_flag("--json", options.json, "one JSON document instead of text");
}

}  // namespace runhost
