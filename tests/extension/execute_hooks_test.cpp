// Around a run: late settings go out once, profiles and votes follow the graph, and a run with nothing left is cheap.
#include <map>

#include "support/allocation.h"
#include "support/bind_provider.h"
#include "support/graph_records.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;

constexpr uint32_t NO = 0xFFFFFFFFU;
const char* const LATE_MEMBERS = R"("slu_threads":3,"spad_retention":0,"fp16_clamp_overflow":true)";

class ExecuteHooks : public testing::Test {
protected:
    // A run's records by words.
    std::string run(const char* name, bool withAfter = true) {
        m_list = nullptr;
        m_count = 0;
        EXPECT_TRUE(m_backend.beforeGraphExecute(name, &m_list, &m_count));
        std::string words = wordsOf(recordsOf(m_list, m_count));
        EXPECT_TRUE(!withAfter || m_backend.afterGraphExecute());
        return words;
    }
    void startDriver(const std::string& document) {
        ASSERT_TRUE(bindProvider(m_backend, m_infrastructure) && m_backend.loadConfig(document));
        ASSERT_TRUE(m_backend.beforeDeviceCreate(&m_list, &m_count) && m_backend.afterDeviceCreate());
        m_log.take();
    }
    std::vector<std::string> linesWith(const std::string& part) {
        std::vector<std::string> lines = m_log.takeTexts();
        std::erase_if(lines, [&](const std::string& line) { return line.find(part) == line.npos; });
        return lines;
    }

    FakeInfrastructure m_infrastructure;
    kor::KORBackend m_backend;
    LogCapture m_log{ZANT_LOG_LEVEL_VERBOSE};
    ZantConfigWrapper** m_list = nullptr;
    uint32_t m_count = 77;
};

TEST_F(ExecuteHooks, LateSettingsGoOutOnceForTheFirstOfAnEntrysGraphs) {
    ASSERT_TRUE(m_backend.loadConfig(std::string(R"({"graphs":[{"graph_names":["a","b"],)") + LATE_MEMBERS +
                                     R"(},{"graph_names":["c","b"],"slu_threads":4294967295}]})"));
    EXPECT_FALSE(m_backend.beforeGraphExecute(nullptr, &m_list, &m_count));
    EXPECT_TRUE(m_backend.beforeGraphExecute("B", &m_list, &m_count));
    EXPECT_EQ(m_count, 77U);
    EXPECT_EQ(run("b"), "6 0 3|6 0 ffffffff|1 0 8|14 0 1|");
    for (const char* name : {"a", "b", "c"}) EXPECT_EQ(run(name), "");
    // What the host adds to an entry later has not gone out yet.
    for (const uint32_t threads : {NO, 9U}) {
        ASSERT_TRUE(m_backend.setGraphOptions(2, "", NO, "e", NO, NO, NO, threads));
        EXPECT_EQ(run("e"), threads == NO ? "" : "6 0 9|");
    }
}

TEST_F(ExecuteHooks, CompositionLeavesTheRetentionOnly) {
    ASSERT_TRUE(m_backend.loadConfig(graphDocument(LATE_MEMBERS)));
    GraphConfigInfo_t** infos = nullptr;
    EXPECT_TRUE(m_backend.beforeGraphsCompose(&infos, &m_count));
    EXPECT_EQ(wordsOf(recordsOf(infos[0]->configs)), "6 0 3|14 0 1|");
    EXPECT_TRUE(m_backend.afterGraphsCompose());
    // Without an "after" the records are handed out again.
    for (const bool withAfter : {false, true}) EXPECT_EQ(run("g", withAfter), "1 0 8|");
    EXPECT_EQ(run("g"), "");
}

// What memory was too short for goes out with the next run.
TEST(ExecuteHooksShortage, AnyAllocationOfARunMayFail) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    bool failed = true;
    for (int failAt = 0; failed; ++failAt) {
        ZantConfigWrapper** list = nullptr;
        uint32_t counts[2] = {0, 0};
        kor::KORBackend backend;
        ASSERT_TRUE(backend.loadConfig(graphDocument(LATE_MEMBERS)));
        failAllocation(failAt);
        const bool result = backend.beforeGraphExecute("g", &list, &counts[0]);
        failed = !failAllocation(-1);
        EXPECT_EQ(result, !failed);
        EXPECT_TRUE(backend.afterGraphExecute() && backend.beforeGraphExecute("g", &list, &counts[1]));
        EXPECT_THAT(counts, ElementsAre(failed ? 2 : 3, failed ? 1 : 0));
        EXPECT_EQ(log.takeTexts().size(), failed ? 1U : 0U);
    }
}

