#include "modules.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>

#include "platform.h"

namespace runhost {

namespace {

void* load(const std::string& path) {
    std::string error;
    void* library = platform::loadLibrary(path, error);
    if (library == nullptr) throw std::runtime_error(error);
    return library;
}

uint64_t standIn(void** handle) {
    static char place;
    *handle = &place;
    return 0;
}

}  // namespace

void Module::Close::operator()(void* handle) const {
    platform::unloadLibrary(handle);
}

Module::Module(const std::string& path) : m_handle(load(path)) {}

void* Module::symbol(const char* name) const {
    return platform::findSymbol(m_handle.get(), name);
}

ExtensionLibrary::ExtensionLibrary(const std::string& path) : m_module(path) {
    m_create = reinterpret_cast<decltype(m_create)>(m_module.symbol("createBackendInterface"));
    m_destroy = reinterpret_cast<decltype(m_destroy)>(m_module.symbol("destroyBackendInterface"));
    if (m_create == nullptr || m_destroy == nullptr) {
        throw std::runtime_error(path + " lacks createBackendInterface or destroyBackendInterface");
    }
}

template <typename Function>
void Backend::resolve(Function& function, const char* name) {
    function = reinterpret_cast<Function>(m_module.symbol(name));
}

Backend::Backend(const std::string& path) : m_module(path) {
    resolve(m_createDevice, "ZantSim_createDevice");
    resolve(m_freeDevice, "ZantSim_freeDevice");
    resolve(m_createContext, "ZantSim_createContext");
    resolve(m_freeContext, "ZantSim_freeContext");
    resolve(m_createGraph, "ZantSim_createGraph");
    resolve(m_finalizeGraph, "ZantSim_finalizeGraph");
    resolve(m_executeGraph, "ZantSim_executeGraph");
    resolve(m_ledgerSize, "ZantSim_ledgerSize");
    resolve(m_ledgerEntry, "ZantSim_ledgerEntry");
    resolve(m_failNthCall, "ZantSim_failNthCall");
    resolve(m_setLatency, "ZantSim_setLatency");
    resolve(m_voteCount, "ZantSim_voteCount");
    resolve(m_vote, "ZantSim_vote");
    resolve(m_elapsedNs, "ZantSim_elapsedNs");
    resolve(m_threadNumber, "ZantSim_threadNumber");
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

uint64_t Backend::freeContext(void* context) const {
    return m_freeContext ? m_freeContext(context) : 0;
}

uint64_t Backend::createGraph(void* context, const std::string& name, ZantConfigWrapper** configs, void** graph) const {
    return m_createGraph ? m_createGraph(context, name.c_str(), configs, graph) : standIn(graph);
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

uint32_t Backend::threadNumber() const {
    return m_threadNumber ? m_threadNumber() : 0;
}

std::vector<std::string> Backend::ledger() const {
    std::vector<std::string> entries;
    if (m_ledgerSize == nullptr || m_ledgerEntry == nullptr) return entries;
    for (size_t i = 0; i < m_ledgerSize(); ++i) {
        std::string entry(m_ledgerEntry(i, nullptr, 0) + 1, '\0');
        m_ledgerEntry(i, entry.data(), entry.size());
        entry.pop_back();
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<std::string> Backend::misuseIn(const std::vector<std::string>& ledger) {
    std::vector<std::string> lines;
    std::copy_if(ledger.begin(), ledger.end(), std::back_inserter(lines),
                 [](const std::string& line) { return line.starts_with("misuse: "); });
    return lines;
}

}  // namespace runhost
