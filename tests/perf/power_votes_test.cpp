#include "perf/power_votes.h"

#include <gmock/gmock.h>

#include <optional>

#include "support/fake_infrastructure.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using kor::KORCoreConfig;
using kor::LowVoteMode;
using kor::PowerVotes;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using Records = std::vector<Words>;
using Texts = std::vector<std::string>;
using Corners = std::array<uint32_t, 3>;

constexpr uint32_t NO_LIST = 1000;  // as an architecture: no DSP record at all

Words dcvs(uint32_t enable, uint32_t mode, uint32_t latency, const Corners& bus, const Corners& core) {
    return {1, 101, 1, enable, mode, 1, latency, 0, 0, 1, bus[0], bus[1], bus[2], 1, core[0], core[1], core[2]};
}

KORCoreConfig coreWith(uint32_t profile) {
    KORCoreConfig core;
    core.perfProfile = profile;
    return core;
}

class PowerVotesTest : public ::testing::Test {
protected:
    // coreIds: of device 0. failing: a call that gives 5.
    bool setUp(const KORCoreConfig& core, uint32_t arch = 79, const std::vector<uint32_t>& coreIds = {3},
               bool clientContext = true, const std::string& failing = "") {
        m_votes = PowerVotes();
        m_infra.emplace();
        m_infra->answer = [failing](const std::string& call) { return call == failing ? 5U : 0U; };
        m_votes.setBackendInterface(m_infra->provider());
        std::vector<soc::DspInfo> dspInfos(arch == NO_LIST ? 0 : 1);
        for (soc::DspInfo& info : dspInfos) info.arch = arch;
        m_votes.setDspInfos(dspInfos);
        m_votes.addDeviceCores(0, coreIds);
        m_votes.setPerfConfig(core);
        const bool result = m_votes.createPowerConfigId(clientContext);
        m_making = m_infra->takeCalls();
        m_log.take();
        return result;
    }
    Records takeRecords() {
        Records records;
        for (const Vote& vote : m_infra->takeVotes()) {
            records.insert(records.end(), vote.records.begin(), vote.records.end());
        }
        return records;
    }
    // The lines beside those that every call has.
    Texts otherLines() {
        Texts lines = m_log.takeTexts();
        std::erase(lines, "3 ZantDevice_getInfrastructure passed\n");
        std::erase(lines, "3 Perf Infra set power config success");
        return lines;
    }

    LogCapture m_log;
    std::optional<FakeInfrastructure> m_infra;
    PowerVotes m_votes;
    Texts m_making;  // the calls of setUp
};

TEST_F(PowerVotesTest, EveryProfileSendsItsRow) {
    const Words dru0 = {5, 0, 0, 0, 0, 1};
    const Words druC = {5, 0, 0x138, 0x138, 0x138, 1};
    const Words ddr = {7, 1};
    const auto ceng = [](uint32_t corner, uint32_t mode) { return Words{8, corner, corner, corner, mode}; };
    const struct {
        std::vector<uint32_t> profiles;
        uint32_t latency, bus, core;
        Records list;
    } rows[] = {
        {{0}, 1000, 0x60, 0x60, {}},
        {{3, 4}, 100, 0x80, 0x80, {}},
        {{5}, 40, 0xA0, 0xA0, {}},
        {{6}, 40, 0xA0, 0xA0, {{5, 0, 0x1C0, 0x1C0, 0x1C0, 0}, ceng(0x90, 0), ddr}},
        {{7, 8, 9}, 1000, 0x60, 0x50, {dru0, ceng(0x60, 0)}},
        {{11}, 100, 0x90, 0x60, {druC, ceng(0x60, 0)}},
        {{12}, 1000, 0x10, 0x10, {dru0, ceng(0x10, 1)}},
        {{15}, 1000, 0x60, 0x40, {dru0, ceng(0x50, 1)}},
        {{16}, 1000, 0x10, 0x10, {}},
        {{19}, 1000, 0x50, 0x50, {}},
    };
    KORCoreConfig core = coreWith(1);
    for (const bool withSettings : {false, true}) {
        core.customPerfStates[1].druControlSet = core.customPerfStates[1].cengControlSet = withSettings;
        core.ddrPerfMode = withSettings;
        EXPECT_TRUE(setUp(core));
        for (const auto& row : rows) {
            Records expected = {dcvs(0, 16, row.latency, {row.bus, row.bus, row.bus}, {row.core, row.core, row.core})};
            if (withSettings && row.list.empty()) {
                expected.insert(expected.end(), {{5, 1}, ceng(0x20, 0)});
                if (row.bus == 0xA0) expected.push_back(ddr);
            }
            expected.insert(expected.end(), row.list.begin(), row.list.end());  // whatever the settings
            for (const uint32_t profile : row.profiles) {
                m_votes.setPerfProfile(profile);
                EXPECT_TRUE(m_votes.voteProfile(2));
                EXPECT_EQ(takeRecords(), expected) << profile;
            }
        }
    }
}

