// What each perf profile votes at each event of a model's life, learnt by driving the extension library.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "machine/backend.h"
#include "records/value_tables.h"
#include "records/vote_decode.h"

namespace runhost {

struct LifeEvent {
    const char* stage;  // two words for a table's heading
    const char* moment;
    const char* cause;  // the hook, or what else brings the vote about
};

constexpr std::array<LifeEvent, 8> LIFE_EVENTS{{
    {"device", "created", "afterDeviceCreate"},
    {"finalize", "before", "beforeGraphFinalize"},
    {"finalize", "after", "afterGraphFinalize"},
    {"execute", "before", "beforeGraphExecute"},
    {"execute", "after", "afterGraphExecute"},
    {"execute", "300 ms later", "the hold's end"},
    {"free", "before", "beforeContextFree"},
    {"free", "after", "afterContextFree"},
}};

struct EventVotes {
    std::vector<DecodedVote> votes;
    std::vector<std::string> errors;  // what the library logged as errors meanwhile
};

struct ProfileVotes {
    NamedValue profile;
    std::array<EventVotes, LIFE_EVENTS.size()> events;
};

// One object for each profile goes through the life of a model; all of them wait out the hold together, which takes
// about half a second. Throws std::runtime_error when a hook fails or the
// backend was used wrongly. The backend has to be the simulated one.
std::vector<ProfileVotes> driveProfiles(const ExtensionLibrary& library, const Backend& backend,
                                        const std::vector<NamedValue>& profiles);

}  // namespace runhost
