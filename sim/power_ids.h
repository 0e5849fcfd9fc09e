// The infrastructure's memory: which power config ids live, what each last voted, and when.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "zant_sim/sim_backend.h"

namespace zant::sim {

// All operations may be called from any thread. Those that return a text return what was wrong with the call, and
// then have done nothing; an empty text is success.
class PowerIds {
public:
    PowerIds();

    uint32_t create(uint32_t deviceId, uint32_t coreId);
    std::string destroy(uint32_t id);
    // records: already checked, 16 at most.
    std::string vote(uint32_t id, std::vector<PowerConfigRecord> records);

    size_t liveCount() const;
    void clearTimeLine();
    size_t timeLineSize() const;
    bool timeLineEntry(size_t index, ZantSimVote& vote) const;
    bool currentVote(uint32_t id, ZantSimVote& vote) const;

private:
    struct Entry {
        uint64_t sequence;
        uint64_t timeNs;
        uint32_t thread;
        uint32_t id;
        std::string threadName;
        std::vector<PowerConfigRecord> records;
    };
    struct State {
        uint32_t deviceId;
        uint32_t coreId;
        bool alive;
        std::optional<Entry> current;
    };

    const Entry& append(uint32_t id, std::vector<PowerConfigRecord> records);
    void fill(const Entry& entry, ZantSimVote& vote) const;

    mutable std::mutex m_mutex;
    std::map<uint32_t, State> m_ids;
    std::vector<Entry> m_timeLine;
};

// The one memory of this library.
PowerIds& powerIds();

}  // namespace zant::sim
