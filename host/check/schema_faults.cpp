#include "check/schema_faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "records/names.h"

namespace runhost {

namespace {

std::string valueWords(const Node& value) {
    switch (value.kind) {
        case Node::Kind::NOTHING:
            return "null";
        case Node::Kind::STRING:
            return "a string";
        case Node::Kind::ARRAY:
            return "an array";
        case Node::Kind::OBJECT:
            return "an object";
        default:
            return value.text;
    }
}

class Walk {
public:
    Walk(const Schema& schema, std::vector<Fault>& faults) : m_schema(schema), m_faults(faults) {}

    void check(const Schema::Value& schemaNode, Node& value) {
        if (value.isMended()) return;
        const Schema::Value& node = m_schema.branchFor(schemaNode, value);
        const auto type = node.FindMember("type");
        const bool fits = type != node.MemberEnd() && Schema::typeFits(type->value.GetString(), value);
        if (!fits) {
            replace(node, value, fmt::format("must be {}, not {}", m_schema.typeWords(node), valueWords(value)));
            return;
        }
        checkNumber(node, value);
        checkEnum(node, value, schemaNode.HasMember("anyOf") ? m_schema.typeWords(schemaNode) : std::string());
        checkRequired(node, value);
        checkElements(node, value);
        for (const auto& child : value.children) {
            if (const Schema::Value* childSchema = m_schema.childOf(node, *child)) check(*childSchema, *child);
        }
    }

private:
    void add(Node& value, const std::string& words, Repair repair) {
        Fault fault{Severity::ERROR, &value};
        fault.text = subjectOf(value) + " " + words;
        fault.repair = std::move(repair);
        m_faults.push_back(std::move(fault));
    }

    void replace(const Schema::Value& node, Node& value, const std::string& words) {
        // In a list of names the neutral one might stand already.
        const bool isInList = value.isElement() && node.HasMember("enum") && value.parent->children.size() > 1;
        if (isInList) {
            add(value, words, {Repair::Kind::REMOVE});
        } else {
            add(value, words, {Repair::Kind::REPLACE, m_schema.neutralText(node, pointerTo(value))});
        }
    }

    void checkNumber(const Schema::Value& node, Node& value) {
        if (value.kind != Node::Kind::NUMBER) return;
        const double number = std::strtod(value.text.c_str(), nullptr);
        if (node.HasMember("multipleOf") && number != std::trunc(number)) {
            replace(node, value, fmt::format("must be a whole number, not {}", value.text));
        } else if (node.HasMember("minimum") &&
                   (number < node["minimum"].GetDouble() || number > node["maximum"].GetDouble())) {
            replace(node, value,
                    fmt::format("must be from {} to {}, not {}", node["minimum"].GetUint64(),
                                node["maximum"].GetUint64(), value.text));
        } else if (std::string_view(node["type"].GetString()) == "integer" &&
                   std::fabs(number) >= std::ldexp(1.0, 64)) {
            replace(node, value, fmt::format("must be an integer of at most 64 bits, not {}", value.text));
        }
    }

    // alternatives: what else the value may be, in words; empty when nothing.
    void checkEnum(const Schema::Value& node, Node& value, const std::string& alternatives) {
        if (!node.HasMember("enum")) return;
        std::vector<std::string> names;
        for (const Schema::Value& name : node["enum"].GetArray()) names.emplace_back(name.GetString());
        if (std::find(names.begin(), names.end(), value.string) != names.end()) return;
        std::string words = fmt::format("cannot be {}{}", value.text, suggestion(value.string, names));
        if (names.size() == 1) words = fmt::format("must be \"{}\", not {}", names[0], value.text);
        if (!alternatives.empty()) words = fmt::format("must be {}, not {}", alternatives, value.text);
        replace(node, value, words);
    }

    void checkRequired(const Schema::Value& node, Node& value) {
        if (!node.HasMember("required")) return;
        for (const Schema::Value& name : node["required"].GetArray()) {
            const auto hasName = [&](const auto& member) { return name.GetString() == member->name; };
            const auto isAdded = [&](const auto& member) { return name.GetString() == member.first; };
            if (std::any_of(value.children.begin(), value.children.end(), hasName)) continue;
            if (std::any_of(value.added.begin(), value.added.end(), isAdded)) continue;
            add(value, fmt::format("lacks the member \"{}\"", name.GetString()),
                {Repair::Kind::ADD,
                 m_schema.neutralText(node["properties"][name.GetString()], pointerTo(value) + "/" + name.GetString()),
                 name.GetString()});
        }
    }

    void checkElements(const Schema::Value& node, Node& value) {
        if (node.HasMember("minItems") && value.children.empty()) replace(node, value, "must not be empty");
        if (!node.HasMember("uniqueItems")) return;
        for (const auto& element : value.children) {
            const bool repeats = std::any_of(value.children.begin(), value.children.end(), [&](const auto& other) {
                return other->index < element->index && !other->isMended() && other->kind == element->kind &&
                       other->text == element->text;
            });
            if (repeats && !element->isMended()) {
                add(*element, fmt::format("repeats {}", element->text), {Repair::Kind::REMOVE});
            }
        }
    }

    const Schema& m_schema;
    std::vector<Fault>& m_faults;
};

}  // namespace

std::vector<Fault> findSchemaFaults(const Schema& schema, Node& root) {
    std::vector<Fault> faults;
    Walk(schema, faults).check(schema.root(), root);
    return faults;
}

}  // namespace runhost
