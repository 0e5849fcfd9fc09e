// Set-up of the votes: power config ids, the settings that travel once, and the memory config.
#include <algorithm>
#include <map>
#include <string>
#include <utility>

#include "config/perf_numbers.h"
#include "perf/power_infrastructure.h"
#include "perf/power_votes.h"
#include "perf/profile_table.h"
#include "perf/vote_records.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t MIN_CLIENT_CONTEXT_ARCH = 69;
constexpr uint32_t MIN_EXTRA_CONTROL_ARCH = 75;
constexpr uint32_t DEFAULT_DRU_TIMEOUT_US = 300000;
constexpr uint32_t RPC_POLLING_TIME_US = 9999;
constexpr PowerMemoryRecord MEMORY_RECORD{1, 0x02000000};

}  // namespace

void PowerVotes::addDeviceCores(uint32_t deviceId, const std::vector<uint32_t>& coreIds) {
    for (const uint32_t coreId : coreIds) m_deviceCorePairs.emplace_back(deviceId, coreId);
}

void PowerVotes::setPerfConfig(const KORCoreConfig& coreConfig) {
    m_coreConfig = coreConfig;
    KORCoreConfig& core = m_coreConfig;
    if (core.perfProfile == PERF_PROFILE_NOT_SET) core.perfProfile = PERF_PROFILE_HIGH_PERFORMANCE;
    ZANT_LOG_VERBOSE("Setting Perf Profile to %d", static_cast<int>(core.perfProfile));
    if (core.rpcPollingTime == NOT_SET) {
        m_rpcPollingEnabled = profilePollsRpc(core.perfProfile);
        core.rpcPollingTime = m_rpcPollingEnabled ? RPC_POLLING_TIME_US : 0;
    } else {
        m_rpcPollingEnabled = core.rpcPollingTime > 0;
    }
    const auto& states = core.customPerfStates;
    m_druControlUsed = std::any_of(states.begin(), states.end(), [](const auto& state) { return state.druControlSet; });
    m_cengControlUsed = std::any_of(states.begin(), states.end(),
                                    [](const auto& state) { return state.cengControlSet || state.cengExpControlSet; });
    if (arch() >= MIN_EXTRA_CONTROL_ARCH) return;
    const std::string chip = "KorV" + std::to_string(arch());
    if (m_druControlUsed) {
        ZANT_LOG_INFO("Dru setting not supported on %s, Setting Dru to default", chip.c_str());
        m_druControlUsed = false;
    }
    if (m_cengControlUsed) {
        ZANT_LOG_INFO("CENG setting not supported on %s, Setting CENG to default", chip.c_str());
        m_cengControlUsed = false;
    }
}

bool PowerVotes::createPowerConfigId(bool useClientContext) {
    if (arch() < MIN_CLIENT_CONTEXT_ARCH) {
        if (!useClientContext) {
            m_powerConfigIds.try_emplace({0, 0}, 0);
            ZANT_LOG_INFO("Using default Darlink power config ID for voting!");
            return true;
        }
        m_defaultVoteCancelPending = true;
        if (!destroyPowerConfigIds()) {
            ZANT_LOG_ERROR("default vote cancellation failed.");
            ZANT_LOG_ERROR("Dar Link default vote cancellation failed!");
            return false;
        }
    }
    MutexLock lock(g_infraMutex);
    const ZantPerfInfrastructure* infrastructure = fetchInfrastructure(m_backendInterface);
    if (infrastructure == nullptr) return false;
    m_idsCreated = false;
    // Places for the ids beforehand: one that could not be kept would be lost.
    std::map<DeviceCore, uint32_t> places;
    for (const DeviceCore& pair : m_deviceCorePairs) places.try_emplace(pair, 0);
    for (const DeviceCore& pair : m_deviceCorePairs) {
        uint32_t id = 0;
        const uint64_t status = infrastructure->createPowerConfigId == nullptr
                                    ? MISSING_OPERATION
                                    : infrastructure->createPowerConfigId(pair.first, pair.second, &id);
        if (status != 0) {
            ZANT_LOG_ERROR("Perf Infra createPowerConfigId return failed: [%d]", static_cast<int>(status));
            return false;
        }
        auto place = places.extract(pair);
        if (place.empty()) continue;  // a pair that stands twice keeps its first id
        place.mapped() = id;
        m_powerConfigIds.insert(std::move(place));
    }
    m_idsCreated = true;
    return true;
}

