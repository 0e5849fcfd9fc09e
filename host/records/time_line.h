// The votes of a run in order, with the stage and the thread that each came from, and how long each stood.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "machine/backend.h"
#include "records/vote_decode.h"

namespace runhost {

struct VoteLine {
    uint64_t timeNs;  // since the backend's first call
    std::string stage;
    std::string thread;  // "host", "timer" or the name that the thread gave itself
    uint32_t threadNumber;
    uint32_t id;
    uint32_t deviceId;
    uint32_t coreId;
    bool ended;  // no vote: the id was destroyed
    DecodedVote vote;
};

struct Level {
    uint32_t id;
    uint32_t deviceId;
    uint32_t coreId;
    DecodedVote vote;
    size_t casts;     // how often it was voted
    uint64_t timeNs;  // how long it stood, all in all
};

// Notes stages while a run goes on. It is made on the host's thread and takes that thread for the host's.
class TimeLine {
public:
    // The backend has to outlive it.
    explicit TimeLine(const Backend& backend);

    // Votes from now on belong to this stage.
    void enter(const std::string& stage);
    std::vector<VoteLine> lines() const;

private:
    struct Mark {
        size_t firstVote;
        std::string stage;
    };

    std::string threadName(const ZantSimVote& vote) const;

    const Backend& m_backend;
    const size_t m_start;
    const uint32_t m_hostThread;
    std::string m_hostName;
    std::vector<Mark> m_marks;
};

// Each distinct vote of each id, in the order of its first cast. What still stands, stands until endNs.
std::vector<Level> levels(const std::vector<VoteLine>& lines, uint64_t endNs);

}  // namespace runhost
