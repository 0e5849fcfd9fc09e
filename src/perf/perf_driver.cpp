#include "perf/perf_driver.h"

#include <exception>
#include <new>

#include "platform/logger.h"
#include "platform/system.h"
#include "soc/soc_info_registry.h"

namespace zant::kor {

namespace {

constexpr uint32_t HOLD_US = 300000;
constexpr const char* VOTING_THREAD_NAME = "zant_perf_driver";

}  // namespace

KORDevicePerfDriver::KORDevicePerfDriver() : KORDevicePerfDriver(soc::currentDspInfos(), SteadyClock::system()) {}

KORDevicePerfDriver::KORDevicePerfDriver(std::vector<soc::DspInfo> dspInfos, SteadyClock& clock) : m_clock(clock) {
    MutexLock lock(m_mutex);
    m_votes.setDspInfos(std::move(dspInfos));
    if (m_votes.arch() == 0) ZANT_LOG_INFO("Unable to determine stub");
}

KORDevicePerfDriver::~KORDevicePerfDriver() {
    m_stopRequested.store(true);
    stopVotingThread();
    takeDownTimer();
    MutexLock lock(m_mutex);
    m_votes.destroyPowerConfigIds();
}

bool KORDevicePerfDriver::initialize(const ZantProviderRecord& backendInterface) {
    m_stopRequested.store(false);
    {
        MutexLock lock(m_mutex);
        m_votes.setBackendInterface(backendInterface);
    }
    if (!createTimer()) {
        ZANT_LOG_ERROR("Failed to create perfdriver timer.");
        return false;
    }
    if (m_asyncVoting && !startVotingThread()) {
        ZANT_LOG_ERROR("Start Voting Thread initialization failed!");
        takeDownTimer();
        return false;
    }
    return true;
}

void KORDevicePerfDriver::addDeviceCores(uint32_t deviceId, const std::vector<uint32_t>& coreIds) {
    MutexLock lock(m_mutex);
    m_votes.addDeviceCores(deviceId, coreIds);
}

void KORDevicePerfDriver::setPerfConfig(const KORCoreConfig& coreConfig) {
    MutexLock lock(m_mutex);
    m_votes.setPerfConfig(coreConfig);
}

bool KORDevicePerfDriver::createPowerConfigId() {
    MutexLock lock(m_mutex);
    return m_votes.createPowerConfigId(m_useClientContext);
}

bool KORDevicePerfDriver::setMemoryConfig() {
    MutexLock lock(m_mutex);
    return m_votes.setMemoryConfig();
}

void KORDevicePerfDriver::setRpcAndTimeoutConfig() {
    MutexLock lock(m_mutex);
    m_votes.setRpcAndTimeoutConfig();
}

bool KORDevicePerfDriver::createTimer() {
    std::unique_ptr<OneShotTimer> timer(new (std::nothrow) OneShotTimer(m_clock));
    takeDownTimer();
    if (timer == nullptr) {
        ZANT_LOG_ERROR("m_perfDriverTimer is nullptr. Skipping creation of perf driver timer");
        return false;
    }
    OneShotTimer& created = *timer;
    {
        MutexLock lock(m_mutex);
        m_perfDriverTimer = std::move(timer);
    }
    if (!created.create(onTimerExpired, this)) {
        ZANT_LOG_ERROR("Failed to create perf driver timer.");
        return false;
    }
    return true;
}

// The timer is joined with the lock released: its callback may be waiting for it.
void KORDevicePerfDriver::takeDownTimer() {
    std::unique_ptr<OneShotTimer> timer;
    {
        MutexLock lock(m_mutex);
        timer = std::move(m_perfDriverTimer);
        m_timerArmed = false;
    }
    if (timer != nullptr) timer->shutdown();
}

void KORDevicePerfDriver::onTimerExpired(void* driver) {
    auto* self = static_cast<KORDevicePerfDriver*>(driver);
    if (!self->m_stopRequested.load()) self->setState(TIMER_EXPIRED, true);
}

bool KORDevicePerfDriver::startVotingThread() {
    if (m_thread.joinable()) return true;
    {
        MutexLock lock(m_mutex);
        m_eventSignalled = false;
    }
    try {
        m_thread = std::thread([this] { perfDriverThreadFuncSignal(); });
    } catch (const std::exception& error) {
        ZANT_LOG_ERROR("Exception occurred while creating perf driver voting thread. Reason:  %s", error.what());
        return false;
    }
    return true;
}

void KORDevicePerfDriver::stopVotingThread() {
    if (!m_thread.joinable()) return;
    {
        MutexLock lock(m_mutex);
        m_eventSignalled = true;
        m_threadExit = true;
    }
    m_eventCondition.notifyOne();
    m_thread.join();
}

void KORDevicePerfDriver::perfDriverThreadFuncSignal() {
    system::setThreadName(VOTING_THREAD_NAME);
    MutexLock lock(m_mutex);
    while (true) {
        while (!m_eventSignalled) m_eventCondition.wait(m_mutex);
        if (m_threadExit || m_stopRequested.load()) break;
        if (!perfDriverStateUpdate()) {
            ZANT_LOG_ERROR("perfDriverThreadFuncSignal() perf set state failed for m_eventBitMask = %d",
                           static_cast<int>(m_eventBitMask));
        }
        m_eventSignalled = false;
    }
    m_eventSignalled = false;
}

bool KORDevicePerfDriver::setState(uint8_t event, bool async) {
    if (m_stopRequested.load()) return true;
    const bool isExpiry = (event & TIMER_EXPIRED) != 0;
    if (isExpiry) async = m_asyncVoting;
    bool notify = false;
    {
        MutexLock lock(m_mutex);
        if (m_stopRequested.load()) return true;  // the destructor came while this waited for the lock
        if (isExpiry && m_expiryStale) {
            m_expiryStale = false;
            return true;
        }
        if ((m_eventBitMask & event) != 0) return true;
        m_eventBitMask = static_cast<uint8_t>(m_eventBitMask | event);
        if (async) {
            m_eventSignalled = true;
            notify = !m_threadExit;
        } else {
            if (!perfDriverStateUpdate()) {
                ZANT_LOG_ERROR("Sync call perfDriverStateUpdate() failed to update state: %d", static_cast<int>(event));
            }
            m_eventBitMask = static_cast<uint8_t>(m_eventBitMask & ~event);
        }
    }
    if (notify) m_eventCondition.notifyOne();
    return true;
}

void KORDevicePerfDriver::setPerfProfile(uint32_t profile) {
    MutexLock lock(m_mutex);
    if (profile == m_votes.perfProfile()) return;
    m_votes.setPerfProfile(profile);
    ZANT_LOG_VERBOSE("Setting Perf Profile to %d", static_cast<int>(profile));
    if (isHoldRunning()) {
        ZANT_LOG_VERBOSE("Performance Profile changed while timer active - resetting timer state");
        stopHold();
    }
    m_votes.followProfileWithRpcPolling();
}

bool KORDevicePerfDriver::perfDriverStateUpdate() {
    const PerfFamily family = perfFamilyOf(m_votes.perfProfile());
    if (family == PerfFamily::noVoting) return true;
    if (family == PerfFamily::unknown) {
        ZANT_LOG_ERROR("Invalid performance profile %d", static_cast<int>(m_votes.perfProfile()));
        return false;
    }
    const FamilySteps& steps = stepsOf(family, m_votes.sustainsCustomState());
    bool result = true;
    bool beganHold = false;
    for (size_t i = 0; i < steps.size(); ++i) {
        const EventColumn& column = EVENT_ORDER[i];
        if (!steps[i].isLookedAt || (m_eventBitMask & column.event) == 0) continue;
        // An expiry that waited while a hold began is of an earlier one: its low vote would stand below this hold.
        const bool isStale = column.event == TIMER_EXPIRED && beganHold && isHoldRunning();
        // After a failed vote the rest of the pass casts none, and its events are gone all the same.
        if (!isStale) result = runStep(steps[i], column.state, result) && result;
        beganHold = beganHold || steps[i].hold == HoldStep::begin;
        m_eventBitMask = static_cast<uint8_t>(m_eventBitMask & ~column.event);
    }
    return result;
}

bool KORDevicePerfDriver::runStep(const FamilyStep& step, uint32_t state, bool mayVote) {
    bool result = true;
    switch (step.hold) {
        case HoldStep::begin:
            beginHold();
            break;
        case HoldStep::endOrVote:
            if (!endHold() && mayVote) result = castVote(step, state);
            break;
        case HoldStep::voteUnlessBusy:
            if (!m_graphBusy && mayVote) result = castVote(step, state);
            break;
        case HoldStep::none:
            if (mayVote) result = castVote(step, state);
            break;
    }
    if (step.busy != BusyStep::unchanged) m_graphBusy = step.busy == BusyStep::set;
    return result;
}

bool KORDevicePerfDriver::castVote(const FamilyStep& step, uint32_t state) {
    switch (step.vote) {
        case VoteKind::profile:
            return m_votes.voteProfile(state);
        case VoteKind::custom:
            return m_votes.voteCustomState(state);
        case VoteKind::idle:
            return m_votes.voteIdle(step.mode, state);
        case VoteKind::release:
            return m_votes.voteRelease(step.mode, state);
        case VoteKind::floor:
            return m_votes.voteFloor(state);
    }
    return false;
}

// A start that is refused during a firing goes unnoticed: the next event finds no time remaining and votes. A callback
// that was to be dropped then stands for the end of this hold, or nothing would ever lower the high vote.
void KORDevicePerfDriver::beginHold() {
    if (m_perfDriverTimer != nullptr && !m_perfDriverTimer->start(HOLD_US)) m_expiryStale = false;
    m_graphBusy = false;
    m_timerArmed = m_perfDriverTimer != nullptr;
}

bool KORDevicePerfDriver::isHoldRunning() {
    if (!m_timerArmed) return false;
    const uint32_t remaining = m_perfDriverTimer->remaining();
    return remaining > 0 && remaining <= HOLD_US;  // the whole of it in the clock tick of the start
}

// The deadline may pass between the look at the remaining time and the stop. The callback then waits for m_mutex, so
// that waiting for it here would hang both. It is left alone instead, and its event is dropped when it comes: the hold
// that it belongs to has been ended. Since it can only come once m_mutex is free, it cannot have come before.
void KORDevicePerfDriver::stopHold() {
    if (!m_perfDriverTimer->stopUnlessFiring()) m_expiryStale = true;
    m_timerArmed = false;
}

bool KORDevicePerfDriver::endHold() {
    if (!isHoldRunning()) return false;
    stopHold();
    return true;
}

}  // namespace zant::kor
