#include "run/command_run.h"

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <system_error>

#include "machine/capability_stage.h"
#include "machine/paths.h"
#include "report/reports.h"
#include "run/run_options.h"
#include "run/session.h"

namespace runhost {

namespace {

constexpr char EXAMPLE_NAME[] = "burst_async_voting.json";
constexpr char EXAMPLE_TEXT[] =
#include "example_document.inc"
    ;

std::string documentText(const std::string& path) {
    try {
        return readFile(path);
    } catch (const std::system_error&) {
        return {};  // the library says why, as it would to any host
    }
}

// memory: null with a backend that is not simulated.
void prepare(const Backend& backend, const SimulatedMemory* memory, const RunOptions& options) {
    constexpr uint32_t microseconds = 1000;
    backend.setLatency("executeGraph", options.executeMs * microseconds);
    for (const std::string& text : options.latencies) {
        const auto [operation, latency] = operationAndNumber(text);
        backend.setLatency(operation, latency);
    }
    for (const std::string& text : options.failures) {
        const auto [operation, n] = operationAndNumber(text);
        backend.failNthCall(operation, n);
        if (memory != nullptr) memory->failNthCall(operation, n);
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

    const CapabilityStage stage(options.capabilities);
    const ExtensionLibrary library(stage.place(report.library));
    const Backend backend(report.backend);
    std::optional<SimulatedMemory> memory;
    if (backend.isSimulated()) {
        const std::string rpcLibrary = rpcLibraryPath();
        useRpcLibrary(rpcLibrary);
        memory.emplace(backend, rpcLibrary);
    }
    const SessionParts parts{library, backend, memory ? &*memory : nullptr};
    prepare(backend, parts.memory, options);
    Session(parts, config, documentFacts(text), plan, report).run();
    fmt::print("{}", options.json ? jsonReport(report) : textReport(report, Style(stdout)));
    return report.succeeded ? EXIT_CLEAN : EXIT_FAULTS;
}

}  // namespace

Command addRunCommand(CLI::App& app) {
    const auto options = std::make_shared<RunOptions>();
    app.description(
        "Takes one model through its life: binds the backend, loads the document, creates the device, the context\n"
        "and the graphs, executes each graph and frees everything. Shows each hook with its result, the records\n"
        "that it handed out and its log lines; then every power vote with its time, its thread and its corners, how\n"
        "long each vote stood, what lay in shared memory, and every call that the backend received.\n"
        "Exit status: 0 when every hook succeeded, 1 when one failed or the backend was used wrongly, 2 for wrong\n"
        "usage.");
    addRunOptions(app, *options);
    return [options] { return run(*options); };
}

}  // namespace runhost
