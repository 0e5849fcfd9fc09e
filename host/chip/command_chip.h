// `runhost chip`: which chip was found.
#pragma once

#include "report/command.h"

namespace runhost {

Command addChipCommand(CLI::App& app);

}  // namespace runhost
