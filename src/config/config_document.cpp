#include "config/config_document.h"

#include <cstring>
#include <utility>

#include "platform/logger.h"
#include "platform/system.h"

namespace zant::kor {

namespace {

// The parser recurses once for each level of nesting and the host's stack may be small; no real document goes
// beyond a dozen levels.
constexpr int MAX_NESTING = 512;
// The parser keeps an exponent in an int and adds the count of fraction digits to it; nine digits leave room.
constexpr int MAX_EXPONENT_DIGITS = 9;

const char* skipString(const char* at) {
    for (++at; *at != '\0' && *at != '"'; ++at) {
        if (*at == '\\' && at[1] != '\0') ++at;
    }
    return *at == '"' ? at + 1 : at;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// at stands on the first character of a number. Null when the number's exponent is absurd.
const char* skipNumber(const char* at) {
    while (isDigit(*at) || *at == '-' || *at == '+' || *at == '.') ++at;
    if (*at != 'e' && *at != 'E') return at;
    ++at;
    if (*at == '+' || *at == '-') ++at;
    while (*at == '0') ++at;
    const char* first = at;
    while (isDigit(*at)) ++at;
    return at - first > MAX_EXPONENT_DIGITS ? nullptr : at;
}

// Refuses what would overflow the parser, before it sees the text. Both limits read as "not valid JSON".
bool withinParserLimits(const char* at) {
    int nesting = 0;
    while (*at != '\0') {
        const char c = *at;
        if (c == '"') {
            at = skipString(at);
        } else if (isDigit(c) || c == '-') {
            at = skipNumber(at);
            if (at == nullptr) return false;
        } else {
            if (c == '{' || c == '[') {
                if (++nesting > MAX_NESTING) return false;
            } else if (c == '}' || c == ']') {
                --nesting;
            }
            ++at;
        }
    }
    return true;
}

}  // namespace

bool ConfigDocument::parse(std::unique_ptr<char[]> text, size_t size) {
    m_text = std::move(text);
    if (size > MAX_DOCUMENT_BYTES || !withinParserLimits(m_text.get())) {
        m_tree.SetNull();
        return false;
    }
    m_tree.ParseInsitu(m_text.get());
    return !m_tree.HasParseError();
}

bool loadConfigFile(ConfigDocument& document, const std::string& path) {
    system::FileContents contents;
    switch (system::readWholeFile(path.c_str(), MAX_DOCUMENT_BYTES, contents)) {
        case system::ReadFileStatus::cannotOpen:
            ZANT_LOG_ERROR("Cannot open file %s", path.c_str());
            return false;
        case system::ReadFileStatus::noMemory:
            ZANT_LOG_ERROR("Cannot allocate memory for configFileBuffer");
            return false;
        case system::ReadFileStatus::ok:
            break;
    }
    if (!document.parse(std::move(contents.text), contents.size)) {
        ZANT_LOG_ERROR("Input file %s is not valid JSON, check format", path.c_str());
        return false;
    }
    return true;
}

bool loadConfigString(ConfigDocument& document, const std::string& text) {
    if (text.empty()) {
        ZANT_LOG_ERROR("Empty string for parsing");
        return false;
    }
    auto buffer = std::make_unique_for_overwrite<char[]>(text.size() + 1);
    std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
    if (!document.parse(std::move(buffer), text.size())) {
        ZANT_LOG_ERROR("Input string is not valid JSON, check format");
        return false;
    }
    return true;
}

}  // namespace zant::kor
