// A clock whose time a test moves.
//
// A thread that waits by it looks at the time and registers itself with its own mutex held, and a wake-up takes that
// mutex before it notifies: so none is lost between the look and the wait. Owners of a mutex that a thread waits with
// outlive the calls that wake it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "platform/steady_clock.h"

namespace zant::test {

constexpr int64_t NS_PER_US = 1000;
constexpr int64_t NS_PER_MS = 1000000;

class FakeClock final : public SteadyClock {
public:
    // tickNs: what each look at the clock moves it by.
    explicit FakeClock(int64_t tickNs = 0) : m_tick(tickNs) {}

    int64_t nowNs() noexcept override;
    void waitUntil(ConditionVariable& signal, Mutex& mutex, int64_t deadlineNs) override REQUIRES(mutex);

    // Time passes; the sleepers whose deadline it reaches wake.
    void advance(int64_t ns);
    // Time passes, and nobody notices yet.
    void jump(int64_t ns);
    void wakeSpuriously();

    // Waits, 10 real seconds at most, until a thread sleeps towards a time that is so far from now.
    bool awaitSleeper(int64_t nsFromNow);
    // The same until the clock has been looked at more often than so.
    bool awaitReads(uint64_t moreThan);
    uint64_t reads();

private:
    struct Sleeper {
        ConditionVariable* signal;
        Mutex* mutex;
        int64_t deadline;
    };

    void wakeUpTo(int64_t deadline);

    const int64_t m_tick;
    std::mutex m_mutex;  // inside the sleepers' mutexes
    std::condition_variable m_changed;
    int64_t m_now = 1000 * NS_PER_MS;
    uint64_t m_reads = 0;
    std::vector<Sleeper> m_sleepers;
};

}  // namespace zant::test
