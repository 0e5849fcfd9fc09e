#include "config/flat_keys.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <unordered_map>

namespace zant::kor {

namespace {

constexpr std::array<std::string_view, 4> FOLLOWED = {"devices", "graphs", "context", "custom"};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

IndexElement readElement(std::string_view text) {
    IndexElement element{IndexElement::Kind::digits, 0};
    int64_t number = 0;
    for (const char c : text) {
        if (!isDigit(c)) return {IndexElement::Kind::text, 0};
        if (number <= INT32_MAX) number = number * 10 + (c - '0');
    }
    if (number > INT32_MAX) return {IndexElement::Kind::tooLarge, 0};
    element.number = static_cast<int32_t>(number);
    return element;
}

// The decimal text of an array index.
class IndexText {
public:
    explicit IndexText(uint32_t index) : m_end(std::to_chars(m_digits, m_digits + sizeof(m_digits), index).ptr) {}
    std::string_view view() const { return {m_digits, static_cast<size_t>(m_end - m_digits)}; }

private:
    char m_digits[10];
    char* m_end;
};

// Calls use with the text of one step of the path.
template <class Use>
void withStepText(const PathStep& step, Use use) {
    if (step.index == PathStep::NO_INDEX) {
        use(step.name);
    } else {
        use(IndexText(step.index).view());
    }
}

size_t stepLength(const PathStep& step) {
    size_t length = 0;
    withStepText(step, [&](std::string_view text) { length = text.size(); });
    return length;
}

void addStep(KeyElements& elements, const PathStep& step) {
    if (step.index == PathStep::NO_INDEX) {
        elements.addName(step.name);
    } else {
        elements.addIndex(step.index);
    }
}

// Finds the first member of a name. Large objects are indexed once, so that a document with many members, or many
// duplicates, stays linear.
class MemberIndex {
public:
    const JsonValue* find(const JsonValue& object, std::string_view name) {
        if (object.MemberCount() > LINEAR_LIMIT) return findIndexed(object, name);
        for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
            if (textOf(member->name) == name) return &member->value;
        }
        return nullptr;
    }

private:
    static constexpr rapidjson::SizeType LINEAR_LIMIT = 48;
    using Members = std::unordered_map<std::string_view, const JsonValue*>;

    const JsonValue* findIndexed(const JsonValue& object, std::string_view name) {
        auto [entry, isNew] = m_objects.try_emplace(&object);
        Members& members = entry->second;
        if (isNew) {
            members.reserve(object.MemberCount());
            for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
                members.try_emplace(textOf(member->name), &member->value);
            }
        }
        const auto found = members.find(name);
        return found == members.end() ? nullptr : found->second;
    }

    std::unordered_map<const JsonValue*, Members> m_objects;
};

// A pointer token as an array index: decimal digits without leading zeros.
bool readPointerIndex(std::string_view token, rapidjson::SizeType& index) {
    if (token.empty() || (token.size() > 1 && token.front() == '0')) return false;
    const auto result = std::from_chars(token.data(), token.data() + token.size(), index);
    return result.ec == std::errc() && result.ptr == token.data() + token.size() && isDigit(token.front());
}

// "~0" and "~1" stand for '~' and '/'; any other use of '~' makes the whole pointer invalid.
bool unescapeToken(std::string_view token, std::string& text) {
    text.clear();
    for (size_t i = 0; i < token.size(); ++i) {
        if (token[i] != '~') {
            text.push_back(token[i]);
            continue;
        }
        if (++i == token.size() || (token[i] != '0' && token[i] != '1')) return false;
        text.push_back(token[i] == '0' ? '~' : '/');
    }
    return true;
}

}  // namespace

int32_t IndexElement::toIndex() const {
    if (kind == Kind::tooLarge) throw std::out_of_range("stoi argument out of range");
    return number;
}

void KeyElements::add(std::string_view element, IndexElement index) {
    for (size_t i = 0; i < FOLLOWED.size(); ++i) {
        Follow& follow = m_follow[i];
        if (follow.seen) {
            if (follow.element.kind == IndexElement::Kind::none) follow.element = index;
        } else {
            follow.seen = element == FOLLOWED[i];
        }
    }
    if (++m_count == 2) m_second = index;
}

void KeyElements::addName(std::string_view name) {
    while (!name.empty()) {
        const size_t slash = std::min(name.find('/'), name.size());
        const std::string_view element = name.substr(0, slash);
        if (!element.empty()) add(element, readElement(element));
        name.remove_prefix(std::min(slash + 1, name.size()));
    }
}

void KeyElements::addIndex(uint32_t index) {
    add({}, {IndexElement::Kind::digits, static_cast<int32_t>(index)});
}

FlatKey::FlatKey(std::string_view text, const JsonValue* value)
    : m_parent(nullptr), m_step{text}, m_textLength(text.size()), m_value(value) {
    KeyWordSearch search;
    search.feed(text);
    m_words = search.found();
}

