// The records of one vote, on the stack.
#pragma once

#include <array>
#include <cstddef>

#include "config/custom_perf_state.h"
#include "zelmar_kor/power_records.h"

namespace zant::kor {

// Each record is filled where it stands: copying it while its words are still on their way to memory costs more than
// the words themselves.
class VoteRecords {
public:
    // A further record, all zero. A vote has at most a DCVS, a DRU, a CENG and a DDR record.
    PowerConfigRecord& add() noexcept {
        PowerConfigRecord& record = m_records[m_count++];
        record = PowerConfigRecord{};
        return record;
    }
    const PowerConfigRecord& operator[](size_t position) const noexcept { return m_records[position]; }

    // One pointer for each record and a closing null, valid as long as this object.
    const PowerConfigRecord** pointers() noexcept {
        for (size_t i = 0; i < m_count; ++i) m_pointers[i] = &m_records[i];
        m_pointers[m_count] = nullptr;
        return m_pointers.data();
    }

private:
    static constexpr size_t CAPACITY = 4;

    std::array<PowerConfigRecord, CAPACITY> m_records;
    std::array<const PowerConfigRecord*, CAPACITY + 1> m_pointers;
    size_t m_count = 0;
};

inline PowerCorners sameCorners(uint32_t corner) {
    return {corner, corner, corner};
}

// These fill a record that is all zero.

inline void fillValue(PowerConfigRecord& record, PowerOption option, uint32_t value) {
    record.single.option = option;
    record.single.value = value;
}

inline void fillDru(PowerConfigRecord& record, uint32_t pickDefault, const PowerCorners& corners, uint32_t perfMode) {
    record.dru.option = POWER_OPTION_DRU;
    record.dru.pickDefault = pickDefault;
    record.dru.corners = corners;
    record.dru.perfMode = perfMode;
}

inline void fillCeng(PowerConfigRecord& record, PowerOption option, const PowerCorners& corners, uint32_t perfMode) {
    record.ceng.option = option;
    record.ceng.corners = corners;
    record.ceng.perfMode = perfMode;
}

// A DCVS record with all that every vote has in common; sleepDisable is not valid in it.
inline void fillDcvs(PowerConfigRecord& record, bool dcvsEnable, uint32_t powerMode, uint32_t sleepLatency,
                     const PowerCorners& bus, const PowerCorners& core) {
    record.dcvs.option = POWER_OPTION_DCVS;
    record.dcvs.dcvsEnableValid = 1;
    record.dcvs.dcvsEnable = dcvsEnable ? 1 : 0;
    record.dcvs.powerMode = powerMode;
    record.dcvs.sleepLatencyValid = 1;
    record.dcvs.sleepLatency = sleepLatency;
    record.dcvs.busCornersValid = 1;
    record.dcvs.bus = bus;
    record.dcvs.coreCornersValid = 1;
    record.dcvs.core = core;
}

// The record of a custom state: the expanded form where the document has it, else the legacy one.
void fillCustomDcvs(PowerConfigRecord& record, const KORCustomPerfState& state);

}  // namespace zant::kor
