// What the infrastructure takes as a list of records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/power_records.h"

namespace zant::sim {

// Copies the records of a list that ends in a null pointer. Returns what is wrong with it for this id: an empty text
// for a list that may be voted.
std::string takePowerRecords(uint32_t id, const PowerConfigRecord* const* list,
                             std::vector<PowerConfigRecord>& records);
// The same for a list of memory settings, which is only looked at.
std::string checkMemoryRecords(const PowerMemoryRecord* const* list);

}  // namespace zant::sim
