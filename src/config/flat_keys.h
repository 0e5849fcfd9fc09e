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

// What follows an element: nothing, a text, or decimal digits with their number. Four bytes, since every node of
// every path holds some.
class IndexElement {
public:
    constexpr IndexElement() = default;
    explicit IndexElement(std::string_view text);
    static constexpr IndexElement ofIndex(uint32_t index) { return IndexElement(static_cast<int32_t>(index)); }

    bool isNone() const noexcept { return m_code == NONE; }
    bool isDigits() const noexcept { return m_code >= 0 || m_code == TOO_LARGE; }
    // The number of an element of digits; std::out_of_range when it is too large for a signed 32-bit number.
    int32_t toIndex() const;

private:
    static constexpr int32_t NONE = -1;
    static constexpr int32_t TEXT = -2;
    static constexpr int32_t TOO_LARGE = -3;

    constexpr explicit IndexElement(int32_t code) : m_code(code) {}

    int32_t m_code = NONE;  // the number itself unless negative
};

// The group that a key of lora_preload_buffer_group names: what stands between the first "lora_preload_buffer_group/"
// of its text and the next '/'. Carried along the path, since the text before it may be long and shared by many keys.
class PreloadGroup {
public:
    // Whether the key has both slashes.
    bool isComplete() const noexcept { return m_state == State::complete; }
    // For a complete one: digits, or else a text that is no index.
    IndexElement group() const noexcept { return m_group; }

    // Goes on with a name and the '/' behind it, or with a key's last name.
    void addNodeName(std::string_view name);
    void addLeafName(std::string_view name);

private:
    enum class State : uint8_t { notFound, awaiting, complete };

    void addText(std::string_view text);

    State m_state = State::notFound;
    IndexElement m_group;
};

struct PathStep;

class KeyElements {
public:
    void addStep(const PathStep& step);

    // The element behind the first one equal to the word; none when there is no such element or nothing behind it.
    IndexElement after(KeyElement element) const noexcept { return m_after[static_cast<size_t>(element)]; }
    bool has(KeyElement element) const noexcept { return m_seen[static_cast<size_t>(element)]; }
    // The key's second element.
    IndexElement second() const noexcept { return m_second; }

private:
    void add(std::string_view element, IndexElement index);

    std::array<IndexElement, 4> m_after;
    IndexElement m_second;
    std::array<bool, 4> m_seen{};
    bool m_hasFirst = false;
};

// A member name as one step of a path, with what the search for words does on it from one state. Names recur from
// item to item, so steps are shared.
struct NameStep {
    std::string_view name;
    uint16_t startState = 0;
    KeyWordSearch search;               // behind the name; found: the words that end within it
    const NameStep* sibling = nullptr;  // the same name from another state
};

// The last step of a path: a member name, or an array index.
struct PathStep {
    static constexpr uint32_t NO_INDEX = 0xFFFFFFFFU;
    const NameStep* name = nullptr;  // for an index a step without text
    uint32_t index = NO_INDEX;

    size_t length() const noexcept;
    void appendReversedTo(std::string& text) const;
};

// The root, or an object or array on the way to a leaf, with what is known of the key's beginning up to it. Text and
// search include the '/' that stands before each child.
struct PathNode {
    const PathNode* parent = nullptr;  // null for the root
    PathStep step;
    KeyWordSearch search;
    KeyElements elements;
    PreloadGroup preloadGroup;
    uint32_t textLength = 0;
};

// Borrows from the list that it stands in.
class FlatKey {
public:
    FlatKey(const PathNode* parent, PathStep step, const JsonValue* value)
        : m_parent(parent), m_name(step.name), m_index(step.index), m_value(value) {}

    std::string text() const;
    size_t length() const noexcept { return m_parent->textLength + step().length(); }
    bool isEmpty() const noexcept { return length() == 0; }
    // The words that stand anywhere in the key.
    KeyWordSet words() const noexcept {
        KeyWordSet words = m_parent->search.found;
        words.add(m_name->search.found);
        return words;
    }
    bool holds(KeyWord word) const noexcept { return words().has(word); }
    // Whether the word is the whole key.
    bool equals(KeyWord word) const noexcept {
        return holds(word) && KEY_WORDS[static_cast<size_t>(word)].size() == length();
    }
    // What follows the first element equal to the word; none for nothing, or no such element.
    IndexElement after(KeyElement element) const;
    // The same, but what follows the first element where no element equals the word.
    IndexElement afterOrSecond(KeyElement element) const;
    PreloadGroup preloadGroup() const;
    // What the key resolves to, null for nothing. Borrowed from the document.
    const JsonValue* value() const noexcept { return m_value; }

private:
    PathStep step() const noexcept { return {m_name, m_index}; }
    KeyElements elements() const;

    const PathNode* m_parent;
    const NameStep* m_name;
    uint32_t m_index;
    const JsonValue* m_value;
};

// A section of the document as a set of keys: those that hold its word, or equal one of its keys. A key may belong to
// several sections.
enum class KeySection : uint8_t { devices, graphs, context, groupContext, memory };

// Borrows from the document that it was made of.
class FlatKeyList {
public:
    auto begin() const noexcept { return m_keys.begin(); }
    auto end() const noexcept { return m_keys.end(); }
    size_t size() const noexcept { return m_keys.size(); }
    const FlatKey& operator[](size_t position) const noexcept { return m_keys[position]; }
    // Positions of the section's keys, in document order.
    const std::vector<uint32_t>& positionsOf(KeySection section) const noexcept {
        return m_sections[static_cast<size_t>(section)];
    }

private:
    friend class KeyCollector;
    std::deque<PathNode> m_nodes;  // deques: keys point into them
    std::deque<NameStep> m_names;
    std::vector<FlatKey> m_keys;
    std::array<std::vector<uint32_t>, 5> m_sections;
};

// Null values, empty objects and empty arrays give no key; nor does a root that is not an object.
FlatKeyList collectKeys(const ConfigDocument& document);

}  // namespace zant::kor
