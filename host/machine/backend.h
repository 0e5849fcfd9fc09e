// The backend that the host and the extensions share.
#pragma once

#include <string>
#include <vector>

#include "machine/modules.h"
#include "zant_sim/sim_backend.h"

namespace runhost {

// The backend, with what the simulated one offers besides the contract. A backend without those functions is served
// with stand-in handles, and its ledger is empty.
class Backend {
public:
    explicit Backend(const std::string& path);

    void* handle() const { return m_module.handle(); }
    // Null when the backend has no such symbol.
    void* symbol(const char* name) const { return m_module.symbol(name); }
    // Byte 40 of its provider record, as allocators take it; null when it has none for the extensions.
    const void* functions() const;
    bool isSimulated() const { return m_createDevice != nullptr; }

    // Each returns the backend's status, 0 for success.
    uint64_t createDevice(ZantConfigWrapper** configs, uint32_t count, void** device) const;
    uint64_t freeDevice(void* device) const;
    uint64_t createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) const;
    uint64_t createContextFromBinary(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) const;
    // All of the contexts, or none.
    uint64_t createContextsFromBinaryList(void* device, std::vector<ZantSimContextRequest>& requests,
                                          ZantConfigWrapper** common, uint32_t commonCount) const;
    uint64_t freeContext(void* context) const;
    uint64_t createGraph(void* context, const std::string& name, ZantConfigWrapper** configs, void** graph) const;
    // The graph of that name in a context that was made from a binary.
    uint64_t retrieveGraph(void* context, const std::string& name, void** graph) const;
    uint64_t finalizeGraph(void* graph) const;
    uint64_t executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count) const;

    // Operations have their names in the ledger.
    void failNthCall(const std::string& operation, uint32_t n) const;
    void setLatency(const std::string& operation, uint32_t microseconds) const;

    std::vector<std::string> ledger() const;
    // The time line of votes and its clock; no votes and 0 from a backend that keeps none.
    size_t voteCount() const;
    ZantSimVote vote(size_t index) const;
    uint64_t elapsedNs() const;
    // The calling thread's number in the time line.
    uint32_t threadNumber() const;
    // Its name as the time line's votes carry it; empty when it has none.
    std::string threadName() const;

private:
    Module m_module;
    ZantSimCreateDeviceFn m_createDevice;
    ZantSimFreeDeviceFn m_freeDevice;
    ZantSimCreateContextFn m_createContext;
    ZantSimCreateContextFromBinaryFn m_createContextFromBinary;
    ZantSimCreateContextsFromBinaryListFn m_createContextsFromBinaryList;
    ZantSimFreeContextFn m_freeContext;
    ZantSimCreateGraphFn m_createGraph;
    ZantSimRetrieveGraphFn m_retrieveGraph;
    ZantSimFinalizeGraphFn m_finalizeGraph;
    ZantSimExecuteGraphFn m_executeGraph;
    ZantSimFailNthCallFn m_failNthCall;
    ZantSimSetLatencyFn m_setLatency;
    ZantSimVoteCountFn m_voteCount;
    ZantSimVoteFn m_vote;
    ZantSimElapsedNsFn m_elapsedNs;
    ZantSimThreadNumberFn m_threadNumber;
    ZantSimThreadNameFn m_threadName;
};

}  // namespace runhost