TEST_F(PowerVotesTest, ProfilesWithoutARow) {
    const std::string tooOld =
        "1 llm_decode_* perf profiles require Tesseron V79 or newer architecture; current arch is V";
    const struct {
        uint32_t profile, arch;
        bool result;
        Texts lines;
    } rows[] = {
        {2, 79, true, {}},
        {0xFFFFFFFF, 79, false, {"1 Invalid performance profile -1 to set power configs"}},
        {6, 78, false, {tooOld + "78"}},
    };
    for (const auto& row : rows) {
        setUp(coreWith(row.profile), row.arch);
        EXPECT_EQ(m_votes.voteProfile(0), row.result) << row.profile;
        EXPECT_EQ(m_log.takeTexts(), row.lines);
        EXPECT_THAT(m_infra->takeCalls(), IsEmpty());
        EXPECT_TRUE(m_votes.voteIdle(LowVoteMode::powerSaver, 0)) << "low votes go out all the same";
        EXPECT_EQ(takeRecords().size(), 1U);
    }
    setUp(coreWith(6), NO_LIST);
    EXPECT_TRUE(m_votes.voteProfile(0)) << "an empty list passes";
    PowerVotes withoutIds;
    EXPECT_TRUE(withoutIds.voteProfile(0)) << "profile 21, not looked at without ids";
    EXPECT_TRUE(withoutIds.voteFloor(0));
}

TEST_F(PowerVotesTest, LowVotes) {
    const Corners idle = {0x30, 0x40, 0x40}, release = {0x20, 0x20, 0x20}, floor = {0x10, 0x10, 0x10};
    setUp(coreWith(1));
    EXPECT_TRUE(m_votes.voteIdle(LowVoteMode::powerSaver, 3));
    EXPECT_TRUE(m_votes.voteIdle(LowVoteMode::adjustUpDown, 3));
    EXPECT_TRUE(m_votes.voteRelease(LowVoteMode::powerSaver, 5));
    EXPECT_TRUE(m_votes.voteRelease(LowVoteMode::adjustUpDown, 5));
    EXPECT_TRUE(m_votes.voteFloor(5));
    EXPECT_THAT(takeRecords(), ElementsAre(dcvs(1, 4, 2000, idle, idle), dcvs(1, 1, 2000, idle, idle),
                                           dcvs(1, 4, 65535, release, release), dcvs(1, 1, 65535, release, release),
                                           dcvs(1, 4, 65535, floor, floor)));
}

// State 0 has the legacy controls, 1 the expanded ones, 2 both kinds, 3 only DRU, 5 expanded at maximum, 4
// the same without being set.
KORCoreConfig customCore() {
    KORCoreConfig core = coreWith(22);
    for (const size_t state : {0U, 2U}) {
        auto& custom = core.customPerfStates[state];
        custom.dcvs = {false, 7, 1001, 1, 11, 12, 13, 14, 15, 16};
        custom.ceng = {21, 22, 23, 24};
        custom.dcvsControlSet = custom.cengControlSet = true;
    }
    for (const size_t state : {1U, 2U, 5U}) {
        auto& custom = core.customPerfStates[state];
        custom.dcvsExp = {8, 1002, 1, 31, 32, 33, 34, 35, 36, 37, 38};
        custom.cengExp = {41, 42, 43, 44};
        custom.dcvsExpControlSet = custom.cengExpControlSet = true;
    }
    for (const size_t state : {0U, 3U}) {
        core.customPerfStates[state].dru = {1, 54, 51, 52, 53};
        core.customPerfStates[state].druControlSet = true;
    }
    for (const size_t state : {4U, 5U}) {
        core.customPerfStates[state].dcvsExp = {8, 1002, 0, 65535, 65535, 65535, 34, 35, 36, 37, 38};
    }
    return core;
}

