// A JSON document as a tree that remembers where each value stands in the file and can be mended piece by piece.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace runhost {

struct Position {
    size_t line;    // from 1
    size_t column;  // from 1, in characters
};

Position positionOf(const std::string& source, size_t offset);

struct Node {
    enum class Kind { NOTHING, BOOLEAN, NUMBER, STRING, ARRAY, OBJECT };

    Kind kind = Kind::NOTHING;
    size_t offset = 0;      // of the value's first byte
    size_t nameOffset = 0;  // of the member name's quote; the value's offset for an array element
    std::string name;       // of an object member
    size_t index = 0;       // in the parent, as the file has it
    std::string text;       // a scalar as written
    std::string string;     // a string's value
    Node* parent = nullptr;
    std::vector<std::unique_ptr<Node>> children;

    // Mending. A removed node is not written; one with a replacement is written as that JSON text.
    bool removed = false;
    std::string replacement;
    std::vector<std::pair<std::string, std::string>> added;  // members that an object lacked: name and JSON text

    bool isScalar() const { return kind == Kind::BOOLEAN || kind == Kind::NUMBER || kind == Kind::STRING; }
    bool isMended() const { return removed || !replacement.empty(); }
    bool isElement() const { return parent != nullptr && parent->kind == Kind::ARRAY; }
    // The first child of that name that is not mended; null when there is none.
    Node* member(const std::string& memberName) const;
};

// JSON pointer to the node, with the file's own indexes.
std::string pointerTo(const Node& node);
// "the document", "\"name\"" or "element 2 of \"name\"".
std::string subjectOf(const Node& node);

// The document as JSON text, with all mending.
std::string writeJson(const Node& root);
std::string quoteJson(const std::string& text);

struct Leaf {
    std::string key;  // names and indexes with '/' between, as the mended document has them
    Node* node;
};

// Boolean, string and number leaves that are not mended, in document order.
std::vector<Leaf> collectLeaves(Node& root);

// A tree, or null with the place and the reason of the first syntax error.
struct LocatedDocument {
    std::unique_ptr<Node> root;
    size_t errorOffset = 0;
    std::string error;
};

LocatedDocument parseLocated(const std::string& source);

}  // namespace runhost
