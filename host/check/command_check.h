// `runhost check`: what is wrong with documents.
#pragma once

#include "report/command.h"

namespace runhost {

Command addCheckCommand(CLI::App& app);

}  // namespace runhost
