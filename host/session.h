// Drives one object of the extension library through the life of one model.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "document_facts.h"
#include "modules.h"
#include "run_report.h"

namespace runhost {

struct RunPlan {
    std::vector<std::string> graphs;          // the document's when empty
    std::optional<uint32_t> profile;          // overrides the document's
    uint32_t iterations = 1;                  // each runs every graph once
    std::chrono::milliseconds interval{0};    // between iterations
    std::chrono::milliseconds finalPause{0};  // after the last one
};

class Session {
public:
    // config: what loadConfig gets. library and backend have to outlive the session.
    Session(const ExtensionLibrary& library, const Backend& backend, std::string config, DocumentFacts facts,
            RunPlan plan, int32_t logLevel);

    // Fills in the stages, the votes, the ledger and the result. A hook that the rest depends on ends the life early.
    void run(RunReport& report);

private:
    bool loadAndBind();
    bool createDevice();
    void createContext();
    void composeGraphs();
    void finalizeGraphs();
    void executeGraphs();
    void executeGraph(size_t index);
    void pause(std::chrono::milliseconds duration);
    void freeContext();
    void freeDevice();

    const std::vector<std::string>& graphNames() const;
    void collectAccounts(RunReport& report) const;
    void stage(const char* title, const char* explanation);
    // Runs a hook or a step of the host, takes its log lines and adds it to the stage.
    template <typename Call>
    CallReport& step(const char* name, bool byHost, Call call);
    template <typename Call>
    CallReport& hook(const char* name, Call call) {
        return step(name, false, call);
    }
    template <typename Call>
    CallReport& hostStep(const char* name, Call call) {
        return step(name, true, call);
    }
    void skip(const char* name, const char* reason);

    const ExtensionLibrary& m_library;
    const Backend& m_backend;
    const std::string m_config;
    const int32_t m_logLevel;
    const DocumentFacts m_facts;
    const RunPlan m_plan;
    TimeLine m_timeLine;
    RunReport* m_report = nullptr;
    ExtensionLibrary::Object m_object;
    void* m_device = nullptr;
    void* m_context = nullptr;
    std::vector<void*> m_graphs;
};

}  // namespace runhost
