// A session's graphs: how they come to be, and how they run.
#include <fmt/format.h>

#include <algorithm>
#include <thread>

#include "run/record_lists.h"
#include "run/session.h"

namespace runhost {

namespace {

constexpr const char* REPEAT = "run again";

bool isQuiet(const CallReport& call) {
    const bool hasRecords = std::any_of(call.recordGroups.begin(), call.recordGroups.end(),
                                        [](const RecordGroup& group) { return !group.records.empty(); });
    return call.outcome == Outcome::OK && call.log.empty() && !hasRecords;
}

}  // namespace

const std::vector<std::string>& Session::graphNames() const {
    return m_plan.graphs.empty() ? m_facts.graphNames : m_plan.graphs;
}

void Session::composeGraphs() {
    m_steps.stage("Compose", "build each graph with the options that the document has for its name");
    GraphConfigInfo_t** infos = nullptr;
    uint32_t count = 0;
    CallReport& before =
        m_steps.hook("beforeGraphsCompose", [&] { return m_object->beforeGraphsCompose(&infos, &count); });
    before.note = "options for " + counted(count, "graph");
    for (uint32_t i = 0; infos != nullptr && i < count; ++i) {
        before.recordGroups.push_back(decodeList(fmt::format("graph {}", infos[i]->graphName), infos[i]->configs,
                                                 lengthToNull(infos[i]->configs), decodeGraphRecord));
    }
    for (const std::string& name : graphNames()) {
        GraphConfigInfo_t** end = infos + (infos != nullptr ? count : 0);
        GraphConfigInfo_t** info =
            std::find_if(infos, end, [&](const GraphConfigInfo_t* candidate) { return name == candidate->graphName; });
        ZantConfigWrapper** configs = info == end ? nullptr : (*info)->configs;
        void* graph = nullptr;
        m_steps
            .hostStep("createGraph",
                      [&] { return m_backend.createGraph(m_contexts[0].handle, name, configs, &graph) == 0; })
            .note = configs == nullptr ? name + ": the document has no options for it" : name;
        addGraph(name, graph, 0);
    }
    m_steps.hook("afterGraphsCompose", [&] { return m_object->afterGraphsCompose(); });
}

// A graph that could not be made runs nowhere.
void Session::addGraph(const std::string& name, void* handle, size_t context) {
    if (handle != nullptr) m_graphs.push_back({name, handle, context});
}

// The contexts get the graphs in turn, as if each binary held one of as many parts of the model.
void Session::retrieveGraphs() {
    m_steps.stage("Graphs", "take the graphs out of the contexts that were made from binaries");
    for (size_t i = 0; i < graphNames().size(); ++i) {
        const std::string& name = graphNames()[i];
        const size_t context = i % m_contexts.size();
        void* graph = nullptr;
        m_steps
            .hostStep("retrieveGraph",
                      [&] { return m_backend.retrieveGraph(m_contexts[context].handle, name, &graph) == 0; })
            .note = fmt::format("{} in {}", name, m_contexts[context].name);
        addGraph(name, graph, context);
    }
}

void Session::finalizeGraphs() {
    m_steps.stage("Finalize", "let the backend prepare the graphs");
    m_steps.hook("beforeGraphFinalize", [&] { return m_object->beforeGraphFinalize(); });
    for (const Graph& graph : m_graphs) {
        m_steps.hostStep("finalizeGraph", [&] { return m_backend.finalizeGraph(graph.handle) == 0; }).note = graph.name;
    }
    m_steps.hook("afterGraphFinalize", [&] { return m_object->afterGraphFinalize(); });
}

void Session::executeGraph(const Graph& graph) {
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before = m_steps.hook("beforeGraphExecute",
                                      [&] { return m_object->beforeGraphExecute(graph.name.c_str(), &list, &count); });
    before.note = fmt::format("{}: {}", graph.name, counted(count, "late record"));
    before.recordGroups.push_back(decodeList("graph " + graph.name, list, count, decodeGraphRecord));
    m_steps.hostStep("executeGraph", [&] { return m_backend.executeGraph(graph.handle, list, count) == 0; }).note =
        graph.name;
    m_steps.hook("afterGraphExecute", [&] { return m_object->afterGraphExecute(); }).note = graph.name;
}

void Session::pause(std::chrono::milliseconds duration) {
    if (duration.count() == 0) return;
    m_steps.timeLine().enter("Pause");
    m_steps
        .hostStep("pause",
                  [&] {
                      std::this_thread::sleep_for(duration);
                      return true;
                  })
        .note = fmt::format("{} ms", duration.count());
}

// Later iterations repeat the first, so only those of their steps stay in the report that have something to say.
// firstQuiet: the first of the newest row of runs without any.
void Session::runIteration(uint32_t run, uint32_t& firstQuiet) {
    std::vector<CallReport>& calls = m_steps.calls();
    const size_t before = calls.size();
    if (run > 1) pause(m_plan.interval);
    m_steps.timeLine().enter(fmt::format("Run {}", run));
    const size_t votesBefore = m_backend.voteCount();
    for (const Graph& graph : m_graphs) {
        if (m_contexts[graph.context].canRun) executeGraph(graph);
    }
    ++(m_backend.voteCount() == votesBefore ? m_report.quietRuns : m_report.votingRuns);
    if (run == 1) return;
    const auto first = calls.begin() + static_cast<std::ptrdiff_t>(before);
    calls.erase(std::remove_if(first, calls.end(), isQuiet), calls.end());
    if (calls.size() > before || calls.back().name != REPEAT) firstQuiet = run;
    if (firstQuiet == run) calls.push_back({REPEAT, true, Outcome::OK, {}, {}, {}});
    calls.back().note = fmt::format("runs {} to {}, with nothing new to show", firstQuiet, run);
}

void Session::executeGraphs() {
    m_steps.stage("Execute", "run each graph");
    uint32_t firstQuiet = 2;
    for (uint32_t run = 1; run <= m_plan.iterations; ++run) {
        if (run == 2 && m_plan.detach) detachAndAttach();
        runIteration(run, firstQuiet);
    }
    pause(m_plan.finalPause);
}

}  // namespace runhost
