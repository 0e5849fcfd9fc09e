// Around each run of a graph: its own perf profile, the votes, and the settings that can still take effect on a graph
// that is finished. Those go out once in the life of an entry; a run with none left allocates nothing.
#include <algorithm>
#include <string_view>

#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

using Graph = KORGraphConfig;
using Record = KORGraphCustomConfig;

// One row for each pass over the entries, in order.
struct LateSettingRow {
    bool (*isLeft)(const Graph& graph);
    KORGraphOption option;
    void (*fill)(const Graph& graph, Record& record);
    bool Graph::*applied;
    const char* shortage;  // the line of a shortage of memory
    void (*tell)(const Graph& graph, const char* name);
};

bool isSluThreadsLeft(const Graph& graph) {
    return graph.sluThreads != 0 && !graph.sluThreadsApplied;
}

void fillSluThreads(const Graph& graph, Record& record) {
    record.values.number64 = graph.sluThreads;
}

void tellSluThreads(const Graph& graph, const char* name) {
    ZANT_LOG_INFO("Number of SLU threads %d configured for graph %s before execute.",
                  static_cast<int>(graph.sluThreads), name);
}

bool isSpadRetentionLeft(const Graph& graph) {
    return graph.spadRetention != NOT_SET && !graph.spadRetentionApplied;
}

void fillSpadRetention(const Graph& graph, Record& record) {
    record.values.setting.first.number = KOR_GRAPH_TUNING_SPAD_RETENTION;
    record.values.setting.second = static_cast<float>(graph.spadRetention);
}

void tellSpadRetention(const Graph& graph, const char* name) {
    ZANT_LOG_INFO("spadRetention %d configured for graph %s before execute.", static_cast<int>(graph.spadRetention),
                  name);
}

bool isFp16ClampOverflowLeft(const Graph& graph) {
    return graph.fp16ClampOverflow && !graph.fp16ClampOverflowApplied;
}

void fillFp16ClampOverflow(const Graph&, Record& record) {
    record.values.setting.first.flag = 1;
}

void tellFp16ClampOverflow(const Graph&, const char* name) {
    ZANT_LOG_INFO("fp16ClampOverflow configured for graph %s before execute.", name);
}

// The test of all rows in one, for the road that every run takes.
bool isAnyLeft(const Graph& graph) {
    return isSluThreadsLeft(graph) || isSpadRetentionLeft(graph) || isFp16ClampOverflowLeft(graph);
}

constexpr LateSettingRow LATE_SETTINGS[] = {
    {isSluThreadsLeft, KOR_GRAPH_OPTION_SLU_THREADS, fillSluThreads, &Graph::sluThreadsApplied,
     "sluThreadConfig alloc failed - %s", tellSluThreads},
    {isSpadRetentionLeft, KOR_GRAPH_OPTION_TUNING, fillSpadRetention, &Graph::spadRetentionApplied,
     "spadRetentionConfig alloc failed - %s", tellSpadRetention},
    {isFp16ClampOverflowLeft, KOR_GRAPH_OPTION_FP16_CLAMP_OVERFLOW, fillFp16ClampOverflow,
     &Graph::fp16ClampOverflowApplied, "fp16SaturateConfig alloc failed - %s", tellFp16ClampOverflow},
};

}  // namespace

bool KORBackend::isAsyncVoting() const noexcept {
    return !m_deviceConfigs.empty() && m_deviceConfigs.front().asyncVoting;
}

bool KORBackend::addLateSettings(const char* graphName) {
    // Most runs end here: nothing is left, and no name is compared.
    if (std::none_of(m_graphConfigs.begin(), m_graphConfigs.end(), isAnyLeft)) return true;
    bool result = true;
    for (const LateSettingRow& row : LATE_SETTINGS) {
        for (KORGraphConfig& graph : m_graphConfigs) {
            if (!row.isLeft(graph)) continue;
            for (const std::string& name : graph.graphNames) {
                if (name != graphName) continue;
                const bool added = tellingShortage(row.shortage, [&] {
                    Record record{};
                    record.option = row.option;
                    row.fill(graph, record);
                    return appendRecord(m_executeConfigs.records, m_executeConfigs.list, makeGraphRecord(record),
                                        row.shortage);
                });
                result = result && added;
                if (!added) continue;
                graph.*row.applied = true;
                row.tell(graph, name.c_str());
            }
        }
    }
    return result;
}

bool KORBackend::beforeGraphExecute(const char* graphName, ZantConfigWrapper*** list, uint32_t* count) {
    return guarded("beforeGraphExecute", false, [&] {
        if (!hasOutPointers("beforeGraphExecute", list, count)) return false;
        if (graphName == nullptr) {
            ZANT_LOG_ERROR("beforeGraphExecute: the graph to run needs a name, got nullptr");
            return false;
        }
        if (m_perfDriver != nullptr && !m_graphPerfProfiles.empty()) {
            const auto profile = m_graphPerfProfiles.find(std::string_view(graphName));
            if (profile != m_graphPerfProfiles.end()) m_perfDriver->setPerfProfile(profile->second);
        }
        bool result = voteEvent(GRAPH_INFERENCE_START, isAsyncVoting(), "PerfDriver not available before graph execute",
                                "PerfDriver setState GRAPH_INFERENCE_START failed before graph execute");
        result = addLateSettings(graphName) && result;
        ConfigList& configs = m_executeConfigs.list;
        if (configs.size() != 0) {
            *list = configs.data();
            *count = configs.size();
        }
        return result;
    });
}

bool KORBackend::afterGraphExecute() {
    const bool result = guarded("afterGraphExecute", false, [&] {
        return voteEvent(GRAPH_INFERENCE_DONE, isAsyncVoting(), "PerfDriver not available after graph execute.",
                         "PerfDriver setState GRAPH_INFERENCE_DONE failed after graph execute");
    });
    m_executeConfigs.list.clear();
    m_executeConfigs.records.clear();
    return result;
}

}  // namespace zant::kor
