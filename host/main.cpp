// runhost: the reference host. Loads the extension library as any host does and shows what it answers.
#include <fmt/format.h>

#include <exception>

#include "check/command_check.h"
#include "check/command_schema.h"
#include "chip/command_chip.h"
#include "machine/paths.h"
#include "profiles/command_profiles.h"
#include "run/command_run.h"

namespace {

int fail(const std::string& text, int status) {
    fmt::print(stderr, "runhost: {}\n", text);
    return status;
}

int run(int argc, char** argv) {
    using namespace runhost;
    CLI::App app("Reference host of the NPU backend extensions.", "runhost");
    app.set_version_flag("--version", "runhost " RUNHOST_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/" begins a path everywhere
    Command command;
    const auto add = [&](const char* name, Command (*addCommand)(CLI::App&)) {
        CLI::App* subcommand = app.add_subcommand(name);
        subcommand->final_callback([&command, chosen = addCommand(*subcommand)] { command = chosen; });
    };
    try {
        add("run", addRunCommand);
        add("check", addCheckCommand);
        add("profiles", addProfilesCommand);
        add("schema", addSchemaCommand);
        add("chip", addChipCommand);
        app.parse(argc, argv);
        return command();
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? EXIT_CLEAN : EXIT_USAGE;
    } catch (const UsageError& error) {
        return fail(error.what(), EXIT_USAGE);
    } catch (const std::exception& error) {
        return fail(error.what(), EXIT_FAULTS);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (...) {
        return runhost::EXIT_FAULTS;  // not even the report of a failure could be written
    }
}
