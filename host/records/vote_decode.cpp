#include "records/vote_decode.h"

#include <fmt/format.h>

#include "records/value_tables.h"

namespace runhost {

namespace {

CornerNames namesOfCorners(const PowerCorners& numbers, std::span<const NamedValue> table) {
    return {nameOf(table, numbers.min), nameOf(table, numbers.target), nameOf(table, numbers.max)};
}

std::string engineText(const char* engine, const PowerCorners& numbers, std::span<const NamedValue> table,
                       uint32_t perfMode) {
    const std::string mode = perfMode == 0 ? "" : fmt::format(" mode {}", perfMode);
    return fmt::format("{} {}{}", engine, cornersText(namesOfCorners(numbers, table)), mode);
}

void addDcvs(const PowerDcvsRecord& record, DecodedVote& vote) {
    vote.holdsCorners = true;
    vote.bus = namesOfCorners(record.bus, corners());
    vote.core = namesOfCorners(record.core, corners());
    vote.sleepLatencyUs = record.sleepLatency;
    vote.powerMode = nameOf(powerModes(), record.powerMode);
    if (record.dcvsEnable != 0) vote.extras.emplace_back("DCVS on");
    if (record.sleepDisable != 0) vote.extras.emplace_back("no sleep");
}

void addDcvsExp(const PowerDcvsExpRecord& record, DecodedVote& vote) {
    vote.holdsCorners = true;
    vote.bus = namesOfCorners(record.bus, expCorners());
    vote.core = namesOfCorners(record.core, expCorners());
    vote.sleepLatencyUs = record.sleepLatency;
    vote.powerMode = nameOf(powerModes(), record.powerMode);
    if (record.sleepDisable != 0) vote.extras.emplace_back("no sleep");
    if (record.corePerfMode != 0) vote.extras.push_back(fmt::format("core mode {}", record.corePerfMode));
    if (record.busPerfMode != 0) vote.extras.push_back(fmt::format("bus mode {}", record.busPerfMode));
}

void add(const PowerConfigRecord& record, DecodedVote& vote) {
    switch (record.option) {
        case POWER_OPTION_DCVS:
            return addDcvs(record.dcvs, vote);
        case POWER_OPTION_DCVS_EXP:
            return addDcvsExp(record.dcvsExp, vote);
        case POWER_OPTION_DRU:
            vote.extras.push_back(record.dru.pickDefault != 0
                                      ? "DRU default"
                                      : engineText("DRU", record.dru.corners, expCorners(), record.dru.perfMode));
            return;
        case POWER_OPTION_CENG:
            vote.extras.push_back(engineText("CENG", record.ceng.corners, corners(), record.ceng.perfMode));
            return;
        case POWER_OPTION_CENG_EXP:
            vote.extras.push_back(engineText("CENG", record.ceng.corners, expCorners(), record.ceng.perfMode));
            return;
        case POWER_OPTION_DDR_PERF_MODE:
            vote.extras.push_back(fmt::format("DDR perf mode {}", record.single.value));
            return;
        case POWER_OPTION_RPC_POLLING:
            vote.extras.push_back(fmt::format("RPC polling {}", record.single.value));
            return;
        case POWER_OPTION_DRU_TIMEOUT:
            vote.extras.push_back(fmt::format("DRU timeout {} us", record.single.value));
            return;
        default:
            vote.extras.push_back(fmt::format("option {}", record.option));
    }
}

}  // namespace

DecodedVote decodeVote(const ZantSimVote& vote) {
    DecodedVote decoded;
    for (uint32_t i = 0; i < vote.recordCount; ++i) add(vote.records[i], decoded);
    return decoded;
}

std::string cornersText(const CornerNames& corners) {
    if (corners.min.empty()) return "-";
    if (corners.min == corners.target && corners.min == corners.max) return shortName(corners.min);
    return fmt::format("{}/{}/{}", shortName(corners.min), shortName(corners.target), shortName(corners.max));
}

std::string voteText(const DecodedVote& vote) {
    std::string extras = fmt::format("{}", fmt::join(vote.extras, ", "));
    if (!vote.holdsCorners) return extras;
    return fmt::format("bus {}, core {}, sleep {} us, {}{}{}", cornersText(vote.bus), cornersText(vote.core),
                       vote.sleepLatencyUs, shortName(vote.powerMode), extras.empty() ? "" : ", ", extras);
}

}  // namespace runhost
