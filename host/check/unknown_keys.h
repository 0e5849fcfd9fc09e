// Members that no section of the configuration knows, which the library may pass over in silence.
#pragma once

#include <vector>

#include "check/findings.h"
#include "check/schema.h"

namespace runhost {

// Warnings, in document order: unknown members, outermost only, and second members of one name, of which the library
// reads the first.
std::vector<Fault> findUnknownKeys(const Schema& schema, Node& root);

}  // namespace runhost
