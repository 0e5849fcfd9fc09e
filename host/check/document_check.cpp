#include "check/document_check.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <set>
#include <string_view>

#include "check/custom_arrays.h"
#include "check/mending.h"
#include "check/message_faults.h"
#include "check/schema_faults.h"
#include "check/unknown_keys.h"
#include "machine/paths.h"
#include "records/log_capture.h"

namespace runhost {

namespace {

constexpr int MOST_ROUNDS = 200;

struct Load {
    bool accepted = false;
    std::vector<LogLine> lines;

    bool says(std::string_view words) const {
        return std::any_of(lines.begin(), lines.end(),
                           [&](const LogLine& line) { return line.text.find(words) != std::string::npos; });
    }
};

Load load(const ExtensionLibrary& library, const std::string& config) {
    const ExtensionLibrary::Object object = library.create();
    if (object == nullptr) throw std::runtime_error("the extension library could not make its object");
    takeLog();
    object->setupLogging(captureLog, ZANT_LOG_LEVEL_DEBUG);
    const bool accepted = object->loadConfig(config);
    return {accepted, takeLog()};
}

bool isWithin(const Node* node, const Node* ancestor) {
    while (node != nullptr && node != ancestor) node = node->parent;
    return node == ancestor;
}

Fault documentFault(std::string text) {
    return {Severity::ERROR, nullptr, false, std::move(text)};
}

// The host's parser takes numbers of any size; the library's does not.
std::vector<Fault> findAbsurdNumbers(Node& root) {
    constexpr size_t mostDigits = 9;
    std::vector<Fault> faults;
    for (const Leaf& leaf : collectLeaves(root)) {
        if (leaf.node->kind != Node::Kind::NUMBER) continue;
        const std::string& text = leaf.node->text;
        const size_t exponent = text.find_first_of("eE");
        const size_t digits = exponent == std::string::npos ? 0 : text.size() - exponent - 1;
        if (digits <= mostDigits && std::isfinite(std::strtod(text.c_str(), nullptr))) continue;
        faults.push_back({Severity::ERROR,
                          leaf.node,
                          false,
                          subjectOf(*leaf.node) + " is a number beyond all bounds",
                          {Repair::Kind::REPLACE, "0"}});
    }
    if (faults.empty()) faults.push_back(documentFault("the library does not take this text as JSON"));
    return faults;
}

// One document in work.
class Rounds {
public:
    Rounds(const ExtensionLibrary& library, const Schema& schema, Node& root)
        : m_library(library), m_schema(schema), m_root(root), m_unknown(findUnknownKeys(schema, root)) {
        for (const Fault& fault : findMeetingArrays(root)) m_findings.insert(findingOf(fault));
    }

    std::set<Finding> run(const std::string& firstConfig) {
        std::string config = firstConfig;
        for (int round = 0; round < MOST_ROUNDS; ++round) {
            const Load result = load(m_library, config);
            bool repaired = false;
            for (const Fault& fault : judge(result)) {
                m_findings.insert(findingOf(fault));
                repaired = applyRepair(fault) || repaired;
            }
            if (result.accepted || !repaired) break;
            fillEmptied(m_root);
            config = writeJson(m_root);
        }
        for (const Fault& fault : m_unknown) m_findings.insert(findingOf(fault));
        return std::move(m_findings);
    }

private:
    std::vector<Fault> judge(const Load& result) {
        std::string pointer;
        if (result.says("is not valid JSON, check format")) return findAbsurdNumbers(m_root);
        if (refusedBySchema(result.lines, pointer)) {
            std::vector<Fault> faults = findSchemaFaults(m_schema, m_root);
            if (faults.empty()) faults.push_back(documentFault("does not fit the schema at " + pointer));
            return faults;
        }
        std::vector<Fault> faults = faultsOfMessages(result.lines, m_root);
        for (Fault& fault : faults) preferUnknown(fault);
        if (result.accepted) return faults;
        if (result.says("invalid vector subscript")) {
            const std::vector<Fault> lost = findLostItems(m_root);
            faults.insert(faults.end(), lost.begin(), lost.end());
        }
        if (result.says("stoi argument out of range")) findIndexNames(m_root, faults);
        const auto explains = [](const Fault& fault) { return fault.severity == Severity::ERROR && !fault.mayFollow; };
        if (std::none_of(faults.begin(), faults.end(), explains)) addSilentFault(result, faults);
        // Another round shows whether it was a consequence.
        if (std::any_of(faults.begin(), faults.end(), explains)) {
            std::erase_if(faults, [](const Fault& fault) { return fault.mayFollow; });
        }
        return faults;
    }

    // A line about a leaf inside an unknown member is about that member, and the library's word makes it an error.
    void preferUnknown(Fault& fault) {
        if (fault.node == nullptr || fault.repair.kind != Repair::Kind::REMOVE) return;
        for (Fault& unknown : m_unknown) {
            if (!isWithin(fault.node, unknown.node)) continue;
            unknown.severity = fault.severity;
            fault = unknown;
            return;
        }
    }

    // Inside "custom" an unknown member fails the section without a line.
    void addSilentFault(const Load& result, std::vector<Fault>& faults) {
        for (Fault& unknown : m_unknown) {
            if (!failsSilently(*unknown.node)) continue;
            unknown.severity = Severity::ERROR;
            unknown.text += " (the whole section is refused for it)";
            faults.push_back(unknown);
            return;
        }
        // Profile and corners that repairs have parted are not the author's fault.
        if (!faults.empty() || result.says("profile CUSTOM requires") || result.says("specification as CUSTOM")) return;
        constexpr std::string_view before = "Exception occurred while loading backend extensions config: ";
        const auto line = std::find_if(result.lines.begin(), result.lines.end(),
                                       [&](const LogLine& candidate) { return candidate.text.starts_with(before); });
        faults.push_back(documentFault(line == result.lines.end() ? "the library refuses the document without a reason"
                                                                  : line->text));
    }

    static bool failsSilently(const Node& unknown) {
        const std::string pointer = pointerTo(unknown);
        const auto holds = [&](const char* words) { return pointer.find(words) != std::string::npos; };
        if (unknown.isMended() || !pointer.starts_with("/devices/") || !holds("/custom")) return false;
        // In the object form, other members of dcvsControl are passed over unless their names say start or done.
        return !holds("/custom/dcvsControl/") || holds("start") || holds("done");
    }

    const ExtensionLibrary& m_library;
    const Schema& m_schema;
    Node& m_root;
    std::vector<Fault> m_unknown;
    std::set<Finding> m_findings;
};

}  // namespace

std::vector<Finding> DocumentCheck::run(const std::string& path, const std::string& source) const {
    const LocatedDocument document = parseLocated(source);
    if (document.root == nullptr) {
        return {{document.errorOffset, Severity::ERROR, {}, "not valid JSON: " + document.error}};
    }
    const std::set<Finding> findings = Rounds(m_library, m_schema, *document.root).run(configPath(path));
    return {findings.begin(), findings.end()};
}

}  // namespace runhost
