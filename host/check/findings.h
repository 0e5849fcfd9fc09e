// What a check finds, and how each finding is mended so that the next load shows what it hid.
#pragma once

#include <compare>
#include <cstddef>
#include <string>
#include <vector>

#include "check/located_json.h"

namespace runhost {

enum class Severity { ERROR, WARNING };

// How to get past a fault.
struct Repair {
    enum class Kind { NOTHING, REMOVE, REPLACE, ADD };
    Kind kind = Kind::NOTHING;
    std::string text = {};    // REPLACE, ADD: JSON text
    std::string member = {};  // ADD: its name
};

struct Fault {
    Severity severity;
    Node* node;  // null: the document as a whole
    bool atName = false;
    std::string text = {};
    Repair repair = {};
    bool mayFollow = false;  // could be no more than the consequence of another fault of the same load
};

// As it is shown; ordered by place.
struct Finding {
    size_t offset;
    Severity severity;
    std::string path;
    std::string text;

    auto operator<=>(const Finding&) const = default;
};

inline Finding findingOf(const Fault& fault) {
    if (fault.node == nullptr) return {0, fault.severity, {}, fault.text};
    const size_t offset = fault.atName ? fault.node->nameOffset : fault.node->offset;
    return {offset, fault.severity, pointerTo(*fault.node), fault.text};
}

}  // namespace runhost
