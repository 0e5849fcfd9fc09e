#include "config/config_document.h"

#include <algorithm>
#include <cstddef>
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

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Behind the string that begins at at.
const char* skipString(const char* at, const char* end) {
    for (++at; at != end && *at != '"'; ++at) {
        if (*at == '\\' && at + 1 != end) ++at;
    }
    return at == end ? end : at + 1;
}

// Whether the run of digits from first to last is that of an exponent that is too long.
bool isAbsurdExponent(const char* text, const char* first, const char* last) {
    const char* significant = first;
    while (significant != last && *significant == '0') ++significant;
    if (last - significant <= MAX_EXPONENT_DIGITS) return false;
    if (first != text && (first[-1] == '+' || first[-1] == '-')) --first;
    return first != text && (first[-1] == 'e' || first[-1] == 'E');
}

// Goes through the whole text, since digits in a string are no exponent.
bool hasAbsurdExponent(const char* text, const char* end) {
    for (const char* at = text; at < end;) {
        if (*at == '"') {
            at = skipString(at, end);
        } else if (isDigit(*at)) {
            const char* first = at;
            while (at != end && isDigit(*at)) ++at;
            if (isAbsurdExponent(text, first, at)) return true;
        } else {
            ++at;
        }
    }
    return false;
}

// An exponent that is too long has so many digits that one of every MAX_EXPONENT_DIGITS + 1 characters is one of
// them: of most texts only that many are looked at.
bool mayHaveAbsurdExponent(const char* text, const char* end) {
    constexpr ptrdiff_t stride = MAX_EXPONENT_DIGITS + 1;
    for (const char* at = text + stride - 1; at < end; at += stride) {
        if (!isDigit(*at)) continue;
        const char* first = at;
        while (first != text && isDigit(first[-1])) --first;
        const char* last = at;
        while (last != end && isDigit(*last)) ++last;
        if (isAbsurdExponent(text, first, last)) return true;
        at = std::max(at, last - stride);
    }
    return false;
}

// Passes the parser's events on to the tree, stops it at absurd nesting and counts the scalars.
class TreeBuilder {
public:
    using Ch = char;

    explicit TreeBuilder(JsonTree& tree) : m_tree(tree) {}

    bool Null() { return m_tree.Null(); }
    bool Bool(bool value) { return count() && m_tree.Bool(value); }
    bool Int(int value) { return count() && m_tree.Int(value); }
    bool Uint(unsigned value) { return count() && m_tree.Uint(value); }
    bool Int64(int64_t value) { return count() && m_tree.Int64(value); }
    bool Uint64(uint64_t value) { return count() && m_tree.Uint64(value); }
    bool Double(double value) { return count() && m_tree.Double(value); }
    bool String(const char* text, rapidjson::SizeType length, bool copy) {
        return count() && m_tree.String(text, length, copy);
    }
    bool Key(const char* text, rapidjson::SizeType length, bool copy) { return m_tree.Key(text, length, copy); }
    // The parser's form for numbers kept as text, which is not asked for.
    bool RawNumber(const char* text, rapidjson::SizeType length, bool copy) { return String(text, length, copy); }
    bool StartObject() { return ++m_nesting <= MAX_NESTING && m_tree.StartObject(); }
    bool StartArray() { return ++m_nesting <= MAX_NESTING && m_tree.StartArray(); }
    bool EndObject(rapidjson::SizeType count) {
        --m_nesting;
        return m_tree.EndObject(count);
    }
    bool EndArray(rapidjson::SizeType count) {
        --m_nesting;
        return m_tree.EndArray(count);
    }

    size_t scalarCount() const { return m_scalarCount; }

private:
    bool count() {
        ++m_scalarCount;
        return true;
    }

    JsonTree& m_tree;
    int m_nesting = 0;
    size_t m_scalarCount = 0;
};

}  // namespace

bool ConfigDocument::parse(std::unique_ptr<char[]> text, size_t size) {
    m_text = std::move(text);
    m_size = size;
    m_tree.SetNull();
    if (size > MAX_DOCUMENT_BYTES) return false;
    const char* end = m_text.get() + std::strlen(m_text.get());
    if (mayHaveAbsurdExponent(m_text.get(), end) && hasAbsurdExponent(m_text.get(), end)) return false;
    rapidjson::GenericReader<JsonEncoding, JsonEncoding, ThrowingAllocator> reader;
    rapidjson::GenericInsituStringStream<JsonEncoding> stream(m_text.get());
    const auto build = [&](JsonTree& tree) {
        TreeBuilder builder(tree);
        const bool parsed = !reader.Parse<rapidjson::kParseInsituFlag>(stream, builder).IsError();
        m_scalarCount = builder.scalarCount();
        return parsed;
    };
    m_tree.Populate(build);
    return !reader.HasParseError();
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
