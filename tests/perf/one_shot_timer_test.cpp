#include "perf/one_shot_timer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <mutex>

#include "support/failing_thread.h"
#include "support/fake_clock.h"

namespace zant::test {
namespace {

using kor::OneShotTimer;

// What the timer calls: counts, and can be held up.
struct Firings {
    static void fire(void* context) {
        auto* self = static_cast<Firings*>(context);
        if (self->onFire) self->onFire();
        std::unique_lock lock(self->mutex);
        ++self->count;
        self->changed.notify_all();
        self->changed.wait(lock, [self] { return !self->heldUp; });
    }
    void await(int expected) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return count >= expected; });
    }
    void letGo() {
        const std::lock_guard lock(mutex);
        heldUp = false;
        changed.notify_all();
    }

    std::function<void()> onFire;
    std::atomic<int> count{0};
    std::atomic<bool> heldUp{false};
    // Not the waiting of the atomics themselves: that of g++ 12 loses wake-ups where the system has no futex.
    std::mutex mutex;
    std::condition_variable changed;
};

class OneShotTimerTest : public ::testing::Test {
protected:
    OneShotTimerTest() { EXPECT_TRUE(m_timer.create(Firings::fire, &m_firings)); }
    ~OneShotTimerTest() override { m_firings.letGo(); }

    // Proves that nothing else has fired: a hold of its own fires next.
    void expectFirings(int count) {
        EXPECT_TRUE(m_timer.stop());
        EXPECT_EQ(m_firings.count, count);
        EXPECT_TRUE(m_timer.start(700));
        EXPECT_TRUE(m_clock.awaitSleeper(700 * NS_PER_US));
        m_clock.advance(700 * NS_PER_US);
        m_firings.await(count + 1);
        EXPECT_TRUE(m_timer.stop());
        EXPECT_EQ(m_firings.count, count + 1);
    }

    FakeClock m_clock;
    Firings m_firings;
    OneShotTimer m_timer{m_clock};
};

TEST_F(OneShotTimerTest, RefusesWhatItCannotDoBeforeCreateAndAfterShutdown) {
    OneShotTimer timer(m_clock);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(timer.remaining(), 0xFFFFFFFFU);
        EXPECT_FALSE(timer.start(1));
        EXPECT_FALSE(timer.stop());
        EXPECT_FALSE(timer.stopUnlessFiring());
        timer.shutdown();
        {
            const FailingThread failing(0);
            EXPECT_FALSE(timer.create(Firings::fire, &m_firings));
        }
        EXPECT_EQ(timer.remaining(), 0xFFFFFFFFU) << "as it was";
        ASSERT_TRUE(timer.create(Firings::fire, &m_firings));  // the second time after a shutdown
        EXPECT_FALSE(timer.create(nullptr, nullptr));
        EXPECT_EQ(timer.remaining(), 0U);
        EXPECT_TRUE(timer.stop());
        EXPECT_TRUE(timer.stopUnlessFiring());
        ASSERT_TRUE(timer.start(5));
        ASSERT_TRUE(m_clock.awaitSleeper(5 * NS_PER_US));
        m_clock.advance(5 * NS_PER_US);
        m_firings.await(round + 1);
        timer.shutdown();
    }
}

TEST_F(OneShotTimerTest, CountsDownAndFiresOnceAtItsDeadline) {
    ASSERT_TRUE(m_timer.start(300000));
    EXPECT_EQ(m_timer.remaining(), 300000U);
    ASSERT_TRUE(m_clock.awaitSleeper(300 * NS_PER_MS));
    m_clock.jump(1);
    EXPECT_EQ(m_timer.remaining(), 299999U);
    m_clock.advance(300 * NS_PER_MS - 2);
    m_clock.wakeSpuriously();
    ASSERT_TRUE(m_clock.awaitSleeper(1)) << "a nanosecond early";
    EXPECT_EQ(m_timer.remaining(), 0U);
    EXPECT_EQ(m_firings.count, 0);
    m_clock.advance(1);
    m_firings.await(1);
    EXPECT_EQ(m_timer.remaining(), 0U);
    expectFirings(1);
}

TEST_F(OneShotTimerTest, ADeadlineThatPassedUnnoticedLeavesAHugeNumber) {
    ASSERT_TRUE(m_timer.start(1000));
    ASSERT_TRUE(m_clock.awaitSleeper(1000 * NS_PER_US));
    m_clock.jump(1005 * NS_PER_US);
    EXPECT_EQ(m_timer.remaining(), 0xFFFFFFFBU);
    EXPECT_TRUE(m_timer.stopUnlessFiring());
    EXPECT_EQ(m_timer.remaining(), 0U);
    m_clock.wakeSpuriously();
    expectFirings(0);
    ASSERT_TRUE(m_timer.start(0xFFFFFFFFU));
    EXPECT_EQ(m_timer.remaining(), 0xFFFFFFFFU) << "the longest hold";
}

