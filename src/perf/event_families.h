// What an event means under a perf profile: families of profiles, and for each family a row of steps.
#pragma once

#include <array>
#include <cstdint>

#include "config/perf_numbers.h"
#include "perf/power_votes.h"

namespace zant::kor {

// Events, one bit each.
constexpr uint8_t GRAPH_INIT_START = 1;
constexpr uint8_t GRAPH_INIT_DONE = 2;
constexpr uint8_t GRAPH_INFERENCE_START = 4;
constexpr uint8_t GRAPH_INFERENCE_DONE = 8;
constexpr uint8_t GRAPH_DEINIT_START = 16;
constexpr uint8_t GRAPH_DEINIT_DONE = 32;
constexpr uint8_t TIMER_EXPIRED = 128;

enum class VoteKind : uint8_t { profile, custom, idle, release, floor };

enum class HoldStep : uint8_t {
    none,
    begin,           // start the hold instead of voting
    endOrVote,       // a running hold ends without a vote, since the high vote stands; else vote
    voteUnlessBusy,  // the hold has run out
};

enum class BusyStep : uint8_t { unchanged, set, clear };

// What one family does at one event.
struct FamilyStep {
    bool isLookedAt = false;  // false: the family leaves the event pending
    VoteKind vote = VoteKind::profile;
    LowVoteMode mode = LowVoteMode::powerSaver;
    HoldStep hold = HoldStep::none;
    BusyStep busy = BusyStep::unchanged;
};

struct EventColumn {
    uint8_t event;
    uint32_t state;  // the graph state that the event's vote goes by
};

// The order in which pending events are handled, whatever order they came in: low votes before high ones, so that
// where an inference has ended and the next begun the high vote stands last.
constexpr std::array<EventColumn, 7> EVENT_ORDER = {{
    {GRAPH_INFERENCE_DONE, GRAPH_STATE_INFERENCE_DONE},
    {GRAPH_INFERENCE_START, GRAPH_STATE_INFERENCE_START},
    {GRAPH_INIT_DONE, GRAPH_STATE_INIT_DONE},
    {GRAPH_INIT_START, GRAPH_STATE_INIT_START},
    {GRAPH_DEINIT_DONE, GRAPH_STATE_DEINIT_DONE},
    {GRAPH_DEINIT_START, GRAPH_STATE_DEINIT_START},
    {TIMER_EXPIRED, GRAPH_STATE_INFERENCE_DONE},
}};

using FamilySteps = std::array<FamilyStep, EVENT_ORDER.size()>;

enum class PerfFamily : uint8_t { balanced, performance, sustained, floor, saver, custom, noVoting, unknown };

PerfFamily perfFamilyOf(uint32_t profile) noexcept;
// family: one that votes. sustainsCustomState: of the two custom ones, the one that holds.
const FamilySteps& stepsOf(PerfFamily family, bool sustainsCustomState) noexcept;

}  // namespace zant::kor
