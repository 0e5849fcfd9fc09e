// The plain reading of a document's keys, word for word and without any shortcut, to hold the library's against.
#pragma once

#include <string>

namespace zant::test {

// The first place where the two readings differ; empty when they agree, and for a text that is no document.
std::string keyDifference(const std::string& config);

}  // namespace zant::test
