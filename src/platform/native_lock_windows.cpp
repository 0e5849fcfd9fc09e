#include "platform/native_lock_windows.h"

#include <windows.h>

#include <algorithm>

namespace zant {

namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && sizeof(CONDITION_VARIABLE) == sizeof(void*));

SRWLOCK* srw(void*& lock) noexcept {
    return reinterpret_cast<SRWLOCK*>(&lock);
}

CONDITION_VARIABLE* native(void*& condition) noexcept {
    return reinterpret_cast<CONDITION_VARIABLE*>(&condition);
}

}  // namespace

void NativeLock::lock() noexcept {
    AcquireSRWLockExclusive(srw(m_lock));
}

void NativeLock::unlock() noexcept {
    ReleaseSRWLockExclusive(srw(m_lock));
}

void NativeCondition::wait(NativeLock& held) noexcept {
    SleepConditionVariableSRW(native(m_condition), srw(held.m_lock), INFINITE, 0);
}

void NativeCondition::waitUntil(NativeLock& held, std::chrono::steady_clock::time_point deadline) noexcept {
    using std::chrono::milliseconds;
    constexpr milliseconds longest(INFINITE - 1);  // the wake-up before the deadline is a spurious one
    const auto left = std::chrono::ceil<milliseconds>(deadline - std::chrono::steady_clock::now());
    const milliseconds wait = std::clamp(left, milliseconds(0), longest);
    SleepConditionVariableSRW(native(m_condition), srw(held.m_lock), static_cast<DWORD>(wait.count()), 0);
}

void NativeCondition::notifyOne() noexcept {
    WakeConditionVariable(native(m_condition));
}

void NativeCondition::notifyAll() noexcept {
    WakeAllConditionVariable(native(m_condition));
}

}  // namespace zant
