#include <future>

#include "perf/driver_fixture.h"
#include "support/failing_thread.h"
#include "support/fake_clock.h"
#include "support/log_capture.h"
#include "thread_name.h"

namespace zant::test {
namespace {

using kor::PerfFamily;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr uint8_t INIT_START = 1, INIT_DONE = 2, RUN_START = 4, RUN_DONE = 8, DEINIT_START = 16, DEINIT_DONE = 32;
constexpr uint8_t EXPIRED = 128;

class PerfDriverTest : public DriverTest {
protected:
    ~PerfDriverTest() override { m_driver.reset(); }  // before its clock
    void begin(uint32_t profile, bool async = false, bool sustains = false) {
        DriverTest::begin(m_clock, profile, async, sustains);
    }

    FakeClock m_clock{1};
};

TEST_F(PerfDriverTest, EveryFamilyAtEveryEvent) {
    const struct {
        uint32_t profile;
        bool sustains;
        Texts votes;  // at the events of the list below; "" for none
    } rows[] = {
        {1, false, {"idle 4 3", "profile 2", "idle 4 1", "profile 0", "release 4 5", "release 4 4", ""}},
        {3, false, {"idle 1 3", "profile 2", "idle 1 1", "profile 0", "release 1 5", "profile 4", ""}},
        {5, true, {"", "profile 2", "idle 1 1", "profile 0", "release 1 5", "profile 4", "idle 1 3"}},
        {16, false, {"floor 4 3", "profile 2", "floor 4 1", "profile 0", "floor 4 5", "floor 4 4", ""}},
        {22, false, {"custom 3", "custom 2", "custom 1", "custom 0", "custom 5", "custom 4", ""}},
        {22, true, {"", "custom 2", "custom 1", "custom 0", "custom 5", "custom 4", "custom 3"}},
        {20, false, {"", "", "", "", "", "", ""}},
    };
    for (const auto& row : rows) {
        Texts votes;
        for (const uint8_t event : {RUN_DONE, RUN_START, INIT_DONE, INIT_START, DEINIT_DONE, DEINIT_START, EXPIRED}) {
            begin(row.profile, false, row.sustains);
            const Texts cast = after(event);
            votes.push_back(cast.empty() ? "" : cast[0]);
        }
        EXPECT_EQ(votes, row.votes) << row.profile;
    }
    using enum PerfFamily;
    const PerfFamily families[] = {balanced,  balanced, balanced, performance, sustained,   sustained,
                                   sustained, balanced, balanced, balanced,    performance, sustained,
                                   floor,     saver,    saver,    saver,       floor,       saver,
                                   saver,     saver,    noVoting, noVoting,    custom,      unknown};
    for (uint32_t profile = 0; profile < std::size(families); ++profile) {
        EXPECT_EQ(kor::perfFamilyOf(profile), families[profile]) << profile;
    }
}

TEST_F(PerfDriverTest, PendingEventsMergeAndGoInTheirFixedOrder) {
    begin(1);
    for (const uint8_t event : {DEINIT_START, DEINIT_DONE, INIT_START, INIT_DONE, RUN_START, RUN_START}) {
        m_driver->setState(event, true);  // left to a voting thread that there is not
    }
    EXPECT_THAT(take(), IsEmpty());
    EXPECT_THAT(after(RUN_DONE),
                ElementsAre("idle 4 3", "profile 2", "idle 4 1", "profile 0", "release 4 5", "release 4 4"));
    EXPECT_THAT(after(RUN_START), ElementsAre("profile 2")) << "the others are gone";
    m_driver->setState(RUN_START, true);
    EXPECT_THAT(after(RUN_START), IsEmpty()) << "merged with the pending one";
    begin(5);
    m_driver->m_asyncVoting = true;  // without the thread
    m_driver->setState(EXPIRED, true);
    EXPECT_THAT(after(RUN_DONE), IsEmpty()) << "an earlier hold's end";
    EXPECT_THAT(after(RUN_START), IsEmpty()) << "the high vote still stands";
    begin(5);
    m_driver->setState(RUN_START, true);
    EXPECT_THAT(after(RUN_DONE), IsEmpty()) << "the hold begins and ends at once";
    m_clock.advance(400 * NS_PER_MS);
    EXPECT_THAT(after(RUN_START), ElementsAre("profile 2"));
}

TEST_F(PerfDriverTest, AFailedVoteEndsThePass) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    begin(1);
    m_infra.answer = [votes = 0](const std::string&) mutable { return ++votes == 2 ? 6U : 0U; };
    for (const uint8_t event : {RUN_DONE, RUN_START, DEINIT_DONE}) m_driver->setState(event, true);
    EXPECT_THAT(after(INIT_START), ElementsAre("idle 4 3"));
    EXPECT_THAT(m_infra.takeCalls(), ElementsAre("set 101", "set 101"));
    EXPECT_THAT(log.takeTexts(), ElementsAre("1 Perf Infra set power config failed: [6]",
                                             "1 Sync call perfDriverStateUpdate() failed to update state: 1"));
    EXPECT_THAT(after(INIT_DONE), ElementsAre("idle 4 1")) << "as if nothing had happened";
    // An end of a hold and an expiry that would vote after a failed vote cast none either.
    const std::pair<uint8_t, uint8_t> passes[] = {{RUN_START, INIT_START}, {DEINIT_DONE, EXPIRED}};
    for (const auto& [failing, next] : passes) {
        begin(5);
        m_infra.answer = [votes = 0](const std::string&) mutable { return ++votes == 1 ? 6U : 0U; };
        m_driver->setState(failing, true);
        EXPECT_THAT(after(next), IsEmpty()) << int{failing};
        EXPECT_EQ(m_infra.takeCalls().size(), 1U);
    }
    log.take();
    begin(1, true);
    m_infra.answer = [](const std::string& call) { return call[0] == 's' ? 6U : 0U; };
    m_driver->setState(RUN_START, true);
    while (log.lines().size() < 2) std::this_thread::yield();
    EXPECT_THAT(log.takeTexts(),
                ElementsAre("1 Perf Infra set power config failed: [6]",
                            "1 perfDriverThreadFuncSignal() perf set state failed for m_eventBitMask = 0"));
}

TEST_F(PerfDriverTest, ProfilesThatDoNotVoteLeaveEventsPending) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    for (const uint32_t profile : {20U, 99U}) {
        begin(profile);
        m_driver->setState(RUN_START, true);
        EXPECT_THAT(after(INIT_DONE), IsEmpty());
        m_driver->setPerfProfile(1);
        EXPECT_THAT(after(RUN_DONE), ElementsAre("idle 4 3", "profile 2"));
    }
    EXPECT_THAT(log.texts(), ElementsAre("1 Invalid performance profile 99",
                                         "1 Sync call perfDriverStateUpdate() failed to update state: 2"));
}

