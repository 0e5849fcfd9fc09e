#include "machine/backend.h"

#include "machine/ledgers.h"

namespace runhost {

namespace {

uint64_t standIn(void** handle) {
    static char place;
    *handle = &place;
    return 0;
}

}  // namespace

Backend::Backend(const std::string& path) : m_module(path) {
    m_module.resolve(m_createDevice, "ZantSim_createDevice");
    m_module.resolve(m_freeDevice, "ZantSim_freeDevice");
    m_module.resolve(m_createContext, "ZantSim_createContext");
    m_module.resolve(m_createContextFromBinary, "ZantSim_createContextFromBinary");
    m_module.resolve(m_createContextsFromBinaryList, "ZantSim_createContextsFromBinaryList");
    m_module.resolve(m_freeContext, "ZantSim_freeContext");
    m_module.resolve(m_createGraph, "ZantSim_createGraph");
    m_module.resolve(m_retrieveGraph, "ZantSim_retrieveGraph");
    m_module.resolve(m_finalizeGraph, "ZantSim_finalizeGraph");
    m_module.resolve(m_executeGraph, "ZantSim_executeGraph");
    m_module.resolve(m_failNthCall, "ZantSim_failNthCall");
    m_module.resolve(m_setLatency, "ZantSim_setLatency");
    m_module.resolve(m_voteCount, "ZantSim_voteCount");
    m_module.resolve(m_vote, "ZantSim_vote");
    m_module.resolve(m_elapsedNs, "ZantSim_elapsedNs");
    m_module.resolve(m_threadNumber, "ZantSim_threadNumber");
    m_module.resolve(m_threadName, "ZantSim_threadName");
}

const void* Backend::functions() const {
    ZantInterfaceGetProviders getProviders = nullptr;
    m_module.resolve(getProviders, "ZantInterface_getProviders");
    const ZantProviderRecord** providers = nullptr;
    uint32_t count = 0;
    if (getProviders != nullptr) getProviders(&providers, &count);
    for (uint32_t i = 0; providers != nullptr && i < count; ++i) {
        if (providers[i]->backendId == ZANT_BACKEND_ID_KOR) return providers[i]->functions40;
    }
    return nullptr;
}

uint64_t Backend::createDevice(ZantConfigWrapper** configs, uint32_t count, void** device) const {
    return m_createDevice ? m_createDevice(configs, count, device) : standIn(device);
}

uint64_t Backend::freeDevice(void* device) const {
    return m_freeDevice ? m_freeDevice(device) : 0;
}

uint64_t Backend::createContext(void* device, ZantConfigWrapper** configs, uint32_t count, void** context) const {
    return m_createContext ? m_createContext(device, configs, count, context) : standIn(context);
}

uint64_t Backend::createContextFromBinary(void* device, ZantConfigWrapper** configs, uint32_t count,
                                          void** context) const {
    return m_createContextFromBinary ? m_createContextFromBinary(device, configs, count, context) : standIn(context);
}

uint64_t Backend::createContextsFromBinaryList(void* device, std::vector<ZantSimContextRequest>& requests,
                                               ZantConfigWrapper** common, uint32_t commonCount) const {
    if (m_createContextsFromBinaryList) {
        const auto count = static_cast<uint32_t>(requests.size());
        return m_createContextsFromBinaryList(device, requests.data(), count, common, commonCount);
    }
    for (ZantSimContextRequest& request : requests) standIn(&request.context);
    return 0;
}

uint64_t Backend::freeContext(void* context) const {
    return m_freeContext ? m_freeContext(context) : 0;
}

uint64_t Backend::createGraph(void* context, const std::string& name, ZantConfigWrapper** configs, void** graph) const {
    return m_createGraph ? m_createGraph(context, name.c_str(), configs, graph) : standIn(graph);
}

uint64_t Backend::retrieveGraph(void* context, const std::string& name, void** graph) const {
    return m_retrieveGraph ? m_retrieveGraph(context, name.c_str(), graph) : standIn(graph);
}

uint64_t Backend::finalizeGraph(void* graph) const {
    return m_finalizeGraph ? m_finalizeGraph(graph) : 0;
}

uint64_t Backend::executeGraph(void* graph, ZantConfigWrapper** configs, uint32_t count) const {
    return m_executeGraph ? m_executeGraph(graph, configs, count) : 0;
}

void Backend::failNthCall(const std::string& operation, uint32_t n) const {
    constexpr uint64_t status = 1;
    if (m_failNthCall) m_failNthCall(operation.c_str(), n, status);
}

void Backend::setLatency(const std::string& operation, uint32_t microseconds) const {
    if (m_setLatency) m_setLatency(operation.c_str(), microseconds);
}

size_t Backend::voteCount() const {
    return m_voteCount && m_vote ? m_voteCount() : 0;
}

ZantSimVote Backend::vote(size_t index) const {
    ZantSimVote vote{};
    if (m_vote) m_vote(index, &vote);
    return vote;
}

uint64_t Backend::elapsedNs() const {
    return m_elapsedNs ? m_elapsedNs() : 0;
}

std::string Backend::threadName() const {
    char name[ZANT_SIM_THREAD_NAME] = "";
    if (m_threadName) m_threadName(name);
    return name;
}

uint32_t Backend::threadNumber() const {
    return m_threadNumber ? m_threadNumber() : 0;
}

std::vector<std::string> Backend::ledger() const {
    return ledgerOf(m_module);
}

}  // namespace runhost
