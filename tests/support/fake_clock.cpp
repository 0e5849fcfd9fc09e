#include "support/fake_clock.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace zant::test {

namespace {

constexpr std::chrono::seconds PATIENCE{10};

}  // namespace

int64_t FakeClock::nowNs() noexcept {
    const std::lock_guard lock(m_mutex);
    ++m_reads;
    m_changed.notify_all();
    m_now += m_tick;
    return m_now;
}

void FakeClock::waitUntil(ConditionVariable& signal, Mutex& mutex, int64_t deadlineNs) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_now >= deadlineNs) return;
        m_sleepers.push_back({&signal, &mutex, deadlineNs});
        m_changed.notify_all();
    }
    signal.wait(mutex);
    const std::lock_guard lock(m_mutex);
    m_sleepers.erase(std::find_if(m_sleepers.begin(), m_sleepers.end(),
                                  [&](const Sleeper& sleeper) { return sleeper.mutex == &mutex; }));
}

void FakeClock::advance(int64_t ns) {
    jump(ns);
    const auto now = [this] {
        const std::lock_guard lock(m_mutex);
        return m_now;
    };
    wakeUpTo(now());
}

void FakeClock::jump(int64_t ns) {
    const std::lock_guard lock(m_mutex);
    m_now += ns;
}

void FakeClock::wakeSpuriously() {
    wakeUpTo(std::numeric_limits<int64_t>::max());
}

void FakeClock::wakeUpTo(int64_t deadline) {
    std::vector<Sleeper> sleepers;
    {
        const std::lock_guard lock(m_mutex);
        std::copy_if(m_sleepers.begin(), m_sleepers.end(), std::back_inserter(sleepers),
                     [deadline](const Sleeper& sleeper) { return sleeper.deadline <= deadline; });
    }
    for (const Sleeper& sleeper : sleepers) {
        const MutexLock lock(*sleeper.mutex);
        sleeper.signal->notifyAll();
    }
}

bool FakeClock::awaitSleeper(int64_t nsFromNow) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, PATIENCE, [&] {
        return std::any_of(m_sleepers.begin(), m_sleepers.end(),
                           [&](const Sleeper& sleeper) { return sleeper.deadline == m_now + nsFromNow; });
    });
}

bool FakeClock::awaitReads(uint64_t moreThan) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, PATIENCE, [&] { return m_reads > moreThan; });
}

uint64_t FakeClock::reads() {
    const std::lock_guard lock(m_mutex);
    return m_reads;
}

}  // namespace zant::test
