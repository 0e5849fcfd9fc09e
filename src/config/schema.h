// The document's schema, in draft-07 of JSON Schema, and the check against it.
#pragma once

#include "config/config_document.h"

namespace zant::kor {

// The text of include/zelmar_kor/config_schema.json.
extern const char* const configSchemaText;

// Compiles schemaText and checks the document against it. Failures are logged at level 1: the place of the first
// fault as a JSON pointer, and the error value as compact JSON, which names the violated keyword, the faulty value
// and the schema's place.
bool validateDocument(const ConfigDocument& document, const char* schemaText);

}  // namespace zant::kor
