// `runhost profiles`: what the perf profiles vote.
#pragma once

#include "report/command.h"

namespace runhost {

Command addProfilesCommand(CLI::App& app);

}  // namespace runhost
