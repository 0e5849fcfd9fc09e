// The names that documents may use as values, and what a misspelt one may have meant.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace runhost {

// The names that the value at the end of a pointer or of a flat key may be; empty when it may be any text.
std::span<const char* const> valueNames(std::string_view path);

// Insertions, deletions, replacements and swaps of neighbours that turn one into the other; case counts half.
size_t editDistance(std::string_view left, std::string_view right);

// The closest of the names when it is close enough to be meant, else an empty text.
std::string closestName(const std::string& text, const std::vector<std::string>& names);
std::vector<std::string> asVector(std::span<const char* const> names);

// "; did you mean "x"?", or the names themselves when they are few, or nothing.
std::string suggestion(const std::string& text, const std::vector<std::string>& names);

}  // namespace runhost
