// Every place where a document breaks the schema, told in words.
#pragma once

#include <vector>

#include "findings.h"
#include "schema.h"

namespace runhost {

std::vector<Fault> findSchemaFaults(const Schema& schema, Node& root);

}  // namespace runhost
