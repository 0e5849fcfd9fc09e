// The time line of votes and the time at each level, as text.
#include <fmt/format.h>

#include <iterator>

#include "records/value_tables.h"
#include "report/reports.h"
#include "report/table.h"

namespace runhost {

namespace {

std::string milliseconds(uint64_t nanoseconds) {
    return fmt::format("{:>9.3f}", static_cast<double>(nanoseconds) / 1e6);
}

TableRow lineRow(const VoteLine& line) {
    TableRow row{milliseconds(line.timeNs), line.stage, line.thread, fmt::format("{}", line.id)};
    if (line.ended) {
        row.insert(row.end(), {"-", "-", "-", "-",
                               line.id == 0 ? "the default client's vote is cancelled" : "the id is destroyed"});
        return row;
    }
    const DecodedVote& vote = line.vote;
    row.push_back(cornersText(vote.bus));
    row.push_back(cornersText(vote.core));
    row.push_back(vote.holdsCorners ? fmt::format("{}", vote.sleepLatencyUs) : "-");
    row.push_back(vote.holdsCorners ? shortName(vote.powerMode) : "-");
    row.push_back(fmt::format("{}", fmt::join(vote.extras, ", ")));
    return row;
}

std::string levelsText(const std::vector<Level>& levels) {
    std::vector<TableRow> rows{{"id", "device", "core", "stood ms", "votes", "what"}};
    for (const Level& level : levels) {
        rows.push_back({fmt::format("{}", level.id), fmt::format("{}", level.deviceId), fmt::format("{}", level.coreId),
                        milliseconds(level.timeNs), fmt::format("{}", level.casts), voteText(level.vote)});
    }
    return formatTable(rows);
}

}  // namespace

std::string votesText(const RunReport& report, const Style& style) {
    std::string text = "\n" + style.paint(Colour::BOLD, "Votes: what the infrastructure was told, in order") + "\n";
    if (!report.backendKeepsLedger) return text + "    this backend keeps no time line\n";
    if (report.votes.empty()) return text + "    none\n";
    std::vector<TableRow> rows{
        {"  when ms", "stage", "thread", "id", "bus", "core", "sleep us", "power mode", "further"}};
    for (const VoteLine& line : report.votes) rows.push_back(lineRow(line));
    text += formatTable(rows);
    text += fmt::format("    runs without a vote: {} of {}\n", report.quietRuns, report.quietRuns + report.votingRuns);
    if (report.levels.empty()) return text;
    text += "\n" + style.paint(Colour::BOLD, "Time at each level") + "\n" + levelsText(report.levels);
    return text;
}

}  // namespace runhost
