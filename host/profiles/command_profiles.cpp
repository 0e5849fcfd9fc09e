#include "profiles/command_profiles.h"

#include <fmt/format.h>

#include <memory>

#include "machine/paths.h"
#include "machine/platform.h"
#include "profiles/report_profiles.h"
#include "records/names.h"

namespace runhost {

namespace {

struct ProfilesOptions {
    std::string name;
    // A machine on which no profile is refused for its architecture, where there can be another one.
    std::string machine = platform::canStandIn() ? "chip693" : "";
    std::string library;
    bool json = false;
};

int profiles(const ProfilesOptions& options) {
    std::vector<NamedValue> chosen(perfProfiles().begin(), perfProfiles().end());
    if (!options.name.empty()) {
        const uint32_t number = profileNumber(options.name);
        std::erase_if(chosen, [&](const NamedValue& profile) { return profile.number != number; });
    }
    const std::string libraryPath = extensionsPath(options.library);
    const std::string simulated = backendPath({});
    const std::string machine = machinePath(options.machine);
    if (!machine.empty()) useMachine(machine);
    const ExtensionLibrary library(libraryPath);
    const Backend backend(simulated);
    const std::vector<ProfileVotes> votes = driveProfiles(library, backend, chosen);
    const Style style(stdout);
    if (options.json) {
        fmt::print("{}", profilesJson(votes, options.machine));
    } else {
        fmt::print("Taken from the library, which took a model through its life under each profile on {}.\n\n{}",
                   options.machine.empty() ? "this machine" : options.machine,
                   options.name.empty() ? profileTable(votes, style) : profileDetail(votes.front(), style));
    }
    return EXIT_CLEAN;
}

}  // namespace

Command addProfilesCommand(CLI::App& app) {
    const auto options = std::make_shared<ProfilesOptions>();
    app.description(
        "Shows what each perf profile votes at each event of a model's life. The extension library itself is driven\n"
        "through that life on the simulated backend, so the table is what the library does.\n"
        "Exit status: 0, 1 when a hook failed, 2 for wrong usage.");
    app.add_option("name", options->name, "one profile, in detail");
    app.add_option("--machine", options->machine, "machine to run as, by name or directory; empty for this one")
        ->capture_default_str();
    app.add_option("--library", options->library, "extension library (default: the one found beside this program)");
    app.add_flag("--json", options->json, "one JSON document instead of text");
    return [options] { return profiles(*options); };
}

}  // namespace runhost
