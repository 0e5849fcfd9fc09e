// What each perf profile votes, as rows.
#pragma once

#include <cstdint>

namespace zant::kor {

constexpr uint32_t PERF_PROFILE_COUNT = 20;  // profiles 0 to 19 have a row
constexpr uint32_t FIRST_LLM_DECODE_PROFILE = 6;
constexpr uint32_t LAST_LLM_DECODE_PROFILE = 15;

// Records that follow the DCVS record of a profile, given literally. A corner is min, target and max alike.
struct LiteralList {
    uint32_t druCorner;
    uint32_t druPerfMode;
    uint32_t cengCorner;
    uint32_t cengPerfMode;
    bool ddrPerfMode;
};

enum class ProfileVote : uint8_t {
    nothing,   // the profile sends no vote of its own
    assemble,  // the settings of the document add their records
    literal,   // the row's own list follows, whatever the settings
};

struct ProfileRow {
    ProfileVote vote;
    uint32_t sleepLatency;  // microseconds
    uint32_t busCorner;
    uint32_t coreCorner;
    const LiteralList* list;  // for literal
};

// profile: below PERF_PROFILE_COUNT.
const ProfileRow& profileRow(uint32_t profile) noexcept;

// Profiles that poll for answers of the remote side.
constexpr bool profilePollsRpc(uint32_t profile) noexcept {
    return profile == 5 || profile == 6 || profile == 10 || profile == 11;
}

}  // namespace zant::kor
