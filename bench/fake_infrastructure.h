// A power infrastructure that takes every call at once.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zelmar_kor/power_records.h"

namespace bench {

inline size_t g_recordsTaken = 0;  // of the last vote

inline uint64_t createId(uint32_t, uint32_t, uint32_t* id) {
    *id = 1;
    return 0;
}
inline uint64_t destroyId(uint32_t) {
    return 0;
}
inline uint64_t setPowerConfig(uint32_t, const PowerConfigRecord** records) {
    size_t count = 0;
    while (records[count] != nullptr) ++count;
    g_recordsTaken = count;
    return 0;
}
inline uint64_t setMemoryConfig(uint32_t, uint32_t, const PowerMemoryRecord**) {
    return 0;
}

inline constexpr ZantPerfInfrastructure INFRASTRUCTURE{0, createId, destroyId, setPowerConfig, setMemoryConfig};

inline uint64_t getInfrastructure(const ZantPerfInfrastructure** infrastructure) {
    *infrastructure = &INFRASTRUCTURE;
    return 0;
}

}  // namespace bench
