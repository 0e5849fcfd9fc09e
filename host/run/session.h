// Drives one object of the extension library through the life of one model.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "machine/backend.h"
#include "run/document_facts.h"
#include "run/graph_tensors.h"
#include "run/run_plan.h"
#include "run/simulated_memory.h"
#include "run/steps.h"

namespace runhost {

// What a session works with; all of it has to outlive the session.
struct SessionParts {
    const ExtensionLibrary& library;
    const Backend& backend;
    const SimulatedMemory* memory;  // null with a backend that is not simulated
};

class Session {
public:
    // config: what loadConfig gets. The report gets the stages, the votes, the memory, the ledgers and the result.
    Session(const SessionParts& parts, std::string config, DocumentFacts facts, RunPlan plan, RunReport& report);

    // A hook that the rest depends on ends the life early.
    void run();

private:
    struct Context {
        std::string name;
        void* handle = nullptr;
        std::unique_ptr<GraphTensors::Allocator> allocator;
        std::vector<GraphTensors> tensors;  // none without the allocator
        bool canRun = true;                 // its own buffers are where they belong
    };
    struct Graph {
        std::string name;
        void* handle;
        size_t context;
    };

    bool loadAndBind();
    bool createDevice();
    void runModel();
    void freeDevice();
    void collectAccounts();

    // session_contexts.cpp. Whether there are contexts then.
    bool createContexts();
    // The context of a road that has one, and the records that its hook handed out for it.
    Context& addOnlyContext(CallReport& before, ZantConfigWrapper** list, uint32_t count);
    void createOneContext();
    void createFromBinary();
    void createFromBinaryList();
    void nameContexts();
    void freeContexts();

    // session_graphs.cpp
    void composeGraphs();
    void retrieveGraphs();
    void finalizeGraphs();
    void executeGraphs();
    void executeGraph(const Graph& graph);
    void addGraph(const std::string& name, void* handle, size_t context);
    void runIteration(uint32_t run, uint32_t& firstQuiet);
    void pause(std::chrono::milliseconds duration);
    const std::vector<std::string>& graphNames() const;

    // session_memory.cpp
    void poolBuffers();
    void allocateTensors();
    void allocateTensors(Context& context);
    void releaseTensors();
    void detachAndAttach();
    void detachAndAttach(Context& context);
    void takeMemoryMap();

    const ExtensionLibrary& m_library;
    const Backend& m_backend;
    const SimulatedMemory* const m_memory;
    const std::string m_config;
    const DocumentFacts m_facts;
    const RunPlan m_plan;
    RunReport& m_report;
    Steps m_steps;
    ExtensionLibrary::Object m_object;
    void* m_device = nullptr;
    std::vector<Context> m_contexts;
    std::vector<Graph> m_graphs;
};

}  // namespace runhost
