#include "check/command_check.h"

#include <fmt/format.h>

#include <memory>
#include <system_error>

#include "check/document_check.h"
#include "machine/paths.h"
#include "report/style.h"

namespace runhost {

namespace {

struct CheckOptions {
    std::vector<std::string> documents;
    std::string library;
};

struct Counts {
    size_t errors = 0;
    size_t warnings = 0;
};

void print(const Finding& finding, const std::string& path, const std::string& source, const Style& style) {
    const Position position = positionOf(source, finding.offset);
    const bool isError = finding.severity == Severity::ERROR;
    const std::string kind = isError ? style.paint(Colour::RED, "error") : style.paint(Colour::YELLOW, "warning");
    const std::string where = finding.path.empty() ? std::string() : fmt::format(" [{}]", finding.path);
    fmt::print("{}:{}:{}: {}: {}{}\n", path, position.line, position.column, kind, finding.text, where);
}

Counts checkOne(const DocumentCheck& check, const std::string& path) {
    Counts counts;
    std::string source;
    try {
        source = readFile(path);
    } catch (const std::system_error& error) {
        fmt::print(stderr, "{}: error: {}\n", path, error.code().message());
        return {1, 0};
    }
    const Style style(stdout);
    for (const Finding& finding : check.run(path, source)) {
        print(finding, path, source, style);
        ++(finding.severity == Severity::ERROR ? counts.errors : counts.warnings);
    }
    return counts;
}

int check(const CheckOptions& options) {
    const ExtensionLibrary library(extensionsPath(options.library));
    const DocumentCheck check(library);
    Counts all;
    for (const std::string& path : options.documents) {
        const Counts counts = checkOne(check, path);
        all.errors += counts.errors;
        all.warnings += counts.warnings;
    }
    fmt::print("{} document{}: {} error{}, {} warning{}\n", options.documents.size(),
               options.documents.size() == 1 ? "" : "s", all.errors, all.errors == 1 ? "" : "s", all.warnings,
               all.warnings == 1 ? "" : "s");
    return all.errors == 0 ? EXIT_CLEAN : EXIT_FAULTS;
}

}  // namespace

Command addCheckCommand(CLI::App& app) {
    const auto options = std::make_shared<CheckOptions>();
    app.description(
        "Loads each document through the extension library and prints every fault as\n"
        "    file:line:column: error|warning: text [/path/in/the/document]\n"
        "Errors are what the library refuses or replaces; warnings are what it passes over.\n"
        "Exit status: 0 without errors, 1 with errors or an unreadable file, 2 for wrong usage.");
    app.add_option("documents", options->documents, "configuration documents")->required();
    app.add_option("--library", options->library, "extension library (default: the one found beside this program)");
    return [options] { return check(*options); };
}

}  // namespace runhost
