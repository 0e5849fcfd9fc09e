#include "check/unknown_keys.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "records/names.h"

namespace runhost {

namespace {

// What the library reads although the schema does not list it: a member, and the array or object that may hold it.
struct ReadBesides {
    std::string_view member;
    std::string_view container;
    bool inElement;
};

constexpr ReadBesides READ_BESIDES[] = {
    {"enable_predication", "graphs", true},
    {"druControl", "custom", false},
};

bool isReadBesides(const Node& member) {
    const Node& parent = *member.parent;
    const std::string& container = parent.isElement() ? parent.parent->name : parent.name;
    return std::any_of(std::begin(READ_BESIDES), std::end(READ_BESIDES), [&](const ReadBesides& row) {
        return row.member == member.name && row.container == container && row.inElement == parent.isElement();
    });
}

std::string containerWords(const Node& parent) {
    if (parent.isElement()) return fmt::format("an element of {}", subjectOf(*parent.parent));
    return subjectOf(parent);
}

class Walk {
public:
    Walk(const Schema& schema, std::vector<Fault>& faults) : m_schema(schema), m_faults(faults) {}

    void visit(const Schema::Value& schemaNode, Node& value) {
        const Schema::Value& node = m_schema.branchFor(schemaNode, value);
        for (const auto& child : value.children) {
            checkRepetition(value, *child);
            if (const Schema::Value* childSchema = m_schema.childOf(node, *child)) {
                visit(*childSchema, *child);
            } else if (value.kind == Node::Kind::OBJECT && Schema::listsMembers(node) && !isReadBesides(*child)) {
                add(*child, fmt::format("\"{}\" is not a key of {}{}", child->name, containerWords(value),
                                        meant(child->name, Schema::memberNames(node))));
            }
        }
    }

private:
    void add(Node& member, std::string text) {
        Fault fault{Severity::WARNING, &member, true, std::move(text)};
        fault.repair.kind = Repair::Kind::REMOVE;
        m_faults.push_back(std::move(fault));
    }

    static std::string meant(const std::string& name, const std::vector<std::string>& names) {
        const std::string closest = closestName(name, names);
        return closest.empty() ? std::string() : fmt::format("; did you mean \"{}\"?", closest);
    }

    void checkRepetition(const Node& parent, Node& member) {
        if (member.isElement()) return;
        const auto first = std::find_if(parent.children.begin(), parent.children.end(),
                                        [&](const auto& other) { return other->name == member.name; });
        if (first->get() != &member) {
            add(member, fmt::format("\"{}\" stands here a second time: the first one counts", member.name));
        }
    }

    const Schema& m_schema;
    std::vector<Fault>& m_faults;
};

}  // namespace

std::vector<Fault> findUnknownKeys(const Schema& schema, Node& root) {
    std::vector<Fault> faults;
    Walk(schema, faults).visit(schema.root(), root);
    return faults;
}

}  // namespace runhost
