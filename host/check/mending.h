// Repairs of a document in memory, so that one fault does not hide the next.
#pragma once

#include "check/findings.h"

namespace runhost {

// False when there is nothing to repair or the place is repaired already.
bool applyRepair(const Fault& fault);

// The library counts a section's items by their values. An item that repairs have emptied gets a value that asks for
// nothing, so that the items behind it keep their numbers. An emptied list of graph states gets one for the same
// reason: an empty one is a fault.
void fillEmptied(Node& root);

// Faults behind a load that ended because the library could not take a member's name for an index.
void findIndexNames(Node& root, std::vector<Fault>& faults);

// Faults behind a load that ended because the library lost count of a section's items.
std::vector<Fault> findLostItems(Node& root);

}  // namespace runhost
