// The monotonic clock, and waiting by it. An object, so that a test can move time instead of sleeping.
#pragma once

#include <cstdint>

#include "platform/mutex.h"

namespace zant {

class SteadyClock {
public:
    virtual int64_t nowNs() noexcept = 0;
    // Waits for a notification, a spurious wake-up, or the deadline. The mutex is held at both ends.
    virtual void waitUntil(ConditionVariable& signal, Mutex& mutex, int64_t deadlineNs) REQUIRES(mutex) = 0;

    // The system's own, which lives as long as the library.
    static SteadyClock& system() noexcept;

protected:
    ~SteadyClock() = default;  // not virtual, so that the system's own needs no destructor run at unload
};

}  // namespace zant
