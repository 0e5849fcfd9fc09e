// The two libraries that the host loads: the extensions, and the backend that they extend.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zant_sim/sim_backend.h"
#include "zelmar_kor/backend_extensions.h"

namespace runhost {

// Loaded for as long as it lives.
class Module {
public:
    // Throws std::runtime_error with the loader's reason.
    explicit Module(const std::string& path);

    void* handle() const { return m_handle.get(); }
    // Null when the module has no such symbol.
    void* symbol(const char* name) const;

private:
    struct Close {
        void operator()(void* handle) const;
    };
    std::unique_ptr<void, Close> m_handle;
};

// The extension library and the objects that it makes.
class ExtensionLibrary {
public:
    using Backend = zant::tools::runhost::IBackend;
    struct Destroy {
        decltype(&destroyBackendInterface) destroy;
        void operator()(Backend* backend) const { destroy(backend); }
    };
    using Object = std::unique_ptr<Backend, Destroy>;

    // Throws std::runtime_error when the library can't be loaded or lacks one of the two functions.
    explicit ExtensionLibrary(const std::string& path);

    // Null when the library could not make one. The library outlives it.
    Object create() const { return Object(m_create(), Destroy{m_destroy}); }

private:
    Module m_module;
    decltype(&createBackendInterface) m_create;
    decltype(&destroyBackendInterface) m_destroy;
};

// The backend, with what the simulated one offers besides the contract. A backend without those functions is served
// with stand-in handles, and its ledger is empty.
class Backend {
public:
    explicit Backend(const std::string& path);

    void* handle() const { return m_module.handle(); }
    bool isSimulated() const { return m_createDevice != nullptr; }

    // Each returns the backend's status, 0 for success.
    uint64_t createDevice(ZantConfigWrapper** configs, uint32_t count, void** device) const;
    uint64_t freeDevice(void* device) const;
    uint64_t createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) const;
    uint64_t freeContext(void* context) const;
    uint64_t createGraph(void* context, const std::string& name, ZantConfigWrapper** configs, void** graph) const;
    uint64_t finalizeGraph(void* graph) const;
    uint64_t executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count) const;

    // Operations have their names in the ledger.
    void failNthCall(const std::string& operation, uint32_t n) const;
    void setLatency(const std::string& operation, uint32_t microseconds) const;

    std::vector<std::string> ledger() const;
    // The lines of a ledger that tell of wrong use.
    static std::vector<std::string> misuseIn(const std::vector<std::string>& ledger);
    // The time line of votes and its clock; no votes and 0 from a backend that keeps none.
    size_t voteCount() const;
    ZantSimVote vote(size_t index) const;
    uint64_t elapsedNs() const;
    // The calling thread's number in the time line.
    uint32_t threadNumber() const;

private:
    template <typename Function>
    void resolve(Function& function, const char* name);

    Module m_module;
    ZantSimCreateDeviceFn m_createDevice;
    ZantSimFreeDeviceFn m_freeDevice;
    ZantSimCreateContextFn m_createContext;
    ZantSimFreeContextFn m_freeContext;
    ZantSimCreateGraphFn m_createGraph;
    ZantSimFinalizeGraphFn m_finalizeGraph;
    ZantSimExecuteGraphFn m_executeGraph;
    ZantSimLedgerSizeFn m_ledgerSize;
    ZantSimLedgerEntryFn m_ledgerEntry;
    ZantSimFailNthCallFn m_failNthCall;
    ZantSimSetLatencyFn m_setLatency;
    ZantSimVoteCountFn m_voteCount;
    ZantSimVoteFn m_vote;
    ZantSimElapsedNsFn m_elapsedNs;
    ZantSimThreadNumberFn m_threadNumber;
};

}  // namespace runhost
