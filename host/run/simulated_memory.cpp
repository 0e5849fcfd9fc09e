#include "run/simulated_memory.h"

#include <fmt/format.h>

#include <stdexcept>

#include "machine/ledgers.h"

namespace runhost {

namespace {

std::string useName(uint32_t bufferType) {
    switch (bufferType) {
        case ZANT_SHARED_BUFFER_TENSOR:
            return "tensor";
        case ZANT_SHARED_BUFFER_WEIGHTS:
            return "weights";
        case ZANT_SHARED_BUFFER_SPILL_FILL:
            return "spill-fill";
        case ZANT_SHARED_BUFFER_SPAD_BACKUP:
            return "scratch backup";
        default:
            return fmt::format("buffer type {}", bufferType);
    }
}

template <typename Function>
void find(Function& function, void* symbol, const char* name) {
    function = reinterpret_cast<Function>(symbol);
    if (function == nullptr) throw std::runtime_error(fmt::format("{} is not in the simulated machine", name));
}

}  // namespace

SimulatedMemory::SimulatedMemory(const Backend& backend, const std::string& rpcLibrary) : m_library(rpcLibrary) {
    const auto inLibrary = [&](auto& function, const char* name) { find(function, m_library.symbol(name), name); };
    const auto inBackend = [&](auto& function, const char* name) { find(function, backend.symbol(name), name); };
    inLibrary(m_failNthCall, "ZantSim_failNthCall");
    inLibrary(m_blockCount, "ZantSim_blockCount");
    inLibrary(m_block, "ZantSim_block");
    inBackend(m_regionCount, "ZantSim_regionCount");
    inBackend(m_region, "ZantSim_region");
    inBackend(m_readRegion, "ZantSim_readRegion");
    inBackend(m_writeRegion, "ZantSim_writeRegion");
    inBackend(m_detachedBuffers, "ZantSim_detachedBuffers");
}

std::vector<MemoryBlock> SimulatedMemory::blocks(const std::function<std::string(const void*)>& nameOf) const {
    std::vector<MemoryBlock> list;
    for (size_t i = 0; i < m_blockCount(); ++i) {
        ZantSimBlock block{};
        m_block(i, &block);
        list.push_back({fmt::format("block {}", block.number), block.size, block.fileDescriptor, {}});
    }
    for (size_t i = 0; i < m_regionCount(); ++i) {
        ZantSimRegion region{};
        m_region(i, &region);
        for (MemoryBlock& block : list) {
            if (block.descriptor != region.fileDescriptor) continue;
            block.regions.push_back({nameOf(region.context), useName(region.bufferType), region.offset, region.size});
        }
    }
    return list;
}

bool SimulatedMemory::deviceReads(const void* handle, std::vector<char>& bytes) const {
    return m_readRegion(handle, bytes.data(), bytes.size()) == 0;
}

bool SimulatedMemory::deviceWrites(const void* handle, const std::vector<char>& bytes) const {
    return m_writeRegion(handle, bytes.data(), bytes.size()) == 0;
}

void SimulatedMemory::failNthCall(const std::string& operation, uint32_t n) const {
    constexpr uint64_t status = 1;
    m_failNthCall(operation.c_str(), n, status);
}

std::vector<std::string> SimulatedMemory::ledger() const {
    return ledgerOf(m_library);
}

}  // namespace runhost
