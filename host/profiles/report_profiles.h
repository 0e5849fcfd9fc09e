// Perf profiles and their votes, for people or as one JSON document.
#pragma once

#include <string>
#include <vector>

#include "profiles/profile_votes.h"
#include "report/style.h"

namespace runhost {

// A row for each profile and a column for each event; the votes' numbers lead to a list below the table.
std::string profileTable(const std::vector<ProfileVotes>& profiles, const Style& style);
// Each event of one profile with all that is voted there.
std::string profileDetail(const ProfileVotes& profile, const Style& style);
std::string profilesJson(const std::vector<ProfileVotes>& profiles, const std::string& machine);

}  // namespace runhost
