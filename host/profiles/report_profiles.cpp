#include "profiles/report_profiles.h"

#include <fmt/format.h>

#include <algorithm>

#include "report/json_writing.h"
#include "report/table.h"

namespace runhost {

namespace {

std::string spanText(const CornerNames& corners) {
    const std::string least = shortName(corners.min);
    return corners.min == corners.max ? least : least + "-" + shortName(corners.max);
}

// Numbers votes in the order in which they are first seen.
class Legend {
public:
    std::string cell(const DecodedVote& vote) {
        auto found = std::find(m_votes.begin(), m_votes.end(), vote);
        if (found == m_votes.end()) found = m_votes.insert(m_votes.end(), vote);
        const auto number = found - m_votes.begin() + 1;
        if (!vote.holdsCorners) return fmt::format("setting #{}", number);
        const std::string bus = spanText(vote.bus);
        const std::string core = spanText(vote.core);
        return fmt::format("{}{} #{}", bus, bus == core ? "" : "|" + core, number);
    }

    std::string text() const {
        std::string text;
        for (size_t i = 0; i < m_votes.size(); ++i) {
            text += fmt::format("    {:>4}  {}\n", fmt::format("#{}", i + 1), voteText(m_votes[i]));
        }
        return text;
    }

private:
    std::vector<DecodedVote> m_votes;
};

std::string eventCell(const EventVotes& event, Legend& legend) {
    if (!event.errors.empty()) return "refused";
    if (event.votes.empty()) return "-";
    std::vector<std::string> cells;
    for (const DecodedVote& vote : event.votes) cells.push_back(legend.cell(vote));
    return fmt::format("{}", fmt::join(cells, ", "));
}

}  // namespace

std::string profileTable(const std::vector<ProfileVotes>& profiles, const Style& style) {
    Legend legend;
    TableRow stages{"profile"};
    TableRow moments{""};
    for (const LifeEvent& event : LIFE_EVENTS) {
        stages.emplace_back(event.stage);
        moments.emplace_back(event.moment);
    }
    std::vector<TableRow> rows{stages, moments};
    std::vector<std::string> errors;
    for (const ProfileVotes& profile : profiles) {
        TableRow row{profile.profile.name};
        for (const EventVotes& event : profile.events) {
            row.push_back(eventCell(event, legend));
            if (!event.errors.empty()) errors.push_back(event.errors.front());
        }
        rows.push_back(row);
    }
    std::string text = style.paint(Colour::BOLD, "Votes of each perf profile: corners of bus|core") + "\n";
    text += formatTable(rows) + "\n" + style.paint(Colour::BOLD, "The votes") + "\n" + legend.text();
    errors.erase(std::unique(errors.begin(), errors.end()), errors.end());
    for (const std::string& error : errors) text += style.paint(Colour::RED, "    refused: " + error) + "\n";
    return text + "\n\"custom\" votes what a document says for each stage: see \"runhost run\".\n";
}

std::string profileDetail(const ProfileVotes& profile, const Style& style) {
    std::vector<TableRow> rows{{"event", "", "by", "bus", "core", "sleep us", "power mode", "further"}};
    for (size_t i = 0; i < LIFE_EVENTS.size(); ++i) {
        const LifeEvent& event = LIFE_EVENTS[i];
        const auto add = [&](const std::string& bus, const std::string& core, const std::string& sleep,
                             const std::string& mode, const std::string& further) {
            rows.push_back({event.stage, event.moment, event.cause, bus, core, sleep, mode, further});
        };
        const EventVotes& votes = profile.events[i];
        if (votes.votes.empty()) add("-", "-", "-", "-", votes.errors.empty() ? "no vote" : votes.errors.front());
        for (const DecodedVote& vote : votes.votes) {
            add(cornersText(vote.bus), cornersText(vote.core),
                vote.holdsCorners ? fmt::format("{}", vote.sleepLatencyUs) : "-",
                vote.holdsCorners ? shortName(vote.powerMode) : "-", fmt::format("{}", fmt::join(vote.extras, ", ")));
        }
    }
    return style.paint(Colour::BOLD, fmt::format("{} ({})", profile.profile.name, profile.profile.number)) + "\n" +
           formatTable(rows);
}

std::string profilesJson(const std::vector<ProfileVotes>& profiles, const std::string& machine) {
    rapidjson::StringBuffer buffer;
    JsonWriter writer(buffer);
    writer.StartObject();
    writeText(writer, "machine", machine);
    writeArray(writer, "profiles", profiles, [&](const ProfileVotes& profile) {
        writer.StartObject();
        writeText(writer, "name", profile.profile.name);
        writeNumber(writer, "number", profile.profile.number);
        writer.Key("events");
        writer.StartArray();
        for (size_t i = 0; i < LIFE_EVENTS.size(); ++i) {
            writer.StartObject();
            writeText(writer, "stage", LIFE_EVENTS[i].stage);
            writeText(writer, "moment", LIFE_EVENTS[i].moment);
            writeText(writer, "cause", LIFE_EVENTS[i].cause);
            writeArray(writer, "votes", profile.events[i].votes, [&](const DecodedVote& vote) {
                writer.StartObject();
                writeVote(writer, vote);
                writer.EndObject();
            });
            writeArray(writer, "errors", profile.events[i].errors,
                       [&](const std::string& error) { writeText(writer, error); });
            writer.EndObject();
        }
        writer.EndArray();
        writer.EndObject();
    });
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + "\n";
}

}  // namespace runhost
