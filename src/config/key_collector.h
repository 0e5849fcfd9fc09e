// The walk that makes a document's flat keys.
#pragma once

#include <charconv>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "config/flat_keys.h"

namespace zant::kor {

// The decimal text of an array index.
class IndexText {
public:
    explicit IndexText(uint32_t index) : m_end(std::to_chars(m_digits, m_digits + sizeof(m_digits), index).ptr) {}
    std::string_view view() const { return {m_digits, static_cast<size_t>(m_end - m_digits)}; }

private:
    char m_digits[10];
    char* m_end;
};

// Finds the first member of a name. Large objects are indexed once, so that a document with many members, or many
// duplicates, stays linear.
class MemberIndex {
public:
    const JsonValue* find(const JsonValue& object, std::string_view name);

private:
    using Members = std::unordered_map<std::string_view, const JsonValue*>;

    std::unordered_map<const JsonValue*, Members> m_objects;
};

// A distinct member name of the document.
struct MemberName {
    std::string_view text;
    bool isPlain = true;             // one pointer token as it stands
    uint64_t lastObject = 0;         // serial number of the object that it was last seen in
    MemberName* follower = nullptr;  // the name that came next when it was last seen
    const NameStep* steps = nullptr;
};

// The document's distinct names. Items of an array mostly have the same members in the same order, so the name that
// followed the last one before is tried first.
class MemberNames {
public:
    MemberName& find(std::string_view text);

private:
    std::deque<MemberName> m_names;
    std::unordered_map<std::string_view, MemberName*> m_byText;
    MemberName* m_previous = nullptr;
};

// Walks the tree once. Beside each value goes what the pointer of its path reaches, null for nothing.
class KeyCollector {
public:
    KeyCollector(const ConfigDocument& document, FlatKeyList& list) : m_root(document.root()), m_list(list) {
        list.m_keys.reserve(document.scalarCount());
    }

    void collect();

private:
    void walkMembers(const JsonValue& object, const JsonValue* reached, const PathNode& node);
    void walkElements(const JsonValue& array, const JsonValue* reached, const PathNode& node);
    void visit(const JsonValue& value, const JsonValue* reached, const PathNode& parent, PathStep step);
    void addKey(const JsonValue* reached, const PathNode& parent, PathStep step);
    const PathNode& addNode(const PathNode& parent, PathStep step);
    bool lookUpNames(const JsonValue& object);
    const NameStep& stepOf(MemberName& name, uint16_t state);
    const JsonValue* reachName(const JsonValue* from, std::string_view name, bool atRoot);
    const JsonValue* reachToken(const JsonValue* from, std::string_view token);

    const JsonValue& m_root;
    FlatKeyList& m_list;
    MemberNames m_names;
    MemberIndex m_members;
    std::vector<MemberName*> m_openNames;  // names of the objects on the way to the current value
    uint64_t m_objects = 0;
};

}  // namespace zant::kor
