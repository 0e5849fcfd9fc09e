// Flat keys: the slash-separated paths of a document's leaves (booleans, strings, numbers), in document order.
//
// A key's text is its only meaning: a value is reached by reading the text as a JSON pointer from the root. The
// list keeps beside each key what that reading gives, found during the walk at the cost of the member's own name.
// It is the value itself, except for the first of duplicate names (which the pointer reaches), for names that hold
// '/' or '~' (which the pointer reads as separators and escapes), and for a path that begins with an empty name
// (whose slash the pointer takes for its own).
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "config/config_document.h"
#include "config/key_words.h"

namespace zant::kor {

// Elements of the key, cut at each '/' with empty pieces dropped, whose follower the sections want to know.
enum class KeyElement : uint8_t { devices, graphs, context, custom };

// What follows an element: nothing, a text, or decimal digits with their number.
struct IndexElement {
    enum class Kind : uint8_t { none, text, digits, tooLarge };
    Kind kind = Kind::none;
    int32_t number = 0;  // for digits

    // The number of an element of digits; std::out_of_range when it is too large for a signed 32-bit number.
    int32_t toIndex() const;
    bool isDigits() const noexcept { return kind == Kind::digits || kind == Kind::tooLarge; }
};

class KeyElements {
public:
    // Adds the elements of one name or index.
    void addName(std::string_view name);
    void addIndex(uint32_t index);

    // The element behind the first one equal to the word; kind none when no such element or nothing behind it.
    IndexElement after(KeyElement element) const noexcept { return m_follow[static_cast<size_t>(element)].element; }
    bool has(KeyElement element) const noexcept { return m_follow[static_cast<size_t>(element)].seen; }
    // The key's second element.
    IndexElement second() const noexcept { return m_second; }

private:
    void add(std::string_view element, IndexElement index);

    struct Follow {
        bool seen = false;
        IndexElement element;
    };
    uint32_t m_count = 0;
    IndexElement m_second;
    std::array<Follow, 4> m_follow;
};

// One element of the path as the document has it: a member name, or an array index.
struct PathStep {
    static constexpr uint32_t NO_INDEX = 0xFFFFFFFFU;
    std::string_view name;
    uint32_t index = NO_INDEX;
};

// An object or array on the way to a leaf, with what is known of the key's beginning up to it.
struct PathNode {
    const PathNode* parent = nullptr;
    PathStep step;
    size_t textLength = 0;
    KeyWordSearch search;
    KeyElements elements;
};

class FlatKey {
public:
    FlatKey(const PathNode* parent, PathStep step, size_t textLength, const KeyWordSet& words, const JsonValue* value)
        : m_parent(parent), m_step(step), m_textLength(textLength), m_words(words), m_value(value) {}

    // A key given as text; value is what findValue gives for it. The text is borrowed.
    FlatKey(std::string_view text, const JsonValue* value);

    std::string text() const;
    bool isEmpty() const noexcept { return m_textLength == 0; }
    // Whether the word stands anywhere in the key, and whether it is the whole key.
    bool holds(KeyWord word) const noexcept { return m_words.has(word); }
    bool equals(KeyWord word) const noexcept {
        return holds(word) && KEY_WORDS[static_cast<size_t>(word)].size() == m_textLength;
    }
    // What follows the first element equal to the word; kind none for nothing, or no such element.
    IndexElement after(KeyElement element) const;
    // The same, but what follows the first element where no element equals the word.
    IndexElement afterOrSecond(KeyElement element) const;
    // What the key resolves to, null for nothing. Borrowed from the document.
    const JsonValue* value() const noexcept { return m_value; }

private:
    KeyElements elements() const;

    const PathNode* m_parent;
    PathStep m_step;
    size_t m_textLength;
    KeyWordSet m_words;
    const JsonValue* m_value;
};

// Borrows from the document that it was made of.
class FlatKeyList {
public:
    const std::vector<FlatKey>& keys() const noexcept { return m_keys; }
    auto begin() const noexcept { return m_keys.begin(); }
    auto end() const noexcept { return m_keys.end(); }
    size_t size() const noexcept { return m_keys.size(); }

private:
    friend class KeyCollector;
    std::deque<PathNode> m_nodes;  // a deque: keys point into it
    std::vector<FlatKey> m_keys;
};

// Null values, empty objects and empty arrays give no key; nor does a root that is not an object.
FlatKeyList collectKeys(const ConfigDocument& document);

}  // namespace zant::kor
