// The config document: one JSON text, parsed in place. It lives for the length of one load.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "platform/json_types.h"

namespace zant::kor {

class ConfigDocument {
public:
    // Parses size bytes of zero-terminated text, which the document keeps: its strings point into it. Text behind a
    // zero byte is not read. False for a text that is not JSON, with an empty document left.
    bool parse(std::unique_ptr<char[]> text, size_t size);

    const JsonValue& root() const noexcept { return m_tree; }
    // Bytes of the text.
    size_t size() const noexcept { return m_size; }
    // How many booleans, strings and numbers the document holds as values.
    size_t scalarCount() const noexcept { return m_scalarCount; }

private:
    std::unique_ptr<char[]> m_text;
    JsonTree m_tree;
    size_t m_size = 0;
    size_t m_scalarCount = 0;
};

// A document of more bytes is refused: positions and lengths in it need to fit 32 bits with room to spare.
constexpr size_t MAX_DOCUMENT_BYTES = size_t{1} << 30;

// Both log their own failures at level 1 and return false.
bool loadConfigFile(ConfigDocument& document, const std::string& path);
bool loadConfigString(ConfigDocument& document, const std::string& text);

}  // namespace zant::kor
