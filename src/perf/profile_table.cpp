#include "perf/profile_table.h"

#include <array>

namespace zant::kor {

namespace {

// Columns: DRU corner and perf mode, CENG corner and perf mode, DDR perf mode.
constexpr LiteralList LIST_A{0x1C0, 0, 0x90, 0, true};
constexpr LiteralList LIST_B{0, 1, 0x60, 0, false};
constexpr LiteralList LIST_C{0x138, 1, 0x60, 0, false};
constexpr LiteralList LIST_D{0, 1, 0x10, 1, false};
constexpr LiteralList LIST_E{0, 1, 0x30, 1, false};
constexpr LiteralList LIST_F{0, 1, 0x40, 1, false};
constexpr LiteralList LIST_G{0, 1, 0x50, 1, false};

constexpr ProfileRow assembled(uint32_t sleepLatency, uint32_t busCorner, uint32_t coreCorner) {
    return {ProfileVote::assemble, sleepLatency, busCorner, coreCorner, nullptr};
}

constexpr ProfileRow literal(uint32_t sleepLatency, uint32_t busCorner, uint32_t coreCorner, const LiteralList& list) {
    return {ProfileVote::literal, sleepLatency, busCorner, coreCorner, &list};
}

constexpr std::array<ProfileRow, PERF_PROFILE_COUNT> PROFILES = {
    assembled(1000, 0x60, 0x60),               // 0 low_balanced
    assembled(1000, 0x70, 0x70),               // 1 balanced
    {ProfileVote::nothing, 0, 0, 0, nullptr},  // 2 default
    assembled(100, 0x80, 0x80),                // 3 high_performance
    assembled(100, 0x80, 0x80),                // 4 sustained_high_performance
    assembled(40, 0xA0, 0xA0),                 // 5 burst
    literal(40, 0xA0, 0xA0, LIST_A),           // 6 llm_decode_burst
    literal(1000, 0x60, 0x50, LIST_B),         // 7 llm_decode_low_balanced
    literal(1000, 0x60, 0x50, LIST_B),         // 8 llm_decode_balanced
    literal(1000, 0x60, 0x50, LIST_B),         // 9 llm_decode_default
    literal(100, 0x80, 0x50, LIST_C),          // 10 llm_decode_high_performance
    literal(100, 0x90, 0x60, LIST_C),          // 11 llm_decode_sustained_high_performance
    literal(1000, 0x10, 0x10, LIST_D),         // 12 llm_decode_extreme_power_saver
    literal(1000, 0x30, 0x10, LIST_E),         // 13 llm_decode_low_power_saver
    literal(1000, 0x50, 0x30, LIST_F),         // 14 llm_decode_power_saver
    literal(1000, 0x60, 0x40, LIST_G),         // 15 llm_decode_high_power_saver
    assembled(1000, 0x10, 0x10),               // 16 extreme_power_saver
    assembled(1000, 0x30, 0x30),               // 17 low_power_saver
    assembled(1000, 0x40, 0x40),               // 18 power_saver
    assembled(1000, 0x50, 0x50),               // 19 high_power_saver
};

}  // namespace

const ProfileRow& profileRow(uint32_t profile) noexcept {
    return PROFILES[profile];
}

}  // namespace zant::kor