TEST_F(PowerVotesTest, CustomStatesInBothForms) {
    const Words legacy = {1, 101, 1, 0, 7, 1, 1001, 1, 1, 1, 11, 12, 13, 1, 14, 15, 16};
    const Words expanded = {9, 101, 8, 1, 1002, 1, 1, 1, 31, 32, 33, 1, 34, 35, 36, 37, 38};
    const Words dru = {5, 1, 51, 52, 53, 54};
    const Words defaultDru = {5, 1};
    const Words cengExp = {10, 41, 42, 43, 44};
    const auto bothOf = [](const std::string& kind) {
        return "2 Both " + kind + "ExpControl and " + kind + "Control specified for state 2; " + kind +
               "ExpControl takes priority, legacy " + kind + "Control will be ignored";
    };
    const std::string skipped = "3 custom power config is not set for perf event state: ";
    const struct {
        uint32_t state;
        Records records;
        Texts lines;
    } rows[] = {
        {0, {legacy, dru, {8, 21, 22, 23, 24}}, {}},
        {1, {expanded, defaultDru, cengExp}, {}},
        {2, {expanded, defaultDru, cengExp}, {bothOf("dcvs"), bothOf("ceng")}},
        {3, {}, {skipped + "3, skipping to update the existing vote"}},
        {4, {}, {skipped + "4, skipping to update the existing vote"}},
    };
    setUp(customCore());
    for (const auto& row : rows) {
        SCOPED_TRACE(row.state);
        EXPECT_TRUE(m_votes.voteCustomState(row.state));
        EXPECT_EQ(takeRecords(), row.records);
        EXPECT_EQ(otherLines(), row.lines);
    }
    m_votes.setPerfProfile(1);
    EXPECT_TRUE(m_votes.voteProfile(3));
    EXPECT_THAT(takeRecords(), Contains(dru)) << "under another profile the state's control goes out";
}

TEST_F(PowerVotesTest, DdrPerfModeNeedsMaximumBusCorners) {
    const auto refused = [](const std::string& corners) {
        return "2 DDR perf mode requested but bus voltage corners are not set to maximum level. DDR perf mode "
               "requires busVoltageCornerMin/Target/Max to be DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER (legacy) or "
               "DCVS_EXP_VCORNER_MAX (expanded). Current legacy values: " +
               corners;
    };
    const std::string enabled = "3 DDR perf mode enabled with maximum bus voltage corners";
    KORCoreConfig core = customCore();
    core.ddrPerfMode = true;
    setUp(core, 74);  // no DRU and CENG records in the way
    const auto check = [&](bool voted, size_t records, const std::string& line) {
        EXPECT_TRUE(voted);
        const Records sent = takeRecords();
        ASSERT_EQ(sent.size(), records);
        EXPECT_EQ(sent.back()[0], records == 2 ? 7U : sent[0][0]);
        EXPECT_THAT(otherLines(), ElementsAre(line));
    };
    check(m_votes.voteCustomState(5), 2, enabled);
    check(m_votes.voteCustomState(1), 1, refused("Min=33, Target=1, Max=34"));  // what stands at those bytes
    check(m_votes.voteIdle(LowVoteMode::powerSaver, 5), 2, enabled);            // by the state's expanded corners
    check(m_votes.voteIdle(LowVoteMode::powerSaver, 4), 1, refused("Min=48, Target=64, Max=64"));
    m_votes.setPerfProfile(1);
    check(m_votes.voteProfile(0), 1, refused("Min=112, Target=112, Max=112"));
    m_votes.setPerfProfile(5);
    check(m_votes.voteProfile(0), 2, enabled);
}

