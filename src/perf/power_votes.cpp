#include "perf/power_votes.h"

#include <algorithm>

#include "config/perf_numbers.h"
#include "perf/power_infrastructure.h"
#include "perf/profile_table.h"
#include "perf/vote_records.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t POWER_MODE_ADJUST_UP_DOWN = 1;
constexpr uint32_t POWER_MODE_POWER_SAVER = 4;
constexpr uint32_t POWER_MODE_PERFORMANCE = 16;

constexpr uint32_t MAX_VOLTAGE_CORNER = 160;
constexpr uint32_t MAX_EXP_VOLTAGE_CORNER = 65535;

constexpr uint32_t MIN_LLM_DECODE_ARCH = 79;

uint32_t powerModeOf(LowVoteMode selector) {
    return selector == LowVoteMode::adjustUpDown ? POWER_MODE_ADJUST_UP_DOWN : POWER_MODE_POWER_SAVER;
}

bool isLlmDecode(uint32_t profile) {
    return profile >= FIRST_LLM_DECODE_PROFILE && profile <= LAST_LLM_DECODE_PROFILE;
}

bool areAll(const PowerCorners& corners, uint32_t corner) {
    return corners.min == corner && corners.target == corner && corners.max == corner;
}

// The words at bytes 40 to 48, whatever record it is.
PowerCorners legacyBusCorners(const PowerConfigRecord& record) {
    return record.dcvs.bus;
}

void addDru(VoteRecords& records, const KORCustomPerfState& state) {
    PowerConfigRecord& record = records.add();
    if (!state.druControlSet) return fillDru(record, 1, sameCorners(0), 0);
    const KORDruControl& dru = state.dru;
    fillDru(record, dru.druPickDefault, {dru.druVoltageCornerMin, dru.druVoltageCornerTarget, dru.druVoltageCornerMax},
            dru.druPerfMode);
}

template <class Control>
void fillCengFrom(PowerConfigRecord& record, PowerOption option, const Control& ceng) {
    fillCeng(record, option, {ceng.cengVoltageCornerMin, ceng.cengVoltageCornerTarget, ceng.cengVoltageCornerMax},
             ceng.cengPerfMode);
}

void addCeng(VoteRecords& records, const KORCustomPerfState& state, uint32_t stateNumber) {
    if (state.cengExpControlSet && state.cengControlSet) {
        ZANT_LOG_WARN(
            "Both cengExpControl and cengControl specified for state %d; cengExpControl takes priority, legacy "
            "cengControl will be ignored",
            static_cast<int>(stateNumber));
    }
    PowerConfigRecord& record = records.add();
    if (state.cengExpControlSet) return fillCengFrom(record, POWER_OPTION_CENG_EXP, state.cengExp);
    if (state.cengControlSet) return fillCengFrom(record, POWER_OPTION_CENG, state.ceng);
    fillCeng(record, POWER_OPTION_CENG, sameCorners(DEFAULT_VOLTAGE_CORNER), 0);
}

void addLiteralList(VoteRecords& records, const LiteralList& list) {
    fillDru(records.add(), 0, sameCorners(list.druCorner), list.druPerfMode);
    fillCeng(records.add(), POWER_OPTION_CENG, sameCorners(list.cengCorner), list.cengPerfMode);
    if (list.ddrPerfMode) fillValue(records.add(), POWER_OPTION_DDR_PERF_MODE, 1);
}

}  // namespace

// One of the fixed low votes.
struct PowerVotes::LowVote {
    uint32_t sleepLatency;
    PowerCorners corners;  // bus and core alike
};

// addRecords gets the vote, still empty, and the record's contextId.
template <class AddRecords>
bool PowerVotes::voteForEachId(AddRecords addRecords) {
    for (const auto& [deviceCore, id] : m_powerConfigIds) {
        VoteRecords records;
        addRecords(records, id);
        if (!sendPowerConfigs(records, id)) return false;
    }
    return true;
}

bool PowerVotes::voteProfile(uint32_t state) {
    const uint32_t profile = m_coreConfig.perfProfile;
    if (isLlmDecode(profile) && !m_dspInfos.empty() && arch() < MIN_LLM_DECODE_ARCH) {
        ZANT_LOG_ERROR("llm_decode_* perf profiles require Tesseron V79 or newer architecture; current arch is V%u",
                       static_cast<unsigned>(arch()));
        return false;
    }
    if (m_powerConfigIds.empty()) return true;
    if (profile == PERF_PROFILE_SYSTEM_SETTINGS) return true;
    if (profile >= PERF_PROFILE_COUNT) {
        ZANT_LOG_ERROR("Invalid performance profile %d to set power configs", static_cast<int>(profile));
        return false;
    }
    const ProfileRow& row = profileRow(profile);
    if (row.vote == ProfileVote::nothing) return true;
    return voteForEachId([&](VoteRecords& records, uint32_t id) {
        PowerConfigRecord& record = records.add();
        fillDcvs(record, false, POWER_MODE_PERFORMANCE, row.sleepLatency, sameCorners(row.busCorner),
                 sameCorners(row.coreCorner));
        record.dcvs.contextId = id;
        if (row.vote == ProfileVote::literal) {
            addLiteralList(records, *row.list);
        } else {
            assemblePowerConfigs(records, state);
        }
    });
}

