// Documents made from a fuzzer's bytes along the schema, mostly as it wants them and now and then not.
#pragma once

#include <string>

#include "byte_source.h"

namespace fuzz {

// A whole document.
std::string makeDocument(ByteSource& source);
// Any JSON value of at most so many levels.
std::string makeValue(ByteSource& source, int depth);

}  // namespace fuzz
