#include "chip/command_chip.h"

// No hook tells what the library knows of the chip. The facts come from chip_inspection, a library of the same objects
// that is loaded from beside the extension library, so that it finds whatever that one finds.
#include <fmt/format.h>

#include <memory>
#include <stdexcept>

#include "chip/report_chip.h"
#include "machine/capability_stage.h"
#include "machine/modules.h"
#include "machine/paths.h"
#include "zelmar_kor_inspection/chip_inspection.h"

namespace runhost {

namespace {

struct ChipOptions {
    std::string machine;
    std::string capabilities;
    std::string library;
    bool json = false;
};

// What keeps a callback from throwing into the library that calls it.
struct Collection {
    std::vector<ToldFact> facts;
    bool isWhole = true;
};

void collect(void* context, const ChipFact* fact) {
    auto& collection = *static_cast<Collection*>(context);
    try {
        collection.facts.push_back({fact->list, fact->record, fact->name, fact->value, fact->origin});
    } catch (const std::bad_alloc&) {
        collection.isWhole = false;
    }
}

std::vector<ToldFact> inspectChip(const std::string& path) {
    const Module module(path);
    const auto inspect = reinterpret_cast<InspectChipFn>(module.symbol("zelmar_kor_inspectChip"));
    if (inspect == nullptr) throw std::runtime_error(path + " has no zelmar_kor_inspectChip");
    Collection collection;
    if (!inspect(collect, &collection) || !collection.isWhole) throw std::runtime_error("memory was short");
    return std::move(collection.facts);
}

int chip(const ChipOptions& options) {
    const std::string path = inspectionPath(options.library);
    const std::string machine = machinePath(options.machine);
    if (!machine.empty()) useMachine(machine);
    const CapabilityStage stage(options.capabilities);
    const std::vector<ToldFact> facts = inspectChip(stage.place(path));
    fmt::print("{}", options.json ? chipJson(facts) : chipText(facts, Style(stdout)));
    return EXIT_CLEAN;
}

}  // namespace

Command addChipCommand(CLI::App& app) {
    const auto options = std::make_shared<ChipOptions>();
    app.description(
        "Shows which chip the library takes the machine for, and where each fact comes from: the chip's row in the\n"
        "library's table, a capability library, or a default. The facts are asked of the library's own code.\n"
        "Exit status: 0, 1 when the library can't be loaded, 2 for wrong usage.");
    app.add_option("--machine", options->machine, "machine to run as, by name or directory (default: this one)");
    app.add_option("--capabilities", options->capabilities,
                   "answers of a simulated capability library, a JSON file (default: the machine's own library)");
    app.add_option("--library", options->library, "extension library (default: the one found beside this program)");
    app.add_flag("--json", options->json, "one JSON document instead of text");
    return [options] { return chip(*options); };
}

}  // namespace runhost
