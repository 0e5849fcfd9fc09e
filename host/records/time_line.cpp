#include "records/time_line.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace runhost {

namespace {

// The system cuts thread names to 15 characters.
constexpr std::string_view VOTING_THREAD = "zant_perf_driver";

}  // namespace

TimeLine::TimeLine(const Backend& backend)
    : m_backend(backend),
      m_start(backend.voteCount()),
      m_hostThread(backend.threadNumber()),
      m_hostName(backend.threadName()) {}

void TimeLine::enter(const std::string& stage) {
    m_marks.push_back({m_backend.voteCount(), stage});
}

std::string TimeLine::threadName(const ZantSimVote& vote) const {
    const std::string name = vote.threadName;
    if (vote.thread == m_hostThread) return "host";
    // A thread that gave itself no name has that of the thread that began it; only the timer's is such a one.
    if (name.empty() || name == m_hostName) return "timer";
    return name.size() == ZANT_SIM_THREAD_NAME - 1 && VOTING_THREAD.starts_with(name) ? std::string(VOTING_THREAD)
                                                                                      : name;
}

std::vector<VoteLine> TimeLine::lines() const {
    std::vector<VoteLine> lines;
    auto mark = m_marks.begin();
    for (size_t i = m_start; i < m_backend.voteCount(); ++i) {
        const ZantSimVote vote = m_backend.vote(i);
        while (mark != m_marks.end() && mark + 1 != m_marks.end() && (mark + 1)->firstVote <= i) ++mark;
        lines.push_back({vote.timeNs, mark == m_marks.end() ? "" : mark->stage, threadName(vote), vote.thread,
                         vote.powerConfigId, vote.deviceId, vote.coreId, vote.recordCount == 0, decodeVote(vote)});
    }
    return lines;
}

std::vector<Level> levels(const std::vector<VoteLine>& lines, uint64_t endNs) {
    struct Standing {
        size_t level;
        uint64_t sinceNs;
    };
    std::vector<Level> levels;
    std::map<uint32_t, Standing> standing;
    const auto close = [&](uint32_t id, uint64_t timeNs) {
        const auto found = standing.find(id);
        if (found == standing.end()) return;
        levels[found->second.level].timeNs += timeNs - found->second.sinceNs;
        standing.erase(found);
    };
    for (const VoteLine& line : lines) {
        if (!line.ended && !line.vote.holdsCorners) continue;
        close(line.id, line.timeNs);
        if (line.ended) continue;
        auto level = std::find_if(levels.begin(), levels.end(), [&](const Level& candidate) {
            return candidate.id == line.id && candidate.vote == line.vote;
        });
        if (level == levels.end()) {
            levels.push_back({line.id, line.deviceId, line.coreId, line.vote, 0, 0});
            level = levels.end() - 1;
        }
        ++level->casts;
        standing[line.id] = {static_cast<size_t>(level - levels.begin()), line.timeNs};
    }
    while (!standing.empty()) close(standing.begin()->first, endNs);
    return levels;
}

}  // namespace runhost
