#include "perf/event_families.h"

namespace zant::kor {

namespace {

constexpr FamilyStep vote(VoteKind kind) {
    return {true, kind};
}
constexpr FamilyStep low(VoteKind kind, LowVoteMode mode) {
    return {true, kind, mode};
}
constexpr FamilyStep beginHold() {
    return {true, VoteKind::profile, LowVoteMode::powerSaver, HoldStep::begin};
}
constexpr FamilyStep endHoldOr(VoteKind kind, BusyStep busy = BusyStep::unchanged) {
    return {true, kind, LowVoteMode::powerSaver, HoldStep::endOrVote, busy};
}
constexpr FamilyStep unlessBusy(FamilyStep step) {
    step.hold = HoldStep::voteUnlessBusy;
    return step;
}
constexpr FamilyStep thenNotBusy(FamilyStep step) {
    step.busy = BusyStep::clear;
    return step;
}

constexpr FamilyStep PROFILE = vote(VoteKind::profile);
constexpr FamilyStep CUSTOM = vote(VoteKind::custom);
constexpr FamilyStep FLOOR = vote(VoteKind::floor);
constexpr FamilyStep IDLE_SAVING = low(VoteKind::idle, LowVoteMode::powerSaver);
constexpr FamilyStep IDLE_ADJUSTING = low(VoteKind::idle, LowVoteMode::adjustUpDown);
constexpr FamilyStep RELEASE_SAVING = low(VoteKind::release, LowVoteMode::powerSaver);
constexpr FamilyStep RELEASE_ADJUSTING = low(VoteKind::release, LowVoteMode::adjustUpDown);
constexpr FamilyStep LEFT_PENDING{};

// Columns as in EVENT_ORDER: inference done and start, init done and start, deinit done and start, timer expired.
constexpr FamilySteps BALANCED = {IDLE_SAVING,    PROFILE,        IDLE_SAVING, PROFILE,
                                  RELEASE_SAVING, RELEASE_SAVING, LEFT_PENDING};
constexpr FamilySteps PERFORMANCE = {IDLE_ADJUSTING,    PROFILE, IDLE_ADJUSTING, PROFILE,
                                     RELEASE_ADJUSTING, PROFILE, LEFT_PENDING};
constexpr FamilySteps SUSTAINED = {beginHold(),
                                   endHoldOr(VoteKind::profile, BusyStep::set),
                                   IDLE_ADJUSTING,
                                   endHoldOr(VoteKind::profile),
                                   thenNotBusy(RELEASE_ADJUSTING),
                                   endHoldOr(VoteKind::profile, BusyStep::set),
                                   unlessBusy(IDLE_ADJUSTING)};
constexpr FamilySteps FLOORED = {FLOOR, PROFILE, FLOOR, PROFILE, FLOOR, FLOOR, LEFT_PENDING};
constexpr FamilySteps SAVER = {RELEASE_SAVING, PROFILE,        RELEASE_SAVING, PROFILE,
                               RELEASE_SAVING, RELEASE_SAVING, LEFT_PENDING};
constexpr FamilySteps CUSTOM_SUSTAINED = {beginHold(),
                                          endHoldOr(VoteKind::custom, BusyStep::set),
                                          CUSTOM,
                                          endHoldOr(VoteKind::custom),
                                          thenNotBusy(CUSTOM),
                                          endHoldOr(VoteKind::custom, BusyStep::set),
                                          unlessBusy(CUSTOM)};
constexpr FamilySteps CUSTOM_PLAIN = {CUSTOM, CUSTOM, CUSTOM, CUSTOM, CUSTOM, CUSTOM, LEFT_PENDING};

// Profile numbers 0 to 22.
constexpr std::array<PerfFamily, 23> FAMILIES = {
    PerfFamily::balanced,  PerfFamily::balanced,  PerfFamily::balanced,    PerfFamily::performance,
    PerfFamily::sustained, PerfFamily::sustained, PerfFamily::sustained,   PerfFamily::balanced,
    PerfFamily::balanced,  PerfFamily::balanced,  PerfFamily::performance, PerfFamily::sustained,
    PerfFamily::floor,     PerfFamily::saver,     PerfFamily::saver,       PerfFamily::saver,
    PerfFamily::floor,     PerfFamily::saver,     PerfFamily::saver,       PerfFamily::saver,
    PerfFamily::noVoting,  PerfFamily::noVoting,  PerfFamily::custom};

}  // namespace

PerfFamily perfFamilyOf(uint32_t profile) noexcept {
    return profile < FAMILIES.size() ? FAMILIES[profile] : PerfFamily::unknown;
}

const FamilySteps& stepsOf(PerfFamily family, bool sustainsCustomState) noexcept {
    switch (family) {
        case PerfFamily::performance:
            return PERFORMANCE;
        case PerfFamily::sustained:
            return SUSTAINED;
        case PerfFamily::floor:
            return FLOORED;
        case PerfFamily::saver:
            return SAVER;
        case PerfFamily::custom:
            return sustainsCustomState ? CUSTOM_SUSTAINED : CUSTOM_PLAIN;
        case PerfFamily::balanced:
        case PerfFamily::noVoting:
        case PerfFamily::unknown:
            break;
    }
    return BALANCED;
}

}  // namespace zant::kor
