#include "check/message_faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <string_view>

#include "check/message_rows.h"
#include "records/names.h"

namespace runhost {

namespace {

using enum Place;
constexpr Severity ERROR = Severity::ERROR;
constexpr Severity WARNING = Severity::WARNING;

std::optional<std::string> capture(const MessageRow& row, std::string_view text) {
    if (text.size() < row.before.size() + row.after.size()) return std::nullopt;
    if (!text.starts_with(row.before) || !text.ends_with(row.after)) return std::nullopt;
    text.remove_prefix(row.before.size());
    text.remove_suffix(row.after.size());
    return std::string(text);
}

// The sections in the order in which the library reads them.
size_t sectionRank(const std::string& key) {
    constexpr std::string_view sections[] = {"devices", "graphs", "context", "groupContext", "memory"};
    const auto* section = std::find(std::begin(sections), std::end(sections), key.substr(0, key.find('/')));
    return static_cast<size_t>(section - std::begin(sections));
}

// The library prints every number with %d.
bool showsAs(const Node& node, const std::string& shown) {
    const auto value = static_cast<uint32_t>(std::strtoll(node.text.c_str(), nullptr, 10));
    return node.kind == Node::Kind::NUMBER && std::to_string(static_cast<int32_t>(value)) == shown;
}

bool isRefusedName(const Leaf& leaf) {
    const auto names = valueNames(leaf.key);
    return std::none_of(names.begin(), names.end(), [&](const std::string& name) { return leaf.node->string == name; });
}

class Judge {
public:
    explicit Judge(Node& root) : m_root(root), m_leaves(collectLeaves(root)) {
        std::stable_sort(m_leaves.begin(), m_leaves.end(), [](const Leaf& left, const Leaf& right) {
            return sectionRank(left.key) < sectionRank(right.key);
        });
    }

    std::optional<Fault> judge(const LogLine& line) {
        for (const MessageRow& row : messageRows()) {
            const auto captured = capture(row, line.text);
            if (!captured) continue;
            if (row.place == NOWHERE) return std::nullopt;
            if (row.place == FIRST_NAME && isPerfMended()) return std::nullopt;
            Node* node = find(row, *captured);
            // A line about a value that a repair has put in has nothing to tell.
            if (node == nullptr)
                return row.place == BY_KEY || row.place == FIRST_NAME ? std::optional(unplaced(line)) : std::nullopt;
            return faultAt(*node, row);
        }
        return line.level <= ZANT_LOG_LEVEL_WARN ? std::optional(unplaced(line)) : std::nullopt;
    }

private:
    static Fault unplaced(const LogLine& line) {
        return {line.level <= ZANT_LOG_LEVEL_ERROR ? ERROR : WARNING, nullptr, false, line.text};
    }

    static Fault faultAt(Node& node, const MessageRow& row) {
        Fault fault{row.severity, &node};
        const bool isName = row.place == BY_TEXT;
        const std::vector<std::string> names = valueNames(pointerTo(node));
        fault.text = subjectOf(node) + " " + fmt::format(fmt::runtime(row.words), node.text);
        fault.repair = {row.repair, row.repairText};
        fault.mayFollow = row.place == FIRST_NAME;
        if (isName && names.empty()) {
            fault.repair.kind = Repair::Kind::REMOVE;  // a name inside an unknown member
        } else if (isName) {
            fault.text += suggestion(node.string, names);
            const std::string closest = closestName(node.string, names);
            fault.repair.text = quoteJson(closest.empty() ? names.front() : closest);
        }
        return fault;
    }

    // What profile and corners say together is the author's only as long as neither was repaired.
    bool isPerfMended() const {
        const Node* device = firstDevice();
        const Node* cores = device == nullptr ? nullptr : device->member("cores");
        if (cores == nullptr) return false;
        return std::any_of(cores->children.begin(), cores->children.end(), [](const auto& core) {
            return std::any_of(core->children.begin(), core->children.end(), [](const auto& member) {
                return (member->name == "perf_profile" || member->name == "custom") && holdsMending(*member);
            });
        });
    }

