#include "check/command_schema.h"

#include <cstdio>

#include "check/schema.h"

namespace runhost {

Command addSchemaCommand(CLI::App& app) {
    app.description(
        "Prints the JSON schema (draft-07) of configuration documents, so that an editor can complete them:\n"
        "save it to a file and name that file in the editor's settings.");
    return [] { return std::fputs(schemaText(), stdout) < 0 ? EXIT_FAULTS : EXIT_CLEAN; };
}

}  // namespace runhost