TEST_F(PerfDriverTest, AHoldIsEndedWithoutAVoteOrRunsOut) {
    for (const uint32_t profile : {5U, 22U}) {
        const std::string high = profile == 5 ? "profile " : "custom ";
        const std::string low = profile == 5 ? "idle 1 3" : "custom 3";
        const std::pair<uint8_t, const char*> ends[] = {{RUN_START, "2"}, {INIT_START, "0"}, {DEINIT_START, "4"}};
        for (const auto& [event, state] : ends) {
            begin(profile, false, true);
            EXPECT_THAT(after(RUN_DONE), IsEmpty());
            m_clock.advance(299 * NS_PER_MS);
            EXPECT_THAT(after(event), IsEmpty()) << "the high vote still stands";
            m_clock.advance(2 * NS_PER_MS);
            EXPECT_THAT(after(event), ElementsAre(high + state)) << "no hold, and no expiry before";
            EXPECT_THAT(after(RUN_DONE), IsEmpty());
            m_clock.advance(301 * NS_PER_MS);
            EXPECT_EQ(awaited(), low);
            EXPECT_THAT(after(event), ElementsAre(high + state));
        }
    }
}

TEST_F(PerfDriverTest, AHoldRunsInTheClockTickOfItsStart) {
    FakeClock still;
    DriverTest::begin(still, 5);
    EXPECT_THAT(after(RUN_DONE), IsEmpty());
    EXPECT_THAT(after(RUN_START), IsEmpty());
    m_driver.reset();
}

TEST_F(PerfDriverTest, AnExpiryVotesUnlessTheGraphIsBusy) {
    const std::pair<uint8_t, bool> events[] = {{RUN_START, true},    {INIT_START, true}, {RUN_DONE, false},
                                               {DEINIT_START, true}, {INIT_DONE, true},  {DEINIT_DONE, false}};
    for (const uint32_t profile : {5U, 22U}) {
        begin(profile, false, true);
        for (const auto& [event, isBusy] : events) {
            m_driver->setState(event, false);
            take();
            EXPECT_EQ(after(EXPIRED).empty(), isBusy) << int{event};
        }
    }
    begin(5);
    after(RUN_DONE);
    m_clock.jump(301 * NS_PER_MS);  // the timer's thread is late
    EXPECT_THAT(after(RUN_START), ElementsAre("profile 2"));
    m_clock.wakeSpuriously();
    EXPECT_FALSE(m_infra.awaitVotes(1, std::chrono::milliseconds(20)));
}