bool PowerVotes::castLowVote(const LowVote& vote, uint32_t powerMode, uint32_t state) {
    return voteForEachId([&](VoteRecords& records, uint32_t id) {
        PowerConfigRecord& record = records.add();
        fillDcvs(record, true, powerMode, vote.sleepLatency, vote.corners, vote.corners);
        record.dcvs.contextId = id;
        assemblePowerConfigs(records, state);
    });
}

bool PowerVotes::voteIdle(LowVoteMode selector, uint32_t state) {
    return castLowVote({2000, {0x30, 0x40, 0x40}}, powerModeOf(selector), state);
}

bool PowerVotes::voteRelease(LowVoteMode selector, uint32_t state) {
    return castLowVote({65535, {0x20, 0x20, 0x20}}, powerModeOf(selector), state);
}

bool PowerVotes::voteFloor(uint32_t state) {
    return castLowVote({65535, {0x10, 0x10, 0x10}}, POWER_MODE_POWER_SAVER, state);
}

bool PowerVotes::voteCustomState(uint32_t state) {
    const KORCustomPerfState& custom = m_coreConfig.customPerfStates[state];
    for (const auto& [deviceCore, id] : m_powerConfigIds) {
        if (!custom.dcvsControlSet && !custom.dcvsExpControlSet) {
            ZANT_LOG_INFO(
                "custom power config is not set for perf event state: %d, skipping to update the existing vote",
                static_cast<int>(state));
            return true;
        }
        if (custom.dcvsControlSet && custom.dcvsExpControlSet) {
            ZANT_LOG_WARN(
                "Both dcvsExpControl and dcvsControl specified for state %d; dcvsExpControl takes priority, legacy "
                "dcvsControl will be ignored",
                static_cast<int>(state));
        }
        VoteRecords records;
        PowerConfigRecord& record = records.add();
        fillCustomDcvs(record, custom);
        record.dcvs.contextId = id;  // at the same place in both forms
        assemblePowerConfigs(records, state);
        if (!sendPowerConfigs(records, id)) return false;
    }
    return true;
}

// records: the DCVS record alone; the settings add theirs.
void PowerVotes::assemblePowerConfigs(VoteRecords& records, uint32_t state) const {
    const KORCustomPerfState& custom = m_coreConfig.customPerfStates[state];
    if (m_druControlUsed) addDru(records, custom);
    if (m_cengControlUsed) addCeng(records, custom, state);
    if (m_coreConfig.ddrPerfMode) addDdrPerfMode(records, state);
}

void PowerVotes::addDdrPerfMode(VoteRecords& records, uint32_t state) const {
    const KORCustomPerfState& custom = m_coreConfig.customPerfStates[state];
    const PowerCorners bus = legacyBusCorners(records[0]);
    const PowerCorners expBus = {custom.dcvsExp.busVoltageCornerMin, custom.dcvsExp.busVoltageCornerTarget,
                                 custom.dcvsExp.busVoltageCornerMax};
    if (areAll(bus, MAX_VOLTAGE_CORNER) || (custom.dcvsExpControlSet && areAll(expBus, MAX_EXP_VOLTAGE_CORNER))) {
        fillValue(records.add(), POWER_OPTION_DDR_PERF_MODE, 1);
        ZANT_LOG_INFO("DDR perf mode enabled with maximum bus voltage corners");
        return;
    }
    ZANT_LOG_WARN(
        "DDR perf mode requested but bus voltage corners are not set to maximum level. DDR perf mode requires "
        "busVoltageCornerMin/Target/Max to be DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER (legacy) or "
        "DCVS_EXP_VCORNER_MAX (expanded). Current legacy values: Min=%d, Target=%d, Max=%d",
        static_cast<int>(bus.min), static_cast<int>(bus.target), static_cast<int>(bus.max));
}

bool PowerVotes::sendPowerConfigs(VoteRecords& records, uint32_t id) {
    return applyPowerConfigs(id, records.pointers());
}

bool PowerVotes::applyPowerConfigs(uint32_t id, const PowerConfigRecord** array) {
    MutexLock lock(g_infraMutex);
    const ZantPerfInfrastructure* infrastructure = fetchInfrastructure(m_backendInterface);
    if (infrastructure == nullptr) return false;
    const uint64_t status =
        infrastructure->setPowerConfig == nullptr ? MISSING_OPERATION : infrastructure->setPowerConfig(id, array);
    if (status != 0) {
        ZANT_LOG_ERROR("Perf Infra set power config failed: [%d]", static_cast<int>(status));
        return false;
    }
    ZANT_LOG_INFO("Perf Infra set power config success");
    return true;
}

}  // namespace zant::kor