// Custom votes for all six states, told apart by their sleep latencies 10 to 15.
std::string customDocument() {
    std::string custom;
    int latency = 10;
    for (const char* state :
         {"init_start", "init_done", "inference_start", "inference_done", "deinit_start", "deinit_done"}) {
        custom += (custom.empty() ? "" : ",") + (R"({"graphState":[")" + std::string(state)) +
                  R"("],"dcvsExpControl":{"powerMode":"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE",)" +
                  R"("sleep_latency_us":)" + std::to_string(latency++);
        for (const char* corner : {"busVoltageCornerMin", "busVoltageCornerTarget", "busVoltageCornerMax",
                                   "coreVoltageCornerMin", "coreVoltageCornerTarget", "coreVoltageCornerMax"}) {
            custom += ",\"" + std::string(corner) + R"(":"DCVS_EXP_VCORNER_SVS")";
        }
        custom += "}}";
    }
    return R"({"devices":[{"async_voting":false,"cores":[{"perf_profile":"custom","custom":[)" + custom + "]}]}]}";
}

// fault: a hook that votes for another stage of the life than its own.
TEST_F(ExecuteHooks, EachStageVotesThroughALiveDriver) {
    startDriver(customDocument());
    const std::vector<uint32_t> ofStages = {10, 11, 12, 13, 10, 11, 10, 11, 10, 11, 14, 15};
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>> perContext;
    for (const bool hasDriver : {true, false}) {
        m_infrastructure.takeVotes();
        EXPECT_TRUE(m_backend.beforeContextCreate(&m_list, &m_count) && m_backend.afterContextCreate());
        EXPECT_TRUE(m_backend.beforeGraphFinalize() && m_backend.afterGraphFinalize());
        EXPECT_TRUE(m_backend.beforeGraphExecute("g", &m_list, &m_count) && m_backend.afterGraphExecute());
        EXPECT_TRUE(m_backend.beforeContextCreateFromBinary(&m_list, &m_count));
        EXPECT_TRUE(m_backend.afterContextCreateFromBinary());
        EXPECT_TRUE(m_backend.beforeContextCreateFromBinaryList(&perContext, &m_list, &m_count));
        EXPECT_TRUE(m_backend.afterContextCreateFromBinaryList());
        EXPECT_TRUE(m_backend.beforeContextApplyBinarySection() && m_backend.afterContextApplyBinarySection());
        EXPECT_TRUE(m_backend.beforeContextFree({}) && m_backend.afterContextFree());
        std::vector<uint32_t> latencies;
        for (const Vote& vote : m_infrastructure.takeVotes()) latencies.push_back(vote.records.at(0).at(4));
        EXPECT_EQ(latencies, hasDriver ? ofStages : std::vector<uint32_t>());
        EXPECT_EQ(linesWith("PerfDriver not available ").size(), hasDriver ? 0U : 12U);
        EXPECT_TRUE(m_backend.beforeDeviceFree());
        m_log.take();
    }
}

// In between, a run with nothing left allocates nothing.
TEST_F(ExecuteHooks, AGraphsOwnProfileHoldsUntilTheContextIsFreed) {
    startDriver(
        R"({"devices":[{"cores":[{"perf_profile":"balanced"}]}],"graphs":[{"graph_names":["none"]},{"graph_names":)"
        R"(["a graph of a name that fits no short string"],"perf_profile":"high_performance"},)"
        R"({"graph_names":["other"],"slu_threads":2}]})");
    const char* const name = "a_graph_of_a_name_that_fits_no_short_string";
    for (const char* graph : {name, "other"}) run(graph);
    EXPECT_THAT(linesWith("Setting Perf Profile"), ElementsAre("4 Setting Perf Profile to 3"));
    const size_t before = allocationCount();
    EXPECT_TRUE(m_backend.beforeGraphExecute(name, &m_list, &m_count) && m_backend.afterGraphExecute());
    EXPECT_EQ(allocationCount(), before);
    EXPECT_TRUE(m_backend.beforeContextFree({}) && m_backend.setPerfProfile(3));
    EXPECT_THAT(linesWith("Setting Perf Profile"),
                ElementsAre("4 Setting Perf Profile to 1", "4 Setting Perf Profile to 3"));
}

}  // namespace
}  // namespace zant::test
