// Expiries against the events that end their holds.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

#include "perf/driver_fixture.h"
#include "platform/logger.h"
#include "support/fake_clock.h"

namespace zant::test {
namespace {

constexpr uint8_t INIT_START = 1, INIT_DONE = 2, RUN_START = 4, RUN_DONE = 8, DEINIT_START = 16, DEINIT_DONE = 32;
constexpr int64_t PAST_THE_HOLD = 400 * NS_PER_MS;

std::function<void()> g_betweenLookAndStop;

// The driver says so after it has seen time remaining and before it stops the timer.
void runInWindow(const char* format, ZantLogLevel, uint64_t, va_list) {
    if (std::strncmp(format, "Performance Profile changed", 27) == 0) g_betweenLookAndStop();
}

class HoldRaceTest : public DriverTest {
protected:
    HoldRaceTest() {
        log::setupLogging(runInWindow, ZANT_LOG_LEVEL_VERBOSE);
        g_betweenLookAndStop = [this] { expire(); };
    }
    ~HoldRaceTest() override {
        m_driver.reset();
        log::g_currentLevel = 0;
        log::removeLogger(log::g_logHandle.exchange(0));
    }

    // Returns when the timer's thread has seen the time, and so fires.
    void expire() {
        const uint64_t reads = m_clock.reads();
        m_clock.advance(PAST_THE_HOLD);
        EXPECT_TRUE(m_clock.awaitReads(reads));
    }

    FakeClock m_clock{1};
};

TEST_F(HoldRaceTest, AnExpiryWhoseHoldWasEndedIsDroppedAndTheNextOneIsNot) {
    for (const bool async : {false, true}) {
        begin(m_clock, 4, async);
        for (const uint32_t profile : {11U, 4U, 11U, 4U}) {
            m_driver->setState(RUN_DONE, false);
            m_driver->setPerfProfile(profile);
            m_infra.takeVotes();  // the polling time
            EXPECT_FALSE(m_infra.awaitVotes(1, std::chrono::milliseconds(20))) << "the high vote stands";
            m_driver->setState(RUN_DONE, false);
            m_clock.advance(PAST_THE_HOLD);
            EXPECT_EQ(awaited(), "idle 1 3");
        }
    }
}

// A hold that begins while the dropped expiry is still on its way is refused by the timer: its high vote must fall all
// the same. The thread that begins it queues for the driver before the timer's does.
TEST_F(HoldRaceTest, AHoldBegunDuringADroppedFiringEnds) {
    constexpr int ROUNDS = 6;
    int ended = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        begin(m_clock, 4);
        m_driver->setState(RUN_DONE, false);
        std::thread nextRun;
        g_betweenLookAndStop = [&] {
            nextRun = std::thread([this] { m_driver->setState(RUN_DONE, false); });
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            expire();
        };
        m_driver->setPerfProfile(11);
        nextRun.join();
        m_clock.advance(PAST_THE_HOLD);
        if (m_infra.awaitVotes(2, std::chrono::milliseconds(300))) ++ended;  // the polling time and the low vote
    }
    EXPECT_GE(ended, ROUNDS - 1) << "the machine may let the timer's thread pass once";
}

// Each look moves it on by up to a tenth of the hold or so, and nobody sleeps: deadlines pass between any two looks.
class RacingClock final : public SteadyClock {
public:
    int64_t nowNs() noexcept override {
        const int64_t step = m_looks.fetch_add(1) * 7919 % 37 + 1;
        return m_now.fetch_add(step * NS_PER_MS);
    }
    void waitUntil(ConditionVariable&, Mutex& mutex, int64_t) override REQUIRES(mutex) {
        mutex.unlock();
        std::this_thread::yield();
        mutex.lock();
    }

private:
    std::atomic<int64_t> m_now{0};
    std::atomic<int64_t> m_looks{0};
};

class HoldStressTest : public DriverTest {
protected:
    ~HoldStressTest() override { m_driver.reset(); }
    void expectHigh(const char* when) {
        for (const std::string& vote : take()) {
            if (vote.substr(0, 3) != "rpc") m_isHigh = vote.substr(0, 7) == "profile";
        }
        ++m_checks;
        m_lowAmiss += m_isHigh ? 0 : 1;
        EXPECT_TRUE(m_isHigh || m_lowAmiss > 3) << when << " " << m_checks;
    }

    RacingClock m_clock;
    bool m_isHigh = false;
    int m_checks = 0;
    int m_lowAmiss = 0;
};

TEST_F(HoldStressTest, EventsAgainstExpiries) {
    constexpr int RUNS = 26000;
    for (const bool async : {false, true}) {
        begin(m_clock, 4, async);
        for (int run = 0; run < RUNS; ++run) {
            m_driver->setState(RUN_START, async);
            if (!async) expectHigh("after the start");
            if (run % 11 == 0) m_driver->setPerfProfile(run % 2 == 0 ? 4 : 5);
            if (!async) expectHigh("before the end");
            m_driver->setState(RUN_DONE, async);
            if (run % 3 == 0) std::this_thread::yield();
            if (run % 7 == 0) m_driver->setPerfProfile(run % 2 == 0 ? 5 : 4);
            if (run % 13 == 0) {
                for (const uint8_t event : {INIT_START, INIT_DONE}) m_driver->setState(event, false);
            }
            if (run % 17 == 0) {
                for (const uint8_t event : {DEINIT_START, DEINIT_DONE}) m_driver->setState(event, false);
            }
            if (async && run % 100 == 0) take();
        }
        bool hasEnded = false;  // a start may have been refused once, never for good
        for (int attempt = 0; attempt < 5 && !hasEnded; ++attempt) {
            m_driver->setState(RUN_START, false);
            take();
            m_driver->setState(RUN_DONE, false);
            hasEnded = m_infra.awaitVotes(1, std::chrono::seconds(1));
        }
        EXPECT_TRUE(hasEnded);
    }
    EXPECT_EQ(m_lowAmiss, 0);
}

TEST_F(HoldStressTest, DriversGoDownAtAnyMoment) {
    for (int round = 0; round < 400; ++round) {
        begin(m_clock, 5, round % 2 == 0);
        for (int run = 0; run < round % 5; ++run) {
            m_driver->setState(RUN_START, true);
            m_driver->setState(RUN_DONE, false);
            if (run % 2 == 0) std::this_thread::yield();
        }
        m_driver.reset();
        const Texts calls = m_infra.takeCalls();
        ASSERT_TRUE(!calls.empty() && calls.back().substr(0, 7) == "destroy") << "and nothing is voted afterwards";
    }
}

}  // namespace
}  // namespace zant::test
