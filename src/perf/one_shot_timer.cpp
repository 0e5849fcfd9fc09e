#include "perf/one_shot_timer.h"

#include <exception>
#include <limits>

namespace zant::kor {

namespace {

constexpr int64_t NEVER = std::numeric_limits<int64_t>::max();
constexpr int64_t NS_PER_US = 1000;

}  // namespace

OneShotTimer::~OneShotTimer() {
    shutdown();
}

bool OneShotTimer::create(Callback callback, void* context) {
    MutexLock lock(m_lock);
    if (m_state != State::ended) return false;
    m_callback = callback;
    m_context = context;
    m_exit = false;
    m_state = State::starting;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::exception&) {
        m_state = State::ended;
        return false;
    }
    while (m_state == State::starting) m_signal.wait(m_lock);
    m_created = true;
    return true;
}

bool OneShotTimer::start(uint32_t microseconds) {
    MutexLock lock(m_lock);
    if (!m_created || (m_state != State::idle && m_state != State::running)) return false;
    m_deadline = m_clock.nowNs() + int64_t{microseconds} * NS_PER_US;
    if (m_state == State::idle) {
        m_state = State::running;
        if (m_deadline < m_sleepsTowards) m_signal.notifyAll();
    }
    return true;
}

bool OneShotTimer::stop() {
    MutexLock lock(m_lock);
    if (!m_created) return false;
    while (m_state == State::firing) m_signal.wait(m_lock);
    if (m_state == State::running) m_state = State::idle;
    return true;
}

bool OneShotTimer::stopUnlessFiring() {
    MutexLock lock(m_lock);
    if (!m_created || m_state == State::firing) return false;
    if (m_state == State::running) m_state = State::idle;
    return true;
}

uint32_t OneShotTimer::remaining() {
    MutexLock lock(m_lock);
    if (!m_created) return NOT_CREATED;
    switch (m_state) {
        case State::running:
            return static_cast<uint32_t>((m_deadline - m_clock.nowNs()) / NS_PER_US);
        case State::idle:
        case State::firing:
            return 0;
        case State::starting:
        case State::ended:
            break;
    }
    return NOT_CREATED;
}

void OneShotTimer::shutdown() {
    {
        MutexLock lock(m_lock);
        if (!m_created) return;
        m_created = false;
        m_exit = true;
        m_signal.notifyAll();
    }
    m_thread.join();
}

void OneShotTimer::run() {
    MutexLock lock(m_lock);
    m_state = State::idle;
    m_sleepsTowards = NEVER;
    m_signal.notifyAll();
    while (!m_exit) {
        if (m_state == State::running && m_clock.nowNs() >= m_deadline) {
            fire();
        } else if (m_state == State::running) {
            m_sleepsTowards = m_deadline;
            m_clock.waitUntil(m_signal, m_lock, m_sleepsTowards);
        } else if (m_sleepsTowards != NEVER && m_clock.nowNs() < m_sleepsTowards) {
            m_clock.waitUntil(m_signal, m_lock, m_sleepsTowards);  // a deadline that was stopped
        } else {
            m_sleepsTowards = NEVER;
            m_signal.wait(m_lock);
        }
    }
    m_state = State::ended;
}

void OneShotTimer::fire() {
    m_state = State::firing;
    m_lock.unlock();
    m_callback(m_context);
    m_lock.lock();
    m_state = State::idle;
    m_sleepsTowards = NEVER;
    m_signal.notifyAll();
}

}  // namespace zant::kor
