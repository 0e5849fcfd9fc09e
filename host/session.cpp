#include "session.h"

#include <fmt/format.h>

#include <algorithm>
#include <thread>

#include "value_tables.h"

namespace runhost {

namespace {

std::string counted(size_t count, const char* noun) {
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

template <typename Decode>
RecordGroup decodeList(std::string subject, ZantConfigWrapper** list, uint32_t count, Decode decode) {
    RecordGroup group{std::move(subject), {}};
    for (uint32_t i = 0; list != nullptr && i < count; ++i) group.records.push_back(decode(*list[i]));
    return group;
}

uint32_t lengthToNull(ZantConfigWrapper** list) {
    uint32_t length = 0;
    while (list != nullptr && list[length] != nullptr) ++length;
    return length;
}

bool isQuiet(const CallReport& call) {
    const bool hasRecords = std::any_of(call.recordGroups.begin(), call.recordGroups.end(),
                                        [](const RecordGroup& group) { return !group.records.empty(); });
    return call.outcome == Outcome::OK && call.log.empty() && !hasRecords;
}

}  // namespace

Session::Session(const ExtensionLibrary& library, const Backend& backend, std::string config, DocumentFacts facts,
                 RunPlan plan, int32_t logLevel)
    : m_library(library),
      m_backend(backend),
      m_config(std::move(config)),
      m_logLevel(logLevel),
      m_facts(std::move(facts)),
      m_plan(std::move(plan)),
      m_timeLine(backend),
      m_object(nullptr, ExtensionLibrary::Destroy{nullptr}) {}

const std::vector<std::string>& Session::graphNames() const {
    return m_plan.graphs.empty() ? m_facts.graphNames : m_plan.graphs;
}

void Session::stage(const char* title, const char* explanation) {
    m_report->stages.push_back({title, explanation, {}});
    m_timeLine.enter(title);
}

template <typename Call>
CallReport& Session::step(const char* name, bool byHost, Call call) {
    const bool succeeded = call();
    if (!succeeded) m_report->succeeded = false;
    std::vector<CallReport>& calls = m_report->stages.back().calls;
    calls.push_back({name, byHost, succeeded ? Outcome::OK : Outcome::FAILED, {}, {}, takeLog()});
    return calls.back();
}

void Session::skip(const char* name, const char* reason) {
    m_report->stages.back().calls.push_back({name, false, Outcome::SKIPPED, reason, {}, {}});
}

bool Session::loadAndBind() {
    stage("Load and bind", "make the object, give it a log, the backend and the document");
    hook("createBackendInterface", [&] {
        m_object = m_library.create();
        return m_object != nullptr;
    }).note = "the object that answers the hooks";
    if (m_object == nullptr) return false;
    hook("setupLogging", [&] {
        return m_object->setupLogging(captureLog, static_cast<ZantLogLevel>(m_logLevel));
    }).note = fmt::format("log lines up to level {} ({})", m_logLevel, levelName(m_logLevel));
    const CallReport& bind =
        hook("bindBackendLibrary", [&] { return m_object->bindBackendLibrary(m_backend.handle()); });
    if (bind.outcome == Outcome::FAILED) return false;
    m_report->stages.back().calls.back().note = "the backend's provider was found, its API version fits";
    CallReport& load = hook("loadConfig", [&] { return m_object->loadConfig(m_config); });
    load.note = load.outcome == Outcome::OK ? "the document was accepted" : "see \"runhost check\" for each fault";
    if (load.outcome == Outcome::FAILED) return false;
    if (m_plan.profile) {
        hook("setPerfProfile", [&] { return m_object->setPerfProfile(*m_plan.profile); }).note =
            fmt::format("{} ({}), instead of the document's", nameOf(perfProfiles(), *m_plan.profile), *m_plan.profile);
    }
    return true;
}

bool Session::createDevice() {
    stage("Device", "open the device with the first device's options");
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before = hook("beforeDeviceCreate", [&] { return m_object->beforeDeviceCreate(&list, &count); });
    if (before.outcome == Outcome::FAILED) return false;
    before.note = counted(count, "record") + " to open the device with";
    before.recordGroups.push_back(decodeList("device", list, count, decodeDeviceRecord));
    hostStep("createDevice", [&] { return m_backend.createDevice(list, count, &m_device) == 0; });
    hook("afterDeviceCreate", [&] { return m_object->afterDeviceCreate(); });
    if (m_facts.asksForExtension) {
        hook("enableKorExtension", [&] { return m_object->enableKorExtension(m_device); }).note =
            "sends the extension switch to the device";
    } else {
        skip("enableKorExtension", "no device of the document asks for it");
    }
    return m_device != nullptr;
}

void Session::createContext() {
    stage("Context", "create the context that holds the graphs");
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before = hook("beforeContextCreate", [&] { return m_object->beforeContextCreate(&list, &count); });
    before.note = counted(count, "record") + " for the context";
    before.recordGroups.push_back(decodeList("context", list, count, dumpRecord));
    hostStep("createContext", [&] { return m_backend.createContext(m_device, list, count, &m_context) == 0; });
    hook("afterContextCreate", [&] { return m_object->afterContextCreate(); });
}

void Session::composeGraphs() {
    stage("Compose", "build each graph with the options that the document has for its name");
    GraphConfigInfo_t** infos = nullptr;
    uint32_t count = 0;
    CallReport& before = hook("beforeGraphsCompose", [&] { return m_object->beforeGraphsCompose(&infos, &count); });
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
        hostStep("createGraph", [&] { return m_backend.createGraph(m_context, name, configs, &graph) == 0; }).note =
            configs == nullptr ? name + ": the document has no options for it" : name;
        m_graphs.push_back(graph);
    }
    hook("afterGraphsCompose", [&] { return m_object->afterGraphsCompose(); });
}

void Session::finalizeGraphs() {
    stage("Finalize", "let the backend prepare the graphs");
    hook("beforeGraphFinalize", [&] { return m_object->beforeGraphFinalize(); });
    for (size_t i = 0; i < m_graphs.size(); ++i) {
        hostStep("finalizeGraph", [&] { return m_backend.finalizeGraph(m_graphs[i]) == 0; }).note = graphNames()[i];
    }
    hook("afterGraphFinalize", [&] { return m_object->afterGraphFinalize(); });
}

void Session::executeGraph(size_t index) {
    const std::string& name = graphNames()[index];
    ZantConfigWrapper** list = nullptr;
    uint32_t count = 0;
    CallReport& before =
        hook("beforeGraphExecute", [&] { return m_object->beforeGraphExecute(name.c_str(), &list, &count); });
    before.note = fmt::format("{}: {}", name, counted(count, "late record"));
    before.recordGroups.push_back(decodeList("graph " + name, list, count, decodeGraphRecord));
    hostStep("executeGraph", [&] { return m_backend.executeGraph(m_graphs[index], list, count) == 0; }).note = name;
    hook("afterGraphExecute", [&] { return m_object->afterGraphExecute(); }).note = name;
}

void Session::pause(std::chrono::milliseconds duration) {
    if (duration.count() == 0) return;
    m_timeLine.enter("Pause");
    hostStep("pause", [&] {
        std::this_thread::sleep_for(duration);
        return true;
    }).note = fmt::format("{} ms", duration.count());
}

// Later iterations repeat the first, so only those of their steps stay in the report that have something to say.
void Session::executeGraphs() {
    constexpr const char* repeat = "run again";
    stage("Execute", "run each graph");
    std::vector<CallReport>& calls = m_report->stages.back().calls;
    uint32_t firstQuiet = 2;
    for (uint32_t run = 1; run <= m_plan.iterations; ++run) {
        const size_t before = calls.size();
        if (run > 1) pause(m_plan.interval);
        m_timeLine.enter(fmt::format("Run {}", run));
        const size_t votesBefore = m_backend.voteCount();
        for (size_t i = 0; i < m_graphs.size(); ++i) executeGraph(i);
        ++(m_backend.voteCount() == votesBefore ? m_report->quietRuns : m_report->votingRuns);
        if (run == 1) continue;
        const auto first = calls.begin() + static_cast<std::ptrdiff_t>(before);
        calls.erase(std::remove_if(first, calls.end(), isQuiet), calls.end());
        if (calls.size() > before || calls.back().name != repeat) firstQuiet = run;
        if (firstQuiet == run) calls.push_back({repeat, true, Outcome::OK, {}, {}, {}});
        calls.back().note = fmt::format("runs {} to {}, with nothing new to show", firstQuiet, run);
    }
    pause(m_plan.finalPause);
}

void Session::freeContext() {
    stage("Free the context", "the graphs go with it");
    hook("beforeContextFree", [&] { return m_object->beforeContextFree({m_context}); });
    hostStep("freeContext", [&] { return m_backend.freeContext(m_context) == 0; });
    hook("afterContextFree", [&] { return m_object->afterContextFree(); });
}

void Session::freeDevice() {
    stage("Free the device", "and the object after it");
    if (m_device != nullptr) {
        hook("beforeDeviceFree", [&] { return m_object->beforeDeviceFree(); });
        hostStep("freeDevice", [&] { return m_backend.freeDevice(m_device) == 0; });
    }
    hook("destroyBackendInterface", [&] {
        m_object.reset();
        return true;
    });
}

void Session::collectAccounts(RunReport& report) const {
    report.votes = m_timeLine.lines();
    report.levels = levels(report.votes, m_backend.elapsedNs());
    report.ledger = m_backend.ledger();
    report.backendKeepsLedger = m_backend.isSimulated();
    report.misuse = Backend::misuseIn(report.ledger);
    if (!report.misuse.empty()) report.succeeded = false;
}

void Session::run(RunReport& report) {
    m_report = &report;
    report.succeeded = true;
    takeLog();
    if (loadAndBind() && createDevice()) {
        createContext();
        if (m_context != nullptr) {
            composeGraphs();
            finalizeGraphs();
            executeGraphs();
            freeContext();
        }
    }
    if (m_object != nullptr) freeDevice();
    collectAccounts(report);
}

}  // namespace runhost
