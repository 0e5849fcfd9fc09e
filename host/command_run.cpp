#include <fmt/format.h>

#include <memory>
#include <system_error>

#include "commands.h"
#include "names.h"
#include "paths.h"
#include "reports.h"
#include "session.h"

namespace runhost {

namespace {

constexpr char EXAMPLE_NAME[] = "burst_async_voting.json";
constexpr char EXAMPLE_TEXT[] =
#include "example_document.inc"
    ;

// What the example is shown with: runs that follow each other within the hold of its profile, then a pause beyond it.
constexpr uint32_t EXAMPLE_ITERATIONS = 3;
constexpr uint32_t EXAMPLE_FINAL_PAUSE_MS = 400;

struct RunOptions {
    std::string document;
    std::string machine;
    std::string backend;
    std::string library;
    std::vector<std::string> graphs;
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

std::string documentText(const std::string& path) {
    try {
        return readFile(path);
    } catch (const std::system_error&) {
        return {};  // the library says why, as it would to any host
    }
}

RunPlan planOf(const RunOptions& options) {
    const bool isExample = options.document.empty();
    RunPlan plan;
    plan.graphs = options.graphs;
    for (const std::string& name : plan.graphs) {
        if (name.empty()) throw UsageError("--graphs holds an empty name");
    }
    if (!options.profile.empty()) plan.profile = profileNumber(options.profile);
    plan.iterations = options.iterations.value_or(isExample ? EXAMPLE_ITERATIONS : 1);
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

// "setPowerConfig=20": an operation and a number.
std::pair<std::string, uint32_t> operationAndNumber(const std::string& text) {
    const size_t sign = text.find('=');
    const std::string number = sign == std::string::npos ? "" : text.substr(sign + 1);
    const bool isNumber = !number.empty() && number.size() < 10 &&
                          number.find_first_not_of("0123456789") == std::string::npos && sign > 0;
    if (!isNumber) throw UsageError(fmt::format("\"{}\" is not of the form OPERATION=NUMBER", text));
    return {text.substr(0, sign), static_cast<uint32_t>(std::stoul(number))};
}

void prepare(const Backend& backend, const RunOptions& options) {
    constexpr uint32_t microseconds = 1000;
    backend.setLatency("executeGraph", options.executeMs * microseconds);
    for (const std::string& text : options.latencies) {
        const auto [operation, latency] = operationAndNumber(text);
        backend.setLatency(operation, latency);
    }
    for (const std::string& text : options.failures) {
        const auto [operation, n] = operationAndNumber(text);
        backend.failNthCall(operation, n);
    }
}

int run(const RunOptions& options) {
    RunReport report{};
    const RunPlan plan = planOf(options);
    report.plan = planText(plan, options.executeMs);
    report.library = extensionsPath(options.library);
    report.backend = backendPath(options.backend);
    report.machine = machinePath(options.machine);
    report.logLevel = options.logLevel;
    if (!report.machine.empty()) useMachine(report.machine);
    if (report.machine.empty()) report.machine = "this one";

    const bool useExample = options.document.empty();
    const std::string config = useExample ? EXAMPLE_TEXT : configPath(options.document);
    const std::string text = useExample ? EXAMPLE_TEXT : documentText(options.document);
    report.document = useExample ? fmt::format("the example {}", EXAMPLE_NAME) : options.document;

    const ExtensionLibrary library(report.library);
    const Backend backend(report.backend);
    prepare(backend, options);
    Session(library, backend, config, documentFacts(text), plan, options.logLevel).run(report);
    fmt::print("{}", options.json ? jsonReport(report) : textReport(report, Style(stdout)));
    return report.succeeded ? EXIT_CLEAN : EXIT_FAULTS;
}

void addPlanOptions(CLI::App& app, RunOptions& options) {
    constexpr uint32_t longestMs = 3600000;
    constexpr uint32_t mostIterations = 1000000;
    const CLI::Range duration(0U, longestMs);
    app.add_option("--graphs", options.graphs, "graphs to compose and to run, a,b (default: the document's)")
        ->delimiter(',')
        ->allow_extra_args(false);
    app.add_option("--profile", options.profile, "perf profile by name, instead of the document's");
    app.add_option("--iterations", options.iterations, "how often each graph runs (default: 1; 3 for the example)")
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
                   "a failing call of the simulated backend, OPERATION=N for the Nth, 0 for all")
        ->allow_extra_args(false);
}

}  // namespace

Command addRunCommand(CLI::App& app) {
    const auto options = std::make_shared<RunOptions>();
    app.description(
        "Takes one model through its life: binds the backend, loads the document, creates the device, the context\n"
        "and the graphs, executes each graph and frees everything. Shows each hook with its result, the records\n"
        "that it handed out and its log lines; then every power vote with its time, its thread and its corners, how\n"
        "long each vote stood, and every call that the backend received.\n"
        "Exit status: 0 when every hook succeeded, 1 when one failed or the backend was used wrongly, 2 for wrong\n"
        "usage.");
    app.add_option("document", options->document, "configuration document; an example when there is none");
    addPlanOptions(app, *options);
    app.add_option("--machine", options->machine,
                   "machine to run as: a name such as chip538 or unknown, or a directory (default: this one)");
    app.add_option("--backend", options->backend, "backend library (default: the simulated one)");
    app.add_option("--library", options->library, "extension library (default: the one found beside this program)");
    app.add_option("--log-level", options->logLevel, "1 errors, 2 warnings, 3 info, 4 verbose, 5 debug")
        ->check(CLI::Range(1, 5))
        ->capture_default_str();
    app.add_flag("--json", options->json, "one JSON document instead of text");
    return [options] { return run(*options); };
}

}  // namespace runhost
