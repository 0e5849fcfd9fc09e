// Drives one object of the extension library through the life of one model.
#pragma once

#include <string>

#include "document_facts.h"
#include "modules.h"
#include "run_report.h"

namespace runhost {

class Session {
public:
    // config: what loadConfig gets. library and backend have to outlive the session.
    Session(const ExtensionLibrary& library, const Backend& backend, std::string config, DocumentFacts facts,
            int32_t logLevel);

    // Fills in the stages, the ledger and the result. A hook that the rest depends on ends the life early.
    void run(RunReport& report);

private:
    bool loadAndBind();
    bool createDevice();
    void createContext();
    void composeGraphs();
    void finalizeGraphs();
    void executeGraph(size_t index);
    void freeContext();
    void freeDevice();

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
    RunReport* m_report = nullptr;
    ExtensionLibrary::Object m_object;
    void* m_device = nullptr;
    void* m_context = nullptr;
    std::vector<void*> m_graphs;
};

}  // namespace runhost