// Each row: start, perhaps stop, start again 10 us later, and when the one firing comes, from the second start.
TEST_F(OneShotTimerTest, StartsAgainTowardsEarlierAndLaterDeadlines) {
    const struct {
        bool stops;
        uint32_t first, second;
        int64_t firesAfterUs;
    } rows[] = {
        {false, 100, 200, 200},                                            // moved later
        {false, 100, 90, 90},                                              // to the same time
        {false, 100, 20, 90},                                              // moved earlier: noticed at the old deadline
        {true, 100, 200, 200},  {true, 100, 90, 90}, {true, 100, 20, 20},  // the sleeper is woken
        {true, 100, 0, 0},
    };
    int firings = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.second);
        ASSERT_TRUE(m_timer.start(row.first));
        ASSERT_TRUE(m_clock.awaitSleeper(row.first * NS_PER_US));
        m_clock.advance(10 * NS_PER_US);
        EXPECT_TRUE(!row.stops || m_timer.stop());
        ASSERT_TRUE(m_timer.start(row.second));
        const int64_t sleepsUs = std::min<int64_t>(row.firesAfterUs, 90);  // the old deadline is slept to
        if (sleepsUs > 0) {
            ASSERT_TRUE(m_clock.awaitSleeper(sleepsUs * NS_PER_US));
            m_clock.advance(sleepsUs * NS_PER_US - 1);
            EXPECT_EQ(m_firings.count, firings);
            m_clock.advance(1);
        }
        if (row.firesAfterUs > sleepsUs) {
            ASSERT_TRUE(m_clock.awaitSleeper((row.firesAfterUs - sleepsUs) * NS_PER_US));
            EXPECT_EQ(m_firings.count, firings);
            m_clock.advance((row.firesAfterUs - sleepsUs) * NS_PER_US);
        }
        m_firings.await(++firings);
        expectFirings(firings++);
    }
}

TEST_F(OneShotTimerTest, AStoppedDeadlinePassesInSilence) {
    for (const bool waits : {true, false}) {
        ASSERT_TRUE(m_timer.start(100));
        ASSERT_TRUE(m_clock.awaitSleeper(100 * NS_PER_US));
        EXPECT_TRUE(waits ? m_timer.stop() : m_timer.stopUnlessFiring());
        EXPECT_EQ(m_timer.remaining(), 0U);
        const uint64_t reads = m_clock.reads();
        m_clock.advance(100 * NS_PER_US);
        ASSERT_TRUE(m_clock.awaitReads(reads)) << "the thread looks up";
        expectFirings(waits ? 0 : 1);
    }
}

TEST_F(OneShotTimerTest, AFiringRefusesStartsAndIsWaitedForByStopAndShutdown) {
    bool startedFromCallback = true;
    m_firings.onFire = [&] { startedFromCallback = m_timer.start(1); };
    for (const bool shutsDown : {false, true}) {
        m_firings.heldUp = true;
        const int firings = m_firings.count + 1;
        ASSERT_TRUE(m_timer.start(10));
        ASSERT_TRUE(m_clock.awaitSleeper(10 * NS_PER_US));
        m_clock.advance(10 * NS_PER_US);
        m_firings.await(firings);
        EXPECT_FALSE(startedFromCallback);
        EXPECT_FALSE(m_timer.start(10));
        EXPECT_FALSE(m_timer.stopUnlessFiring());
        EXPECT_EQ(m_timer.remaining(), 0U);
        auto waiting = std::async(std::launch::async, [&] {
            if (shutsDown) m_timer.shutdown();
            return shutsDown || m_timer.stop();
        });
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
        m_firings.letGo();
        EXPECT_TRUE(waiting.get());
        EXPECT_EQ(m_timer.start(10), !shutsDown);
        EXPECT_TRUE(shutsDown || m_timer.stop());
    }
}

TEST(OneShotTimerClock, TheSystemsOwnClockServesTheTimer) {
    Firings firings;
    OneShotTimer timer;
    ASSERT_TRUE(timer.create(Firings::fire, &firings));
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(timer.start(50000));
    EXPECT_LT(timer.remaining(), 50001U);
    firings.await(1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(50));
}

}  // namespace
}  // namespace zant::test