TEST_F(PerfDriverTest, AProfileChangeEndsTheHoldAndSetsThePolling) {
    begin(5);
    LogCapture log(ZANT_LOG_LEVEL_VERBOSE);
    const std::string ended = "4 Performance Profile changed while timer active - resetting timer state";
    const auto change = [&](uint32_t profile, const Texts& lines, const Texts& votes) {
        after(RUN_DONE);
        log.take();
        m_driver->setPerfProfile(profile);
        Texts seen = log.takeTexts();
        std::erase_if(seen, [](const std::string& line) { return line[0] == '3'; });
        EXPECT_EQ(seen, lines);
        EXPECT_EQ(take(), votes);
    };
    change(5, {}, {});
    change(6, {"4 Setting Perf Profile to 6", ended}, {});
    EXPECT_EQ(m_driver->setState(RUN_START, false), true);
    EXPECT_EQ(m_infra.takeVotes().size(), 1U) << "the hold is over";
    change(4, {"4 Setting Perf Profile to 4", ended}, {"rpc 0"});
    change(1, {"4 Setting Perf Profile to 1", ended}, {});
    change(5, {"4 Setting Perf Profile to 5"}, {"rpc 9999"});
    change(5, {}, {});
    m_clock.advance(301 * NS_PER_MS);
    EXPECT_EQ(awaited(), "idle 1 3") << "the same profile ends no hold";
}

TEST_F(PerfDriverTest, EachVoteIsCastOnItsThread) {
    std::string name;
    for (const bool async : {true, false}) {
        begin(5, async);
        m_infra.answer = [&](const std::string&) {
            name = sim::threadName();
            return 0U;
        };
        const auto voter = [&](uint8_t event, bool mayBeAsync) {
            m_driver->setState(event, mayBeAsync);
            EXPECT_TRUE(m_infra.awaitVotes(1));
            return m_infra.takeVotes().at(0).thread;
        };
        const auto self = std::this_thread::get_id();
        EXPECT_EQ(voter(INIT_DONE, false), self);
        const auto runner = voter(RUN_START, async);
        EXPECT_EQ(runner != self, async);
        EXPECT_TRUE(m_driver->initialize(m_infra.provider()));
        EXPECT_TRUE(!async || voter(RUN_START, true) == runner) << "one voting thread for each driver";
        if (async) {
            EXPECT_FALSE(name.empty());
            EXPECT_TRUE(std::string("zant_perf_driver").starts_with(name)) << name << ", which the system may have cut";
        }
        m_driver->setState(RUN_DONE, false);
        m_clock.advance(301 * NS_PER_MS);
        ASSERT_TRUE(m_infra.awaitVotes(1));
        const auto expirer = m_infra.takeVotes()[0].thread;
        EXPECT_NE(expirer, self);
        EXPECT_EQ(expirer == runner, async) << "the voting thread if there is one, else the timer's";
        m_driver.reset();
    }
}

TEST_F(PerfDriverTest, TeardownCastsNothingAndWaitsForAVoteInProgress) {
    for (const bool async : {false, true}) {
        begin(5, async);
        m_driver->setState(RUN_DONE, false);
        if (!async) m_driver->setState(RUN_START, true);  // pending
        m_driver.reset();
        EXPECT_THAT(m_infra.takeCalls(), ElementsAre("destroy " + std::to_string(async ? 103 : 101)));

        begin(5, async);
        std::promise<void> entered;
        std::promise<void> release;
        m_infra.answer = [&, gone = release.get_future().share()](const std::string& call) {
            if (call[0] == 's') entered.set_value();
            if (call[0] == 's') gone.wait();
            return 0U;
        };
        m_driver->setState(RUN_DONE, false);
        m_clock.advance(301 * NS_PER_MS);  // the expiry votes, on the one thread or the other
        entered.get_future().wait();
        auto destroyed = std::async(std::launch::async, [this] { m_driver.reset(); });
        EXPECT_EQ(destroyed.wait_for(std::chrono::milliseconds(10)), std::future_status::timeout);
        release.set_value();
        destroyed.get();
        const std::string id = std::to_string(async ? 104 : 102);
        EXPECT_THAT(m_infra.takeCalls(), ElementsAre("set " + id, "destroy " + id));
        m_infra.answer = [](const std::string&) { return 0U; };
    }
}

TEST_F(PerfDriverTest, VotesOnTheHostsThreadWithoutThreadsOfItsOwn) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    for (const int countdown : {0, 1}) {
        make(m_clock, true);
        {
            const FailingThread failing(countdown);
            EXPECT_FALSE(m_driver->initialize(m_infra.provider()));
        }
        const Texts lines = log.takeTexts();
        ASSERT_EQ(lines.size(), 2U);
        if (countdown == 0) {
            EXPECT_EQ(lines[0], "1 Failed to create perf driver timer.");
            EXPECT_EQ(lines[1], "1 Failed to create perfdriver timer.");
        } else {
            EXPECT_THAT(lines[0], testing::StartsWith("1 Exception occurred while creating perf driver voting "
                                                      "thread. Reason:  "));
            EXPECT_EQ(lines[1], "1 Start Voting Thread initialization failed!");
        }
        finish(5);
        m_driver->setState(RUN_START, true);
        EXPECT_THAT(take(), IsEmpty());
        EXPECT_THAT(after(INIT_DONE), ElementsAre("profile 2", "idle 1 1"));
        EXPECT_THAT(after(RUN_DONE), IsEmpty());
        EXPECT_THAT(after(RUN_START), ElementsAre("profile 2")) << "a hold without a timer is none";
    }
}

}  // namespace
}  // namespace zant::test