std::string FlatKey::text() const {
    std::string text(m_textLength, '\0');
    size_t end = m_textLength;
    const auto putBefore = [&](std::string_view piece) {
        end -= piece.size();
        piece.copy(text.data() + end, piece.size());
    };
    withStepText(m_step, putBefore);
    for (const PathNode* node = m_parent; node != nullptr; node = node->parent) {
        putBefore("/");
        withStepText(node->step, putBefore);
    }
    return text;
}

KeyElements FlatKey::elements() const {
    KeyElements elements = m_parent == nullptr ? KeyElements() : m_parent->elements;
    addStep(elements, m_step);
    return elements;
}

IndexElement FlatKey::after(KeyElement element) const {
    // Mostly the answer lies in the part of the path that the key shares with its neighbours.
    if (m_parent != nullptr) {
        const IndexElement known = m_parent->elements.after(element);
        if (known.kind != IndexElement::Kind::none) return known;
    }
    return elements().after(element);
}

IndexElement FlatKey::afterOrSecond(KeyElement element) const {
    const IndexElement known = after(element);
    if (known.kind != IndexElement::Kind::none) return known;
    const KeyElements all = elements();
    return all.has(element) ? known : all.second();
}

// Walks the tree once. Beside each value goes what the pointer of its path reaches, null for nothing.
class KeyCollector {
public:
    KeyCollector(const JsonValue& root, FlatKeyList& list) : m_root(root), m_list(list) {}

    void collect() {
        if (m_root.IsObject()) walkMembers(m_root, &m_root, nullptr);
    }

private:
    void walkMembers(const JsonValue& object, const JsonValue* reached, const PathNode* node) {
        for (auto member = object.MemberBegin(); member != object.MemberEnd(); ++member) {
            const std::string_view name = textOf(member->name);
            visit(member->value, reachName(reached, name, node == nullptr), node, {name, PathStep::NO_INDEX});
        }
    }

    void walkElements(const JsonValue& array, const JsonValue* reached, const PathNode* node) {
        for (rapidjson::SizeType i = 0; i < array.Size(); ++i) {
            const JsonValue* element = &array[i];
            if (reached != &array) element = reachToken(reached, IndexText(i).view());
            visit(array[i], element, node, {{}, i});
        }
    }

    void visit(const JsonValue& value, const JsonValue* reached, const PathNode* parent, const PathStep& step) {
        if (value.IsObject() ? value.ObjectEmpty() : value.IsArray() ? value.Empty() : value.IsNull()) return;
        KeyWordSearch search = parent == nullptr ? KeyWordSearch() : parent->search;
        withStepText(step, [&](std::string_view text) { search.feed(text); });
        const size_t length = (parent == nullptr ? 0 : parent->textLength) + stepLength(step);
        if (value.IsObject() || value.IsArray()) {
            const PathNode* node = addNode(parent, step, length, search);
            if (value.IsObject()) {
                walkMembers(value, reached, node);
            } else {
                walkElements(value, reached, node);
            }
        } else {
            // The empty text is no pointer to anything that a key may mean.
            m_list.m_keys.emplace_back(parent, step, length, search.found(), length == 0 ? nullptr : reached);
        }
    }

    // The node's text and search include the '/' that stands before each of its children.
    const PathNode* addNode(const PathNode* parent, const PathStep& step, size_t length, const KeyWordSearch& search) {
        PathNode& node = m_list.m_nodes.emplace_back();
        node.parent = parent;
        node.step = step;
        node.textLength = length + 1;
        node.search = search;
        node.search.feed("/");
        if (parent != nullptr) node.elements = parent->elements;
        addStep(node.elements, step);
        return &node;
    }

    const JsonValue* reachName(const JsonValue* from, std::string_view name, bool atRoot) {
        if (atRoot && name.empty()) return &m_root;  // children bring the only slash
        if (name.find_first_of("/~") == std::string_view::npos) return reachToken(from, name);
        if (atRoot && name.front() == '/') name.remove_prefix(1);  // this slash is the pointer's own
        while (true) {
            const size_t slash = std::min(name.find('/'), name.size());
            std::string token;
            if (!unescapeToken(name.substr(0, slash), token)) return nullptr;
            from = reachToken(from, token);
            if (slash == name.size()) return from;
            name.remove_prefix(slash + 1);
        }
    }

    const JsonValue* reachToken(const JsonValue* from, std::string_view token) {
        if (from == nullptr) return nullptr;
        if (from->IsObject()) return m_members.find(*from, token);
        rapidjson::SizeType index = 0;
        if (!from->IsArray() || !readPointerIndex(token, index) || index >= from->Size()) return nullptr;
        return &(*from)[index];
    }

    const JsonValue& m_root;
    FlatKeyList& m_list;
    MemberIndex m_members;
};

FlatKeyList collectKeys(const ConfigDocument& document) {
    FlatKeyList list;
    KeyCollector(document.root(), list).collect();
    return list;
}

}  // namespace zant::kor
