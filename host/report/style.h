// Colours for a terminal, nothing anywhere else.
#pragma once

#include <cstdio>
#include <string>

namespace runhost {

enum class Colour { RED, YELLOW, GREEN, BOLD, DIM };

class Style {
public:
    // Colours only when the stream is a terminal and NO_COLOR is not set.
    explicit Style(std::FILE* stream);

    std::string paint(Colour colour, const std::string& text) const;

private:
    bool m_enabled;
};

}  // namespace runhost
