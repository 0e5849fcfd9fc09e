// Names that documents use for numbers that the backend gets.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "zelmar_kor/value_names.h"

namespace runhost {

using NamedValue = ZantNamedValue;

std::span<const NamedValue> perfProfiles();
std::span<const NamedValue> powerModes();
std::span<const NamedValue> corners();
std::span<const NamedValue> expCorners();

// The first name of the number; the number as text when it has none.
std::string nameOf(std::span<const NamedValue> table, uint32_t number);
std::optional<uint32_t> numberOf(std::span<const NamedValue> table, std::string_view name);

// A corner's or a power mode's name as people say it: "TURBO+", "performance". Other names come back whole.
std::string shortName(const std::string& name);

}  // namespace runhost
