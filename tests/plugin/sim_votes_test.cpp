// The simulated infrastructure: what it remembers of votes, and what it refuses.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <thread>

#include "support/loaded.h"
#include "support/system.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

class SimVotes : public testing::Test {
protected:
    uint32_t makeId(uint32_t core = 0) const {
        uint32_t id = 0;
        EXPECT_EQ(power.createPowerConfigId(0, core, &id), 0U);
        return id;
    }
    static PowerConfigRecord corners(uint32_t id, uint32_t corner) {
        PowerConfigRecord record{};
        record.dcvs = {1, id, 1, 0, 16, 1, 40, 0, 0, 1, {corner, corner, corner}, 1, {corner, corner, corner}};
        return record;
    }
    uint64_t vote(uint32_t id, const PowerConfigRecord& record) const {
        const PowerConfigRecord* list[] = {&record, nullptr};
        return power.setPowerConfig(id, list);
    }
    size_t count() const { return sim.find<ZantSimVoteCountFn>("ZantSim_voteCount")(); }
    ZantSimVote at(size_t index) const {
        ZantSimVote vote{};
        EXPECT_EQ(sim.find<ZantSimVoteFn>("ZantSim_vote")(index, &vote), 1U);
        return vote;
    }

    const Sim sim;
    const ZantPerfInfrastructure& power = infrastructure(ourProvider(sim));
};

TEST_F(SimVotes, TimeLineHoldsEachListWholeWithTimeThreadAndId) {
    const uint32_t id = makeId(3);
    const PowerConfigRecord high = corners(id, 160);
    const PowerConfigRecord ddr{{7, 1}};
    const PowerConfigRecord* both[] = {&high, &ddr, nullptr};
    ASSERT_EQ(power.setPowerConfig(id, both), 0U);
    std::thread([&] {
        nameThread("other");
        EXPECT_EQ(vote(id, PowerConfigRecord{{3, 9999}}), 0U);
    }).join();
    ASSERT_EQ(count(), 2U);
    const ZantSimVote first = at(0);
    const ZantSimVote second = at(1);
    EXPECT_EQ(first.recordCount, 2U);
    EXPECT_EQ(std::memcmp(&first.records[0], &high, sizeof(high)), 0);
    EXPECT_EQ(std::memcmp(&first.records[1], &ddr, sizeof(ddr)), 0);
    EXPECT_EQ(first.coreId, 3U);
    EXPECT_EQ(first.thread, sim.find<ZantSimThreadNumberFn>("ZantSim_threadNumber")());
    EXPECT_NE(second.thread, first.thread);
    EXPECT_STREQ(second.threadName, "other");
    EXPECT_EQ(second.sequence, 1U);
    EXPECT_GE(second.timeNs, first.timeNs);

    ZantSimVote current{};
    const auto currentVote = sim.find<ZantSimCurrentVoteFn>("ZantSim_currentVote");
    ASSERT_EQ(currentVote(id, &current), 1U) << "settings alone replace no vote";
    EXPECT_EQ(current.sequence, 0U);
    const auto live = sim.find<ZantSimLivePowerConfigIdsFn>("ZantSim_livePowerConfigIds");
    EXPECT_EQ(live(), 1U);
    EXPECT_EQ(power.destroyPowerConfigId(id), 0U);
    EXPECT_EQ(currentVote(id, &current), 0U);
    EXPECT_EQ(live(), 0U);
    EXPECT_EQ(at(2).recordCount, 0U);
}

TEST_F(SimVotes, WrongUseFailsIsNamedAndVotesNothing) {
    const uint32_t id = makeId();
    const uint32_t gone = makeId();
    ASSERT_EQ(power.destroyPowerConfigId(gone), 0U);
    const PowerConfigRecord good = corners(id, 96);
    std::array<const PowerConfigRecord*, 20> endless{};
    endless.fill(&good);
    PowerConfigRecord dirty{{7, 1}};
    dirty.words[2] = 5;
    const PowerMemoryRecord memory{2, 0};
    const PowerMemoryRecord* memoryList[] = {&memory, nullptr};
    const PowerConfigRecord* empty[] = {nullptr};
    const struct {
        const char* reason;
        std::function<uint64_t()> use;
    } cases[] = {
        {"was never made", [&] { return vote(4711, corners(4711, 96)); }},
        {"is destroyed", [&] { return vote(gone, corners(gone, 96)); }},
        {"destroyed already", [&] { return power.destroyPowerConfigId(gone); }},
        {"the list is null", [&] { return power.setPowerConfig(id, nullptr); }},
        {"the list is empty", [&] { return power.setPowerConfig(id, empty); }},
        {"no null", [&] { return power.setPowerConfig(id, endless.data()); }},
        {"option 2 is unknown", [&] { return vote(id, PowerConfigRecord{{2}}); }},
        {"is for id", [&] { return vote(id, corners(id + 1, 96)); }},
        {"words beyond its own", [&] { return vote(id, dirty); }},
        {"memory option 2", [&] { return power.setMemoryConfig(0, 0, memoryList); }},
        {"nowhere to put", [&] { return power.createPowerConfigId(0, 0, nullptr); }},
    };
    const size_t before = count();
    for (const auto& wrong : cases) {
        EXPECT_NE(wrong.use(), 0U) << wrong.reason;
        EXPECT_THAT(sim.ledger().back(), testing::AllOf(testing::StartsWith("misuse: "), HasSubstr(wrong.reason)));
    }
    endless[16] = nullptr;
    EXPECT_EQ(count(), before);
    EXPECT_EQ(power.setPowerConfig(id, endless.data()), 0U);
    EXPECT_EQ(vote(0, corners(0, 96)), 0U) << "the default client's id is always there";
}

TEST_F(SimVotes, AFailedCallVotesNothingAndASlowOneHoldsNobodyUp) {
    const uint32_t id = makeId();
    sim.failNthCall("setPowerConfig", 2, 5);
    EXPECT_EQ(vote(id, corners(id, 96)), 0U);
    EXPECT_EQ(vote(id, corners(id, 128)), 5U);
    EXPECT_EQ(count(), 1U);
    constexpr uint32_t latencyUs = 200000;
    sim.find<ZantSimSetLatencyFn>("ZantSim_setLatency")("setPowerConfig", latencyUs);
    const auto elapsedNs = sim.find<ZantSimElapsedNsFn>("ZantSim_elapsedNs");
    const uint64_t begin = elapsedNs();
    std::atomic<bool> done{false};
    std::thread slow([&] {
        EXPECT_EQ(vote(id, corners(id, 128)), 0U);
        done = true;
    });
    std::vector<uint64_t> answeredNs;
    while (!done) {
        EXPECT_EQ(ourProvider(sim).getApiVersion(nullptr), 0U);
        answeredNs.push_back(elapsedNs());
    }
    slow.join();
    const uint64_t votedNs = at(1).timeNs;
    EXPECT_GE(votedNs, begin + uint64_t{latencyUs} * 1000);
    const auto duringTheVote = [&](uint64_t time) { return time > votedNs - latencyUs * 500 && time < votedNs; };
    EXPECT_TRUE(std::any_of(answeredNs.begin(), answeredNs.end(), duringTheVote));
}

}  // namespace
