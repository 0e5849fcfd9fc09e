// The memory of the simulated machine, as its backend and its RPC client library tell of it.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "machine/backend.h"
#include "records/memory_map.h"
#include "zant_sim/sim_darlink.h"

namespace runhost {

class SimulatedMemory {
public:
    // Loads the RPC client library for as long as it lives; where no service leads to it, its bare name does then.
    // backend: a simulated one, which has to outlive it. Throws std::runtime_error when the library can't be loaded.
    SimulatedMemory(const Backend& backend, const std::string& rpcLibrary);

    // The living blocks with their regions. nameOf: a context's name by its handle.
    std::vector<MemoryBlock> blocks(const std::function<std::string(const void*)>& nameOf) const;
    size_t blockCount() const { return m_blockCount(); }
    // How many of a context's own buffers are detached just now.
    uint32_t detachedBuffers(const void* context) const { return m_detachedBuffers(context); }

    // The first bytes of a registered region as the device reads and writes them; whether it could.
    bool deviceReads(const void* handle, std::vector<char>& bytes) const;
    bool deviceWrites(const void* handle, const std::vector<char>& bytes) const;

    // Of the RPC client library, by the names of its operations.
    void failNthCall(const std::string& operation, uint32_t n) const;
    std::vector<std::string> ledger() const;

private:
    const Module m_library;
    ZantSimFailNthCallFn m_failNthCall;
    ZantSimBlockCountFn m_blockCount;
    ZantSimBlockFn m_block;
    ZantSimRegionCountFn m_regionCount;
    ZantSimRegionFn m_region;
    ZantSimReadRegionFn m_readRegion;
    ZantSimWriteRegionFn m_writeRegion;
    ZantSimDetachedBuffersFn m_detachedBuffers;
};

}  // namespace runhost
