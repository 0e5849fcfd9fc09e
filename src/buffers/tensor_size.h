#pragma once

#include <cstdint>
#include <optional>

#include "zelmar_kor/memory_records.h"

namespace zant::kor {

// The product of a tensor's dimensions and its element size in bytes; the largest number where 64 bits do not hold it.
// Nothing, after a level 1 line, for a tensor without a shape or of an unknown data type.
std::optional<uint64_t> tensorSize(const ZantTensor& tensor);

// Sum and product that stay at the largest number where they would pass it.
uint64_t addSaturated(uint64_t a, uint64_t b) noexcept;
uint64_t multiplySaturated(uint64_t a, uint64_t b) noexcept;

}  // namespace zant::kor
