#include "platform/steady_clock.h"

#include <chrono>

namespace zant {

namespace {

class SystemSteadyClock final : public SteadyClock {
public:
    int64_t nowNs() noexcept override {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }
    void waitUntil(ConditionVariable& signal, Mutex& mutex, int64_t deadlineNs) override REQUIRES(mutex) {
        using Clock = std::chrono::steady_clock;
        signal.waitUntil(mutex, Clock::time_point(std::chrono::nanoseconds(deadlineNs)));
    }
};

constinit SystemSteadyClock g_systemSteadyClock;

}  // namespace

SteadyClock& SteadyClock::system() noexcept {
    return g_systemSteadyClock;
}

}  // namespace zant
