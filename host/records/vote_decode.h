// Lists of power records as corners, times and words.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zant_sim/sim_backend.h"

namespace runhost {

// Full names, as documents write them.
struct CornerNames {
    std::string min;
    std::string target;
    std::string max;

    bool operator==(const CornerNames&) const = default;
};

struct DecodedVote {
    bool holdsCorners = false;  // else the list holds settings alone
    CornerNames bus;
    CornerNames core;
    uint32_t sleepLatencyUs = 0;
    std::string powerMode;            // full name
    std::vector<std::string> extras;  // whatever else the records say, each in a few words

    bool operator==(const DecodedVote&) const = default;
};

DecodedVote decodeVote(const ZantSimVote& vote);

// Short names: one when min, target and max are alike, else "min/target/max"; "-" without names.
std::string cornersText(const CornerNames& corners);
// What a vote says in one line of text.
std::string voteText(const DecodedVote& vote);

}  // namespace runhost
