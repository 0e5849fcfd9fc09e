#include "text.h"

#include <array>
#include <cstdio>

namespace zant::sim {

std::string hex(uint64_t value) {
    std::array<char, 24> text{};
    const int length = std::snprintf(text.data(), text.size(), "0x%llx", static_cast<unsigned long long>(value));
    return {text.data(), static_cast<size_t>(length)};
}

std::string quoted(const char* text) {
    return text == nullptr ? "null" : "\"" + std::string(text) + "\"";
}

}  // namespace zant::sim