bool PowerVotes::destroyPowerConfigIds() {
    if (!m_idsCreated && !m_defaultVoteCancelPending) return true;
    MutexLock lock(g_infraMutex);
    const ZantPerfInfrastructure* infrastructure = fetchInfrastructure(m_backendInterface);
    if (infrastructure == nullptr) {
        m_powerConfigIds.clear();
        return false;
    }
    const auto destroy = [infrastructure](uint32_t id) {
        return infrastructure->destroyPowerConfigId == nullptr ? MISSING_OPERATION
                                                               : infrastructure->destroyPowerConfigId(id);
    };
    if (!m_idsCreated) {
        // The vote that stands for a process without ids of its own.
        if (const uint64_t status = destroy(0); status != 0) {
            ZANT_LOG_ERROR("Perf Infra destroy (null context) power config return: [%d]", static_cast<int>(status));
        }
        m_defaultVoteCancelPending = false;
        return true;
    }
    bool result = true;
    for (const auto& [deviceCore, id] : m_powerConfigIds) {
        if (const uint64_t status = destroy(id); status != 0) {
            ZANT_LOG_ERROR("Perf Infra destroy power config return: [%d]", static_cast<int>(status));
            result = false;
        }
    }
    m_idsCreated = false;
    m_powerConfigIds.clear();
    return result;
}

bool PowerVotes::setMemoryConfig() {
    MutexLock lock(g_infraMutex);
    const ZantPerfInfrastructure* infrastructure = fetchInfrastructure(m_backendInterface);
    if (infrastructure == nullptr) return false;
    const PowerMemoryRecord* array[] = {&MEMORY_RECORD, nullptr};
    for (const DeviceCore& pair : m_deviceCorePairs) {
        const uint64_t status = infrastructure->setMemoryConfig == nullptr
                                    ? MISSING_OPERATION
                                    : infrastructure->setMemoryConfig(pair.first, pair.second, array);
        if (status != 0) {
            ZANT_LOG_ERROR("Perf Infra set memory config return: [%d]", static_cast<int>(status));
            return false;
        }
        ZANT_LOG_INFO("Perf Infra set memory config return [%d]", static_cast<int>(status));
    }
    return true;
}

void PowerVotes::setRpcAndTimeoutConfig() {
    if (m_coreConfig.druTimeoutUs != DEFAULT_DRU_TIMEOUT_US) {
        sendSetting(POWER_OPTION_DRU_TIMEOUT, m_coreConfig.druTimeoutUs,
                    [] { ZANT_LOG_ERROR("Setting DRU timeout interval failed"); });
    }
    ZANT_LOG_INFO("Windows platform does not support RPC control latency");
    if (!m_rpcPollingEnabled) return;
    sendRpcPollingTime();
    if (m_coreConfig.adaptivePollingTime != 0) ZANT_LOG_INFO("Windows platform does not support adaptive polling");
}

void PowerVotes::sendSetting(PowerOption option, uint32_t value, void (*logFailure)()) {
    for (const auto& [deviceCore, id] : m_powerConfigIds) {
        VoteRecords records;
        fillValue(records.add(), option, value);
        if (!applyPowerConfigs(id, records.pointers())) logFailure();
    }
}

void PowerVotes::sendRpcPollingTime() {
    sendSetting(POWER_OPTION_RPC_POLLING, m_coreConfig.rpcPollingTime,
                [] { ZANT_LOG_ERROR("Setting RPC polling time failed."); });
}

void PowerVotes::followProfileWithRpcPolling() {
    const bool polls = profilePollsRpc(m_coreConfig.perfProfile);
    if (polls == m_rpcPollingEnabled) return;
    m_rpcPollingEnabled = polls;
    m_coreConfig.rpcPollingTime = polls ? RPC_POLLING_TIME_US : 0;
    sendRpcPollingTime();
}

}  // namespace zant::kor
