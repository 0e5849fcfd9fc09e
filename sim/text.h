// Numbers and names as the ledgers write them.
#pragma once

#include <cstdint>
#include <string>

namespace zant::sim {

std::string hex(uint64_t value);
// "null" for a null pointer.
std::string quoted(const char* text);

}  // namespace zant::sim
