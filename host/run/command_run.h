// `runhost run`: a model's whole life.
#pragma once

#include "report/command.h"

namespace runhost {

Command addRunCommand(CLI::App& app);

}  // namespace runhost
