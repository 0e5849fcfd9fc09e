// Turns the stages of a model's life into votes.
//
// The hooks tell it one event at a time; by the perf profile it decides which vote the event means, and casts it for
// each power config id, on the caller's thread or on a voting thread of its own. The sustained profiles hold the high
// vote between two inferences by a timer, which always has a thread of its own.
//
// Set-up (initialize to setRpcAndTimeoutConfig) is the host's thread's, before the first event.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <thread>
#include <utility>
#include <vector>

#include "config/device_config.h"
#include "perf/event_families.h"
#include "perf/one_shot_timer.h"
#include "perf/power_votes.h"
#include "platform/mutex.h"
#include "platform/steady_clock.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

class KORDevicePerfDriver {
public:
    // Asks for the facts of the chip that it runs on.
    KORDevicePerfDriver();
    // dspInfos: the chip's, first the one whose architecture counts. clock: where the hold's time comes from; borrowed.
    KORDevicePerfDriver(std::vector<soc::DspInfo> dspInfos, SteadyClock& clock);
    // Drops pending events without a final vote, joins the voting thread and the timer's, destroys the ids.
    ~KORDevicePerfDriver();
    KORDevicePerfDriver(const KORDevicePerfDriver&) = delete;
    KORDevicePerfDriver& operator=(const KORDevicePerfDriver&) = delete;

    // Takes a copy of the provider record and starts the timer and, with m_asyncVoting, the voting thread. False after
    // a level 1 line when one of them cannot be had. Without a voting thread asynchronous events wait for the next
    // synchronous one.
    bool initialize(const ZantProviderRecord& backendInterface);
    void addDeviceCores(uint32_t deviceId, const std::vector<uint32_t>& coreIds);
    void setPerfConfig(const KORCoreConfig& coreConfig);
    bool createPowerConfigId();
    bool setMemoryConfig();
    void setRpcAndTimeoutConfig();

    // Always true: a failed vote is logged and fails no hook. async: the voting thread may do the work.
    bool setState(uint8_t event, bool async);
    // No vote is cast by the change itself; a hold in progress ends without one.
    void setPerfProfile(uint32_t profile);

    bool m_asyncVoting = true;       // set before initialize
    bool m_useClientContext = true;  // set before createPowerConfigId

private:
    bool createTimer();
    bool startVotingThread();
    void perfDriverThreadFuncSignal();
    static void onTimerExpired(void* driver);
    void stopVotingThread();
    void takeDownTimer();

    bool perfDriverStateUpdate() REQUIRES(m_mutex);
    bool runStep(const FamilyStep& step, uint32_t state, bool mayVote) REQUIRES(m_mutex);
    bool castVote(const FamilyStep& step, uint32_t state) REQUIRES(m_mutex);
    void beginHold() REQUIRES(m_mutex);
    bool endHold() REQUIRES(m_mutex);
    bool isHoldRunning() REQUIRES(m_mutex);
    void stopHold() REQUIRES(m_mutex);

    SteadyClock& m_clock;
    // Order of locks: this one, then the timer's own or the infrastructure's, which is the process's.
    Mutex m_mutex;
    ConditionVariable m_eventCondition;  // one waiter, the voting thread
    PowerVotes m_votes GUARDED_BY(m_mutex);
    uint8_t m_eventBitMask GUARDED_BY(m_mutex) = 0;  // pending events
    std::unique_ptr<OneShotTimer> m_perfDriverTimer GUARDED_BY(m_mutex);
    std::atomic<bool> m_stopRequested{false};
    std::thread m_thread;
    bool m_graphBusy GUARDED_BY(m_mutex) = false;  // an inference or a deinitialisation is under way
    bool m_eventSignalled GUARDED_BY(m_mutex) = false;
    bool m_threadExit GUARDED_BY(m_mutex) = false;
    bool m_timerArmed GUARDED_BY(m_mutex) = false;   // the hold was begun and not ended
    bool m_expiryStale GUARDED_BY(m_mutex) = false;  // the callback that runs belongs to a hold that was ended
};

}  // namespace zant::kor