TEST_F(PowerVotesTest, OldArchitecturesDropDruAndCeng) {
    for (const uint32_t arch : {0U, 74U, 75U, NO_LIST}) {
        setUp(coreWith(1), arch);
        m_votes.setPerfConfig(customCore());
        const std::string chip = "KorV" + std::to_string(arch == NO_LIST ? 0 : arch);
        Texts lines = {"4 Setting Perf Profile to 22"};
        if (arch != 75) {
            lines.push_back("3 Dru setting not supported on " + chip + ", Setting Dru to default");
            lines.push_back("3 CENG setting not supported on " + chip + ", Setting CENG to default");
        }
        EXPECT_EQ(m_log.takeTexts(), lines);
        EXPECT_TRUE(m_votes.voteCustomState(0));
        EXPECT_EQ(takeRecords().size(), arch == 75 ? 3U : 1U);
    }
    setUp(coreWith(1), 74);
    m_votes.setPerfConfig(coreWith(21));
    EXPECT_THAT(m_log.takeTexts(), ElementsAre("4 Setting Perf Profile to 3")) << "nothing used, nothing to drop";
}

TEST_F(PowerVotesTest, IdsAreServedInKeyOrderUpToTheFirstFailure) {
    bool (*const votes[])(PowerVotes&) = {[](PowerVotes& v) { return v.voteProfile(0); },
                                          [](PowerVotes& v) { return v.voteIdle(LowVoteMode::powerSaver, 0); },
                                          [](PowerVotes& v) { return v.voteRelease(LowVoteMode::powerSaver, 0); },
                                          [](PowerVotes& v) { return v.voteFloor(0); },
                                          [](PowerVotes& v) { return v.voteCustomState(0); }};
    KORCoreConfig core = customCore();
    core.perfProfile = 1;
    for (const auto vote : votes) {
        EXPECT_TRUE(setUp(core, 79, {3, 1}));
        EXPECT_TRUE(vote(m_votes));
        EXPECT_THAT(m_infra->takeCalls(), ElementsAre("set 102", "set 101"));
        for (const Vote& sent : m_infra->takeVotes()) EXPECT_EQ(sent.records[0][1], sent.id);
        EXPECT_TRUE(setUp(core, 79, {3, 1}, true, "set 102"));
        EXPECT_FALSE(vote(m_votes));
        EXPECT_THAT(m_infra->takeCalls(), ElementsAre("set 102"));
        EXPECT_THAT(otherLines(), ElementsAre("1 Perf Infra set power config failed: [5]"));
    }
}

TEST_F(PowerVotesTest, AnInfrastructureThatIsNotThere) {
    for (const int fault : {0, 1, 2, 3}) {
        setUp(coreWith(1));
        if (fault == 0) m_infra->fetchStatus = 1;
        if (fault == 1) m_infra->fetched = nullptr;
        if (fault == 2) m_votes.setBackendInterface(ZantProviderRecord{});
        if (fault == 3) m_infra->table = {};
        EXPECT_FALSE(m_votes.voteProfile(0));
        EXPECT_FALSE(m_votes.setMemoryConfig());
        EXPECT_FALSE(m_votes.createPowerConfigId(true));
        if (fault == 3) continue;
        EXPECT_FALSE(m_votes.destroyPowerConfigIds());
        const char* const line =
            fault == 1 ? "1 ZantDevice_getInfrastructure returned nullptr\n" : "1 deviceInfra is nullptr";
        EXPECT_THAT(m_log.takeTexts(), ElementsAre(line, line, line, line));
        EXPECT_TRUE(m_votes.voteProfile(0)) << "the ids are gone";
        EXPECT_THAT(m_infra->takeCalls(), IsEmpty());
    }
}

