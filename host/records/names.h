// The names that documents may use as values, and what a misspelt one may have meant.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "records/value_tables.h"

namespace runhost {

std::vector<std::string> namesOf(std::span<const NamedValue> table);

// The names that the value at the end of a pointer or of a flat key may be; empty when it may be any text.
std::vector<std::string> valueNames(std::string_view path);

// Insertions, deletions, replacements and swaps of neighbours that turn one into the other; case counts half.
size_t editDistance(std::string_view left, std::string_view right);

// The closest of the names when it is close enough to be meant, else an empty text.
std::string closestName(const std::string& text, const std::vector<std::string>& names);

// "; did you mean "x"?", or the names themselves when they are few, or nothing.
std::string suggestion(const std::string& text, const std::vector<std::string>& names);

// The number of a perf profile; throws UsageError with a suggestion when no profile has the name.
uint32_t profileNumber(const std::string& name);

}  // namespace runhost