    static bool holdsMending(const Node& node) {
        return node.isMended() || !node.added.empty() ||
               std::any_of(node.children.begin(), node.children.end(),
                           [](const auto& child) { return holdsMending(*child); });
    }

    const Node* firstDevice() const {
        const Node* devices = m_root.member("devices");
        return devices == nullptr || devices->children.empty() ? nullptr : devices->children.front().get();
    }

    Node* find(const MessageRow& row, const std::string& captured) {
        std::vector<Node*> candidates;
        for (const Leaf& leaf : m_leaves) {
            if (fits(row, leaf, captured)) candidates.push_back(leaf.node);
        }
        if (candidates.empty() && row.place == FIRST_NAME) return findContainer(row);
        if (candidates.empty() && row.place == BY_KEY) return findBelow(captured);
        if (candidates.empty()) return nullptr;
        if (row.place == FIRST_NAME) return candidates.back();  // of several cores, the last one counts
        // One value may stand several times: its lines come in the order of its places.
        const size_t occurrence = m_occurrences[{row.before, captured}]++;
        return candidates[std::min(occurrence, candidates.size() - 1)];
    }

    // A key that no leaf has can be the start of one.
    Node* findBelow(const std::string& key) const {
        const auto leaf = std::find_if(m_leaves.begin(), m_leaves.end(),
                                       [&](const Leaf& candidate) { return candidate.key.starts_with(key); });
        return leaf == m_leaves.end() ? nullptr : leaf->node;
    }

    // The last core's, as for values.
    Node* findContainer(const MessageRow& row) const {
        const Node* device = firstDevice();
        const Node* cores = device == nullptr ? nullptr : device->member("cores");
        Node* found = nullptr;
        for (size_t i = 0; cores != nullptr && i < cores->children.size(); ++i) {
            Node* member = cores->children[i]->member(std::string(row.word));
            if (member != nullptr) found = member;
        }
        return found;
    }

    static bool fits(const MessageRow& row, const Leaf& leaf, const std::string& captured) {
        const auto holds = [&](std::string_view word) { return leaf.key.find(word) != std::string::npos; };
        switch (row.place) {
            case BY_KEY:
                return leaf.key == captured;
            case BY_TEXT:
                return holds(row.word) && leaf.node->kind == Node::Kind::STRING && leaf.node->string == captured &&
                       isRefusedName(leaf);
            case BY_NUMBER:
                return holds(row.word) && showsAs(*leaf.node, captured);
            case BY_WORD:
                return leaf.node->name == row.word && (row.notWord.empty() || !holds(row.notWord));
            case FIRST_NAME:
                return leaf.key.starts_with("devices/0/") && leaf.node->name == row.word;
            case NOWHERE:
                return false;
        }
        return false;
    }

    Node& m_root;
    std::vector<Leaf> m_leaves;
    std::map<std::pair<std::string_view, std::string>, size_t> m_occurrences;
};

}  // namespace

std::vector<Fault> faultsOfMessages(const std::vector<LogLine>& lines, Node& root) {
    std::vector<Fault> faults;
    Judge judge(root);
    for (const LogLine& line : lines) {
        if (auto fault = judge.judge(line)) faults.push_back(std::move(*fault));
    }
    return faults;
}

bool refusedBySchema(const std::vector<LogLine>& lines, std::string& pointer) {
    constexpr std::string_view before = "Input file does not adhere to schema, error in key: ";
    const auto line = std::find_if(lines.begin(), lines.end(),
                                   [&](const LogLine& candidate) { return candidate.text.starts_with(before); });
    if (line == lines.end()) return false;
    pointer = line->text.substr(before.size());
    return true;
}

}  // namespace runhost
