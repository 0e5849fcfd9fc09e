#include "check/schema.h"

#include <rapidjson/pointer.h>

#include <string_view>

#include "records/names.h"

namespace runhost {

namespace {

constexpr char TEXT[] =
#include "config_schema.inc"
    ;

const char* withArticle(std::string_view type) {
    if (type == "integer") return "an integer";
    if (type == "array") return "an array";
    if (type == "object") return "an object";
    if (type == "boolean") return "true or false";
    return type == "number" ? "a number" : "a string";
}

}  // namespace

const char* schemaText() {
    return TEXT;
}

Schema::Schema() {
    m_document.Parse(TEXT);
}

const Schema::Value& Schema::resolve(const Value& node) const {
    const auto reference = node.FindMember("$ref");
    if (reference == node.MemberEnd()) return node;
    const Value* target = rapidjson::Pointer(reference->value.GetString()).Get(m_document);
    return target == nullptr ? node : resolve(*target);
}

bool Schema::typeFits(const std::string& type, const Node& value) {
    switch (value.kind) {
        case Node::Kind::BOOLEAN:
            return type == "boolean";
        case Node::Kind::STRING:
            return type == "string";
        case Node::Kind::ARRAY:
            return type == "array";
        case Node::Kind::OBJECT:
            return type == "object";
        case Node::Kind::NUMBER:
            // A number with a fraction or an exponent is no integer, whatever its value.
            return type == "number" || (type == "integer" && value.text.find_first_of(".eE") == std::string::npos);
        case Node::Kind::NOTHING:
            return false;
    }
    return false;
}

const Schema::Value& Schema::branchFor(const Value& node, const Node& value) const {
    const Value& resolved = resolve(node);
    const auto alternatives = resolved.FindMember("anyOf");
    if (alternatives == resolved.MemberEnd()) return resolved;
    for (const Value& alternative : alternatives->value.GetArray()) {
        const Value& branch = resolve(alternative);
        const std::string type = branch["type"].GetString();
        // Any number is held against the integer, so that a fraction is told as such.
        if (typeFits(type, value) || (type == "integer" && value.kind == Node::Kind::NUMBER)) return branch;
    }
    return resolved;
}

const Schema::Value* Schema::childOf(const Value& parent, const Node& child) const {
    if (child.isElement()) {
        const auto items = parent.FindMember("items");
        return items == parent.MemberEnd() ? nullptr : &items->value;
    }
    const auto properties = parent.FindMember("properties");
    if (properties == parent.MemberEnd()) return nullptr;
    const auto found = properties->value.FindMember(child.name.c_str());
    return found == properties->value.MemberEnd() ? nullptr : &found->value;
}

std::vector<std::string> Schema::memberNames(const Value& node) {
    std::vector<std::string> names;
    if (!listsMembers(node)) return names;
    for (const auto& property : node["properties"].GetObject()) names.emplace_back(property.name.GetString());
    return names;
}

std::string Schema::typeWords(const Value& node) const {
    const auto alternatives = node.FindMember("anyOf");
    if (alternatives == node.MemberEnd()) {
        const bool isOneText = node.HasMember("enum") && node["enum"].Size() == 1;
        return isOneText ? quoteJson(node["enum"][0].GetString()) : withArticle(node["type"].GetString());
    }
    std::string words;
    for (const Value& alternative : alternatives->value.GetArray()) {
        words += (words.empty() ? "" : " or ") + typeWords(resolve(alternative));
    }
    return words;
}

std::string Schema::neutralText(const Value& node, const std::string& pointer) const {
    const Value& resolved = resolve(node);
    if (resolved.HasMember("anyOf")) return neutralText(resolved["anyOf"][0], pointer);
    if (resolved.HasMember("enum")) return quoteJson(resolved["enum"][0].GetString());
    const std::string_view type = resolved["type"].GetString();
    if (type == "boolean") return "false";
    if (type == "integer" || type == "number") return "0";
    if (type == "string") {
        const auto names = valueNames(pointer);
        return quoteJson(names.empty() ? "" : names.front());
    }
    if (type == "array") {
        return resolved.HasMember("minItems") ? "[" + neutralText(resolved["items"], pointer + "/0") + "]" : "[]";
    }
    std::string text;
    if (resolved.HasMember("required")) {
        for (const Value& required : resolved["required"].GetArray()) {
            const std::string name = required.GetString();
            if (!text.empty()) text += ',';
            text += quoteJson(name) + ':';
            std::string memberPointer = pointer;
            memberPointer.append("/").append(name);
            text += neutralText(resolved["properties"][name.c_str()], memberPointer);
        }
    }
    return "{" + text + "}";
}

}  // namespace runhost
