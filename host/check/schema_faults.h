// Every place where a document breaks the schema, told in words.
#pragma once

#include <vector>

#include "check/findings.h"
#include "check/schema.h"

namespace runhost {

std::vector<Fault> findSchemaFaults(const Schema& schema, Node& root);

}  // namespace runhost
