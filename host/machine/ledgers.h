// The ledgers that simulated libraries keep.
#pragma once

#include <string>
#include <vector>

#include "machine/modules.h"

namespace runhost {

// Empty for a library that keeps none.
std::vector<std::string> ledgerOf(const Module& module);

// The lines of a ledger that tell of wrong use.
std::vector<std::string> misuseIn(const std::vector<std::string>& ledger);

}  // namespace runhost
