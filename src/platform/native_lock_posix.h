// The lock and the condition behind mutex.h: those of the C++ library.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace zant {

using NativeLock = std::mutex;

class NativeCondition {
public:
    void wait(NativeLock& held) {
        std::unique_lock<NativeLock> lock(held, std::adopt_lock);
        m_condition.wait(lock);
        lock.release();
    }
    void waitUntil(NativeLock& held, std::chrono::steady_clock::time_point deadline) {
        std::unique_lock<NativeLock> lock(held, std::adopt_lock);
        m_condition.wait_until(lock, deadline);
        lock.release();
    }
    void notifyOne() noexcept { m_condition.notify_one(); }
    void notifyAll() noexcept { m_condition.notify_all(); }

private:
    std::condition_variable m_condition;
};

}  // namespace zant
