// Names of the document and their wire numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "config/flat_keys.h"
#include "config/perf_numbers.h"

namespace zant::kor {

// Marks a value refused at load.
constexpr uint32_t INVALID_OPTION_VALUE = 0x7FFFFFFFU;

// The number, or INVALID_OPTION_VALUE after a level 1 line that names what was not found.
uint32_t lookupVoltageCorner(const std::string& name);
uint32_t lookupExpVoltageCorner(const std::string& name);
uint32_t lookupPowerMode(const std::string& name);
// Nothing after a level 1 line.
std::optional<uint32_t> lookupGraphState(const std::string& name);

// The value itself up to 255, else INVALID_OPTION_VALUE after a level 1 line.
uint32_t checkClockPerfMode(uint32_t value);

// Reads a profile name. An unknown one costs a level 1 line and counts as high_performance.
void parsePerfProfile(const FlatKey& key, uint32_t& profile);

}  // namespace zant::kor
