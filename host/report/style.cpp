#include "report/style.h"

#include <cstdlib>

#include "machine/platform.h"

namespace runhost {

Style::Style(std::FILE* stream) {
    const char* refusal = std::getenv("NO_COLOR");
    m_enabled = (refusal == nullptr || *refusal == '\0') && platform::isTerminal(stream);
}

std::string Style::paint(Colour colour, const std::string& text) const {
    constexpr const char* codes[] = {"31", "33", "32", "1", "2"};
    if (!m_enabled) return text;
    return std::string("\033[") + codes[static_cast<size_t>(colour)] + "m" + text + "\033[0m";
}

}  // namespace runhost
