// A timer that fires once: it holds a high vote between two inferences.
//
// One thread serves it from create to shutdown. start and stop move the state themselves under the timer's lock and
// wake the thread only for a deadline earlier than the one that it sleeps towards; a deadline that was stopped or
// moved is slept through. So a hold that is stopped and started again costs no wake-up.
#pragma once

#include <cstdint>
#include <thread>

#include "platform/mutex.h"
#include "platform/steady_clock.h"

namespace zant::kor {

class OneShotTimer {
public:
    using Callback = void (*)(void* context);

    enum class State : uint32_t {
        starting = 0,  // create has begun the thread
        idle = 1,
        running = 2,  // counting down to the deadline
        firing = 3,   // the callback runs, with the lock released
        ended = 4,    // no thread: before create and after shutdown
    };

    static constexpr uint32_t NOT_CREATED = 0xFFFFFFFFU;  // what remaining gives without a timer

    explicit OneShotTimer(SteadyClock& clock = SteadyClock::system()) : m_clock(clock) {}
    ~OneShotTimer();
    OneShotTimer(const OneShotTimer&) = delete;
    OneShotTimer& operator=(const OneShotTimer&) = delete;

    // Begins the thread; returns once it is idle. False when the timer was created already, and when no thread can be
    // had: the timer is then as before. create and shutdown are for the owner's thread, never for the callback.
    bool create(Callback callback, void* context);
    // Sets the deadline to now plus the duration. False unless created, and during a firing. In a running timer a later
    // deadline holds at once, an earlier one when the old one is reached.
    bool start(uint32_t microseconds);
    // Makes the timer idle, waiting for a callback that runs. False unless created. Not to be called from the callback,
    // nor with a lock held that the callback takes.
    bool stop();
    // The same without waiting: false when the callback runs already.
    bool stopUnlessFiring();
    // Microseconds to the deadline, the low 32 bits of a signed number: a deadline that has passed without the thread
    // having noticed gives a huge number. 0 when idle or firing.
    uint32_t remaining();
    // Ends the thread and joins it, without firing. Does nothing unless created.
    void shutdown();

private:
    void run();
    void fire() REQUIRES(m_lock);

    SteadyClock& m_clock;
    Callback m_callback = nullptr;
    void* m_context = nullptr;
    std::thread m_thread;
    Mutex m_lock;
    ConditionVariable m_signal;  // all state changes that somebody waits for
    int64_t m_deadline GUARDED_BY(m_lock) = 0;
    int64_t m_sleepsTowards GUARDED_BY(m_lock) = 0;
    State m_state GUARDED_BY(m_lock) = State::ended;
    bool m_exit GUARDED_BY(m_lock) = false;
    bool m_created GUARDED_BY(m_lock) = false;
};

}  // namespace zant::kor
