// A mutex that clang's thread safety analysis can follow. Members guarded by one are marked GUARDED_BY.
#pragma once

#include <chrono>

#if defined(_WIN32)
#include "platform/native_lock_windows.h"
#else
#include "platform/native_lock_posix.h"
#endif

#if defined(__clang__)
#define ZANT_THREAD_ANNOTATION(attribute) __attribute__((attribute))
#else
#define ZANT_THREAD_ANNOTATION(attribute)
#endif

#define CAPABILITY(name) ZANT_THREAD_ANNOTATION(capability(name))
#define SCOPED_CAPABILITY ZANT_THREAD_ANNOTATION(scoped_lockable)
#define GUARDED_BY(mutex) ZANT_THREAD_ANNOTATION(guarded_by(mutex))
#define REQUIRES(...) ZANT_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) ZANT_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ZANT_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define EXCLUDES(...) ZANT_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))

namespace zant {

class CAPABILITY("mutex") Mutex {
public:
    void lock() ACQUIRE() { m_mutex.lock(); }
    void unlock() RELEASE() { m_mutex.unlock(); }

private:
    friend class ConditionVariable;
    NativeLock m_mutex;
};

class SCOPED_CAPABILITY MutexLock {
public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexLock() RELEASE() { m_mutex.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

private:
    Mutex& m_mutex;
};

// Waits with a Mutex, which is held when wait is called and when it returns. Wake-ups may be spurious.
class ConditionVariable {
public:
    void wait(Mutex& mutex) REQUIRES(mutex) { m_condition.wait(mutex.m_mutex); }
    void waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) REQUIRES(mutex) {
        m_condition.waitUntil(mutex.m_mutex, deadline);
    }
    void notifyOne() noexcept { m_condition.notifyOne(); }
    void notifyAll() noexcept { m_condition.notifyAll(); }

private:
    NativeCondition m_condition;
};

}  // namespace zant
