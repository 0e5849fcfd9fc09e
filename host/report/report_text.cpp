#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "report/reports.h"

namespace runhost {

namespace {

using Out = std::back_insert_iterator<std::string>;

std::string outcomeMark(Outcome outcome, const Style& style) {
    switch (outcome) {
        case Outcome::OK:
            return style.paint(Colour::GREEN, "ok    ");
        case Outcome::FAILED:
            return style.paint(Colour::RED, "FAILED");
        case Outcome::SKIPPED:
            return style.paint(Colour::DIM, "-     ");
    }
    return {};
}

void writeRecords(const RecordGroup& group, Out out) {
    for (const DecodedRecord& record : group.records) {
        const std::string option = record.option.empty() ? fmt::format("option {}", record.number)
                                                         : fmt::format("{} ({})", record.option, record.number);
        fmt::format_to(out, "        {}: {:<38} {}\n", group.subject, option, record.value);
        fmt::format_to(out, "            {} bytes  {}\n", record.bytes.size(), hexText(record.bytes));
    }
}

size_t longestName(const RunReport& report) {
    size_t longest = 0;
    for (const StageReport& stage : report.stages) {
        for (const CallReport& call : stage.calls) longest = std::max(longest, call.name.size());
    }
    return longest;
}

void writeCall(const CallReport& call, size_t nameWidth, const Style& style, Out out) {
    fmt::format_to(out, "    {:<4}  {:<{}}  {}  {}\n", call.byHost ? "host" : "hook", call.name, nameWidth,
                   outcomeMark(call.outcome, style), call.note);
    for (const RecordGroup& group : call.recordGroups) writeRecords(group, out);
    for (const LogLine& line : call.log) {
        const Colour colour = line.level == ZANT_LOG_LEVEL_ERROR  ? Colour::RED
                              : line.level == ZANT_LOG_LEVEL_WARN ? Colour::YELLOW
                                                                  : Colour::DIM;
        fmt::format_to(out, "        log {:>9.3f} ms  {}  {}\n", static_cast<double>(line.timestampNs) / 1e6,
                       style.paint(colour, fmt::format("{:<7}", levelName(line.level))), line.text);
    }
}

void writeLedger(const std::vector<std::string>& ledger, const Style& style, Out out) {
    for (size_t i = 0; i < ledger.size(); ++i) {
        const std::string& line = ledger[i];
        fmt::format_to(out, "    {:>3}  {}\n", i + 1,
                       line.starts_with("misuse: ") ? style.paint(Colour::RED, line) : line);
    }
}

void writeLedgers(const RunReport& report, const Style& style, Out out) {
    fmt::format_to(out, "\n{}\n", style.paint(Colour::BOLD, "Ledger: every call that the backend received, in order"));
    if (!report.backendKeepsLedger) fmt::format_to(out, "    this backend keeps none\n");
    writeLedger(report.ledger, style, out);
    if (report.memoryLedger.empty()) return;
    fmt::format_to(out, "\n{}\n", style.paint(Colour::BOLD, "Ledger of the RPC client library"));
    writeLedger(report.memoryLedger, style, out);
}

std::string verdict(const RunReport& report, const Style& style) {
    if (report.succeeded) return style.paint(Colour::GREEN, "Every hook succeeded.");
    if (report.misuse.empty()) return style.paint(Colour::RED, "Not every step succeeded: see FAILED above.");
    return style.paint(Colour::RED, "The simulated machine was used wrongly: see \"misuse\" in the ledgers.");
}

}  // namespace

std::string textReport(const RunReport& report, const Style& style) {
    std::string text;
    const Out out = std::back_inserter(text);
    fmt::format_to(out,
                   "One model's life, seen by the host. \"hook\" lines are calls into the extension library,\n"
                   "\"host\" lines are the host's own steps with the backend in between.\n\n"
                   "    library   {}\n    backend   {}\n    document  {}\n    machine   {}\n    runs      {}\n",
                   report.library, report.backend, report.document, report.machine, report.plan);
    const size_t nameWidth = longestName(report);
    for (const StageReport& stage : report.stages) {
        fmt::format_to(out, "\n{}: {}\n", style.paint(Colour::BOLD, stage.title), stage.explanation);
        for (const CallReport& call : stage.calls) writeCall(call, nameWidth, style, out);
    }
    text += votesText(report, style);
    text += memoryText(report, style);
    writeLedgers(report, style, out);
    fmt::format_to(out, "\n{}\n", verdict(report, style));
    return text;
}

}  // namespace runhost
