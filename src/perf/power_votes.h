// What goes into a vote: the records of each profile, of the fixed low votes and of the document's custom states, and
// their way to the infrastructure. When a vote is cast is the driver's business.
//
// Not thread-safe: its owner's lock guards it. The infrastructure is called under one lock of the whole process.
#pragma once

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "config/device_config.h"
#include "soc/dsp_info.h"
#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

class VoteRecords;

// Selector of the low votes: which power mode they carry.
enum class LowVoteMode : uint32_t { powerSaver = 0, adjustUpDown = 2 };

class PowerVotes {
public:
    // The votes go to every power config id, smallest device id first, then smallest core id; the first that fails
    // ends the vote with false, so that later ids keep their old one. state: a graph state number, 0 to 5.
    bool voteProfile(uint32_t state);
    bool voteCustomState(uint32_t state);
    bool voteIdle(LowVoteMode selector, uint32_t state);
    bool voteRelease(LowVoteMode selector, uint32_t state);
    bool voteFloor(uint32_t state);

    void setBackendInterface(const ZantProviderRecord& backendInterface) { m_backendInterface = backendInterface; }
    void setDspInfos(std::vector<soc::DspInfo> dspInfos) { m_dspInfos = std::move(dspInfos); }
    void addDeviceCores(uint32_t deviceId, const std::vector<uint32_t>& coreIds);
    void setPerfConfig(const KORCoreConfig& coreConfig);
    bool createPowerConfigId(bool useClientContext);
    bool destroyPowerConfigIds();
    bool setMemoryConfig();
    void setRpcAndTimeoutConfig();
    // RPC polling follows the profile: on for the fastest ones. Sends the new time where that changes.
    void followProfileWithRpcPolling();

    // The chip's architecture; an empty list counts as a chip that nobody knows.
    uint32_t arch() const noexcept { return m_dspInfos.empty() ? 0 : m_dspInfos.front().arch; }
    uint32_t perfProfile() const noexcept { return m_coreConfig.perfProfile; }
    void setPerfProfile(uint32_t profile) noexcept { m_coreConfig.perfProfile = profile; }
    bool sustainsCustomState() const noexcept { return m_coreConfig.sustainInferencePerfState; }

private:
    struct LowVote;
    using DeviceCore = std::pair<uint32_t, uint32_t>;  // device id, core id

    template <class AddRecords>
    bool voteForEachId(AddRecords addRecords);
    bool castLowVote(const LowVote& vote, uint32_t powerMode, uint32_t state);
    void assemblePowerConfigs(VoteRecords& records, uint32_t state) const;
    void addDdrPerfMode(VoteRecords& records, uint32_t state) const;
    bool sendPowerConfigs(VoteRecords& records, uint32_t id);
    bool applyPowerConfigs(uint32_t id, const PowerConfigRecord** array);
    void sendSetting(PowerOption option, uint32_t value, void (*logFailure)());
    void sendRpcPollingTime();

    ZantProviderRecord m_backendInterface{};
    KORCoreConfig m_coreConfig;
    bool m_druControlUsed = false;
    bool m_cengControlUsed = false;
    bool m_rpcPollingEnabled = false;
    std::vector<DeviceCore> m_deviceCorePairs;
    std::map<DeviceCore, uint32_t> m_powerConfigIds;
    std::vector<soc::DspInfo> m_dspInfos;
    bool m_idsCreated = false;
    bool m_defaultVoteCancelPending = false;
};

}  // namespace zant::kor
