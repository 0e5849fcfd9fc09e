// Memory that is registered with contexts: regions of blocks that descriptors name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "zant_sim/sim_backend.h"

namespace zant::sim {

// "tensor", "weights", "spill-fill", "scratch backup" or the number.
std::string bufferTypeName(uint32_t bufferType);

// All operations may be called from any thread. Those that return a text return what was wrong with the call, and then
// have done nothing; an empty text is success.
class Regions {
public:
    // The context is a living one.
    std::string add(void* context, const MemRegisterDescriptor& descriptor, void*& handle);
    std::string remove(const void* handle);
    // All regions of the context go; returns how many of them were tensors.
    size_t removeAll(const void* context);
    // Whether the memory of each region of the context is still there.
    std::string checkMemory(const void* context) const;

    size_t count() const;
    bool entry(size_t index, ZantSimRegion& region) const;
    bool find(const void* handle, ZantSimRegion& region) const;

private:
    struct Region {
        ZantSimRegion facts;
        uint64_t identity;  // of the memory behind the descriptor
    };

    mutable std::mutex m_mutex;
    std::vector<Region> m_regions;
};

// The regions of this library.
Regions& regions();

}  // namespace zant::sim
