// `runhost schema`: the schema of documents.
#pragma once

#include "report/command.h"

namespace runhost {

Command addSchemaCommand(CLI::App& app);

}  // namespace runhost
