// Everything that is wrong in one document, found by loading it again and again with each fault repaired.
#pragma once

#include <string>
#include <vector>

#include "check/findings.h"
#include "check/schema.h"
#include "machine/modules.h"

namespace runhost {

class DocumentCheck {
public:
    // The library is asked once for each round, with an object of its own. It has to outlive the check.
    explicit DocumentCheck(const ExtensionLibrary& library) : m_library(library) {}

    // path: what the library loads first; source: the same file's text. Sorted by place, each finding once.
    std::vector<Finding> run(const std::string& path, const std::string& source) const;

private:
    const ExtensionLibrary& m_library;
    Schema m_schema;
};

}  // namespace runhost
