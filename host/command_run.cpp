#include <fmt/format.h>

#include <memory>
#include <system_error>

#include "commands.h"
#include "paths.h"
#include "reports.h"
#include "session.h"

namespace runhost {

namespace {

constexpr char EXAMPLE_NAME[] = "burst_async_voting.json";
constexpr char EXAMPLE_TEXT[] =
#include "example_document.inc"
    ;

struct RunOptions {
    std::string document;
    std::string machine;
    std::string backend;
    std::string library;
    int32_t logLevel = ZANT_LOG_LEVEL_WARN;
    bool json = false;
};

std::string machinePath(const std::string& given) {
    if (given.empty()) return {};
    if (const auto found = findMachine(given)) return found->string();
    throw UsageError(
        fmt::format("no machine \"{}\": give a directory or one of {}", given, fmt::join(machineNames(), ", ")));
}

std::string documentText(const std::string& path) {
    try {
        return readFile(path);
    } catch (const std::system_error&) {
        return {};  // the library says why, as it would to any host
    }
}

int run(const RunOptions& options) {
    RunReport report{};
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
    Session(library, backend, config, documentFacts(text), options.logLevel).run(report);
    fmt::print("{}", options.json ? jsonReport(report) : textReport(report, Style(stdout)));
    return report.succeeded ? EXIT_CLEAN : EXIT_FAULTS;
}

}  // namespace

Command addRunCommand(CLI::App& app) {
    const auto options = std::make_shared<RunOptions>();
    app.description(
        "Takes one model through its life: binds the backend, loads the document, creates the device, the context\n"
        "and the graphs, executes each graph once and frees everything. Shows each hook with its result, the\n"
        "records that it handed out, its log lines, and in the end every call that the backend received.\n"
        "Exit status: 0 when every hook succeeded, 1 when one failed, 2 for wrong usage.");
    app.add_option("document", options->document, "configuration document; an example when there is none");
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
