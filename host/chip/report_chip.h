// What is known of a chip, as text or as one JSON document.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "report/style.h"

namespace runhost {

struct ToldFact {
    std::string list;
    uint32_t record;
    std::string name;
    std::string value;
    std::string origin;
};

std::string chipText(const std::vector<ToldFact>& facts, const Style& style);
std::string chipJson(const std::vector<ToldFact>& facts);

}  // namespace runhost
