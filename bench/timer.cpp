// The one-shot timer's calls, each against lock, clock, unlock; and how late an expiry comes, against a bare timed
// wait.
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <mutex>
#include <thread>

#include "bench/harness.h"
#include "perf/one_shot_timer.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr uint32_t HOLD_US = 300000;

void ignore(void*) {}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

// A round takes each timer of a batch from idle to running and back, as a hold that is ended in time does. The threads
// sleep towards deadlines of earlier rounds, except where those have just passed.
struct Batch {
    static constexpr int SIZE = 16;

    Batch() {
        for (auto& timer : timers) {
            if (!timer.create(ignore, nullptr)) std::abort();
        }
    }
    template <class Call>
    double secondsPerCall(Call call) {
        const auto start = Clock::now();
        for (auto& timer : timers) call(timer);
        return secondsSince(start) / SIZE;
    }

    zant::kor::OneShotTimer timers[SIZE];
};

void measureCalls() {
    Batch batch;
    std::mutex mutexes[Batch::SIZE];
    const auto floor = [&mutexes] {
        const auto start = Clock::now();
        for (auto& mutex : mutexes) {
            const std::lock_guard lock(mutex);
            bench::keep(Clock::now());
        }
        return secondsSince(start) / Batch::SIZE;
    };
    constexpr int ROUNDS = 20000;
    constexpr const char* NAMES[] = {"timer/start", "timer/remaining", "timer/stop"};
    std::vector<double> seconds[3];
    std::vector<double> ratios[3];
    std::vector<double> floors;
    for (int round = 0; round < ROUNDS; ++round) {
        floors.push_back(floor());
        seconds[0].push_back(batch.secondsPerCall([](auto& timer) { timer.start(HOLD_US); }));
        seconds[1].push_back(batch.secondsPerCall([](auto& timer) { bench::keep(timer.remaining()); }));
        seconds[2].push_back(batch.secondsPerCall([](auto& timer) { timer.stop(); }));
        for (int i = 0; i < 3; ++i) ratios[i].push_back(seconds[i].back() / floors.back());
    }
    std::printf("start %.1f ns, remaining %.1f ns, stop %.1f ns; lock, clock, unlock %.1f ns\n",
                bench::median(seconds[0]) * 1e9, bench::median(seconds[1]) * 1e9, bench::median(seconds[2]) * 1e9,
                bench::median(floors) * 1e9);
    for (int i = 0; i < 3; ++i) bench::figure(NAMES[i], bench::median(ratios[i]), 4.00);
}

// One expiry of a hold, taken on the thread that it comes to.
struct Expiry {
    static void take(void* self) { static_cast<Expiry*>(self)->at = Clock::now(); }
    double lateUs() const { return std::chrono::duration<double, std::micro>(at - due).count(); }

    Clock::time_point due;
    Clock::time_point at;
};

double percentile99(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() * 99 / 100];
}

// Timers and bare waits in turns, begun a few milliseconds apart so that no two wake together.
void measureLateness() {
    constexpr int PAIRS = 40;
    constexpr int ROUNDS = 6;
    const auto hold = std::chrono::microseconds(HOLD_US);
    std::vector<double> timerLate;
    std::vector<double> waitLate;
    for (int round = 0; round < ROUNDS; ++round) {
        std::deque<zant::kor::OneShotTimer> timers(PAIRS);
        std::vector<Expiry> expiries(PAIRS);
        std::vector<Expiry> waits(PAIRS);
        std::vector<std::thread> threads;
        for (size_t i = 0; i < PAIRS; ++i) {
            if (!timers[i].create(Expiry::take, &expiries[i])) std::abort();
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
            expiries[i].due = Clock::now() + hold;
            timers[i].start(HOLD_US);
            std::this_thread::sleep_for(std::chrono::milliseconds(3));
            waits[i].due = Clock::now() + hold;
            threads.emplace_back([&wait = waits[i]] {
                std::mutex mutex;
                std::condition_variable signal;
                std::unique_lock lock(mutex);
                while (signal.wait_until(lock, wait.due) == std::cv_status::no_timeout) continue;
                Expiry::take(&wait);
            });
        }
        std::this_thread::sleep_for(hold + std::chrono::milliseconds(50));
        for (auto& timer : timers) timer.shutdown();
        for (auto& thread : threads) thread.join();
        for (size_t i = 0; i < PAIRS; ++i) {
            timerLate.push_back(expiries[i].lateUs());
            waitLate.push_back(waits[i].lateUs());
        }
    }
    std::printf("lateness of %zu expiries of 300 ms: median %.0f us, 99th percentile %.0f us\n", timerLate.size(),
                bench::median(timerLate), percentile99(timerLate));
    std::printf("of as many bare timed waits: median %.0f us, 99th percentile %.0f us\n", bench::median(waitLate),
                percentile99(waitLate));
    bench::figure("timer/lateness_median", bench::median(timerLate) / bench::median(waitLate), 1.50);
    bench::figure("timer/lateness_99", percentile99(timerLate) / percentile99(waitLate), 3.00);
}

}  // namespace

int main() {
    measureCalls();
    measureLateness();
}
