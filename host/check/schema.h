// The schema of configuration documents, as the host reads it: to say in words what a value should be.
#pragma once

#include <rapidjson/document.h>

#include <string>
#include <vector>

#include "check/located_json.h"

namespace runhost {

const char* schemaText();

class Schema {
public:
    using Value = rapidjson::Value;

    Schema();

    const Value& root() const { return m_document; }
    // The node itself behind references, and of alternatives the one that fits the value's kind. Without a fitting
    // alternative, the node that lists them.
    const Value& branchFor(const Value& node, const Node& value) const;
    // The schema of a child, or null when the parent's schema does not know it. parent: from branchFor.
    const Value* childOf(const Value& parent, const Node& child) const;

    // Whether the node lists its members at all; one that does not leaves them free.
    static bool listsMembers(const Value& node) { return node.HasMember("properties"); }
    static std::vector<std::string> memberNames(const Value& node);
    // "an integer", "an array or an object".
    std::string typeWords(const Value& node) const;
    static bool typeFits(const std::string& type, const Node& value);

    // The JSON text of a value that the schema and the library take at the pointer and that asks for little.
    std::string neutralText(const Value& node, const std::string& pointer) const;

private:
    const Value& resolve(const Value& node) const;

    rapidjson::Document m_document;
};

}  // namespace runhost