TEST_F(PowerVotesTest, IdsAreMadeByArchitectureAndClientContext) {
    const Texts both = {"create 0 3", "create 0 1"};
    const Texts cancelled = {"destroy 0", "create 0 3", "create 0 1"};
    const struct {
        uint32_t arch;
        bool clientContext;
        const char* failing;
        bool result;
        Texts making, voting, unmaking;
    } rows[] = {
        {69, false, "", true, both, {"set 102", "set 101"}, {"destroy 102", "destroy 101"}},
        {NO_LIST, false, "", true, {}, {"set 0"}, {}},
        {68, true, "", true, cancelled, {"set 102", "set 101"}, {"destroy 102", "destroy 101"}},
        {68, true, "destroy 0", true, cancelled, {"set 102", "set 101"}, {"destroy 102", "destroy 101"}},
        {79, true, "create 0 3", false, {"create 0 3"}, {}, {}},
        {79, true, "destroy 102", true, both, {"set 102", "set 101"}, {"destroy 102", "destroy 101"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.arch << row.failing);
        EXPECT_EQ(setUp(coreWith(1), row.arch, {3, 1}, row.clientContext, row.failing), row.result);
        EXPECT_EQ(m_making, row.making);
        EXPECT_TRUE(m_votes.voteProfile(0));
        EXPECT_EQ(m_infra->takeCalls(), row.voting);
        EXPECT_EQ(m_votes.destroyPowerConfigIds(), std::string(row.failing) != "destroy 102");
        EXPECT_EQ(m_infra->takeCalls(), row.unmaking);
        EXPECT_TRUE(m_votes.destroyPowerConfigIds());
        EXPECT_TRUE(row.unmaking.empty() || m_votes.voteFloor(0));
        EXPECT_THAT(m_infra->takeCalls(), IsEmpty()) << "all are gone";
    }
    EXPECT_TRUE(setUp(coreWith(1), 79, {3, 3}));
    EXPECT_TRUE(m_votes.voteProfile(0));
    EXPECT_THAT(m_infra->takeCalls(), ElementsAre("set 101")) << "the first id of a core that stands twice";
    m_infra->table.destroyPowerConfigId = nullptr;
    EXPECT_FALSE(m_votes.destroyPowerConfigIds());
    setUp(coreWith(1), 68);
    m_votes.destroyPowerConfigIds();
    m_infra->fetchStatus = 1;
    m_log.take();
    EXPECT_FALSE(m_votes.createPowerConfigId(true));
    EXPECT_THAT(m_log.takeTexts(), ElementsAre("1 deviceInfra is nullptr", "1 default vote cancellation failed.",
                                               "1 Dar Link default vote cancellation failed!"));
}

TEST_F(PowerVotesTest, SettingsThatTravelOnce) {
    const std::string rpcLatency = "3 Windows platform does not support RPC control latency";
    const std::string adaptive = "3 Windows platform does not support adaptive polling";
    const Words polls = {3, 9999};
    const struct {
        uint32_t profile, pollingTime, druTimeout;
        Records records;
        Texts lines;
    } rows[] = {
        {1, kor::NOT_SET, 300000, {}, {rpcLatency}},
        {1, kor::NOT_SET, 299999, {{4, 299999}}, {rpcLatency}},
        {1, 55, 300000, {{3, 55}}, {rpcLatency, adaptive}},
        {5, kor::NOT_SET, 1, {{4, 1}, polls}, {rpcLatency, adaptive}},
        {10, kor::NOT_SET, 300000, {polls}, {rpcLatency, adaptive}},
    };
    for (const auto& row : rows) {
        KORCoreConfig core = coreWith(row.profile);
        core.rpcPollingTime = row.pollingTime;
        core.druTimeoutUs = row.druTimeout;
        core.adaptivePollingTime = 7;
        setUp(core);
        m_votes.setRpcAndTimeoutConfig();
        EXPECT_EQ(takeRecords(), row.records) << row.profile << " " << row.druTimeout;
        EXPECT_EQ(otherLines(), row.lines);
    }
    KORCoreConfig core = coreWith(5);
    core.druTimeoutUs = 1;
    setUp(core, 79, {3, 1}, true, "set 102");
    m_votes.setRpcAndTimeoutConfig();
    EXPECT_THAT(m_infra->takeCalls(), ElementsAre("set 102", "set 101", "set 102", "set 101")) << "the walk goes on";
    const std::string failed = "1 Perf Infra set power config failed: [5]";
    EXPECT_THAT(otherLines(), ElementsAre(failed, "1 Setting DRU timeout interval failed", rpcLatency, failed,
                                          "1 Setting RPC polling time failed."));
}

}  // namespace
}  // namespace zant::test
