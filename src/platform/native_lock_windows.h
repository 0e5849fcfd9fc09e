// The lock and the condition behind mutex.h: the system's own, which need no memory, and whose timed waits do not go by
// the wall clock. Those of MinGW's threads library do neither.
#pragma once

#include <chrono>

namespace zant {

class NativeLock {
public:
    void lock() noexcept;
    void unlock() noexcept;

private:
    friend class NativeCondition;
    void* m_lock = nullptr;  // an SRWLOCK
};

class NativeCondition {
public:
    void wait(NativeLock& held) noexcept;
    void waitUntil(NativeLock& held, std::chrono::steady_clock::time_point deadline) noexcept;
    void notifyOne() noexcept;
    void notifyAll() noexcept;

private:
    void* m_condition = nullptr;  // a CONDITION_VARIABLE
};

}  // namespace zant
