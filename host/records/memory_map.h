// What a run had in shared memory, as facts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace runhost {

// A part of a block that the backend knows.
struct MemoryRegion {
    std::string context;
    std::string use;  // "tensor", "weights", "spill-fill", "scratch backup"
    uint64_t offset;
    uint64_t size;
};

struct MemoryBlock {
    std::string label;  // as in the ledger of the RPC client library: "block 1"
    uint64_t size;
    int32_t descriptor;
    std::vector<MemoryRegion> regions;
};

// A context's own buffers while they were detached; times as in the votes.
struct DetachedTime {
    std::string context;
    uint32_t buffers;
    uint64_t fromNs;
    uint64_t toNs;
    std::string when;  // in words
};

struct MemoryMap {
    std::vector<MemoryBlock> blocks;  // those that live when the first run starts
    std::vector<DetachedTime> detached;
};

}  // namespace runhost
