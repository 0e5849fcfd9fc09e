#include "check/mending.h"

#include <algorithm>
#include <string_view>

namespace runhost {

namespace {

struct Section {
    const char* name;
    const char* neutralMember;
    const char* neutralText;
};

constexpr Section SECTIONS[] = {
    {"devices", "device_type", "0"},
    {"graphs", "fp16_relaxed_precision", "0"},
    {"context", "prepare_only", "false"},
};

bool hadLeaf(const Node& node) {
    return node.isScalar() ||
           std::any_of(node.children.begin(), node.children.end(), [](const auto& child) { return hadLeaf(*child); });
}

bool hasLeaf(const Node& node) {
    if (node.removed) return false;
    if (!node.replacement.empty()) return node.replacement != "{}" && node.replacement != "[]";
    return node.isScalar() || !node.added.empty() ||
           std::any_of(node.children.begin(), node.children.end(), [](const auto& child) { return hasLeaf(*child); });
}

std::string neutralItem(const Section& section) {
    return "{" + quoteJson(section.neutralMember) + ":" + section.neutralText + "}";
}

template <typename Act>
void forEachItem(Node& root, Act act) {
    for (const Section& section : SECTIONS) {
        Node* list = root.member(section.name);
        if (list == nullptr || list->kind != Node::Kind::ARRAY) continue;
        for (const auto& item : list->children) act(section, *item);
    }
}

void fillGraphStates(Node& node) {
    if (node.name == "graphState" && !node.children.empty() && !hasLeaf(node)) node.replacement = "[\"init_start\"]";
    for (const auto& child : node.children) fillGraphStates(*child);
}

}  // namespace

bool applyRepair(const Fault& fault) {
    Node* node = fault.node;
    if (node == nullptr || node->isMended()) return false;
    switch (fault.repair.kind) {
        case Repair::Kind::NOTHING:
            return false;
        case Repair::Kind::REMOVE:
            node->removed = node->parent != nullptr;
            return node->removed;
        case Repair::Kind::REPLACE:
            node->replacement = fault.repair.text;
            return true;
        case Repair::Kind::ADD:
            node->added.emplace_back(fault.repair.member, fault.repair.text);
            return true;
    }
    return false;
}

void fillEmptied(Node& root) {
    forEachItem(root, [](const Section& section, Node& item) {
        const bool isReplaced = item.removed || !item.replacement.empty();
        if (hasLeaf(item) || !(isReplaced || hadLeaf(item))) return;
        if (isReplaced || item.kind != Node::Kind::OBJECT) {
            item.removed = false;
            item.replacement = neutralItem(section);
        } else {
            item.added.emplace_back(section.neutralMember, section.neutralText);
        }
    });
    fillGraphStates(root);
}

void findIndexNames(Node& root, std::vector<Fault>& faults) {
    constexpr size_t leastDigits = 10;  // of a number that no 32 bits hold
    if (root.name.size() >= leastDigits && root.name.find_first_not_of("0123456789") == std::string::npos) {
        faults.push_back({Severity::ERROR,
                          &root,
                          true,
                          subjectOf(root) + " is read as an index, and is too large for one",
                          {Repair::Kind::REMOVE}});
    }
    for (const auto& child : root.children) findIndexNames(*child, faults);
}

std::vector<Fault> findLostItems(Node& root) {
    std::vector<Fault> faults;
    forEachItem(root, [&](const Section& section, Node& item) {
        const auto& items = item.parent->children;
        const auto behind = items.begin() + static_cast<std::ptrdiff_t>(item.index) + 1;
        const bool counts = std::any_of(behind, items.end(), [](const auto& other) { return hasLeaf(*other); });
        if (hasLeaf(item) || item.isMended() || !counts) return;
        faults.push_back({Severity::ERROR,
                          &item,
                          false,
                          subjectOf(item) + " holds no value, and the elements behind it are then not found",
                          {Repair::Kind::REPLACE, neutralItem(section)}});
    });
    if (!faults.empty()) return faults;
    forEachItem(root, [&](const Section& section, Node& item) {
        Node* flag = item.member("use_client_context");
        if (section.name != std::string_view("devices") || item.index == 0 || flag == nullptr) return;
        faults.push_back({Severity::ERROR,
                          flag,
                          true,
                          "\"use_client_context\" of a device behind the first is counted as a context, and the "
                          "document's own contexts are then not found",
                          {Repair::Kind::REMOVE}});
    });
    return faults;
}

}  // namespace runhost
