// One block of memory that the backend uses from outside: spill-fill, scratch backup or weights.
#pragma once

#include <cstdint>
#include <unordered_map>

#include "buffers/darlink_library.h"
#include "zelmar_kor/memory_records.h"

namespace zant::kor {

// Makes a block and registers it, as a single flat region, with one or more contexts. Order: initialize, allocate,
// registerWithContext for each. Failures are false after a level 1 line and leave the state as it was. One thread at a
// time; it ends wherever its last reference goes.
class ExternalBufferManager {
public:
    ExternalBufferManager() = default;
    ~ExternalBufferManager() { free(); }
    ExternalBufferManager(const ExternalBufferManager&) = delete;
    ExternalBufferManager& operator=(const ExternalBufferManager&) = delete;

    // backendFunctions: byte 40 of a provider record that outlives the object.
    bool initialize(const void* backendFunctions);
    // Once. A size of 4 GiB or more fails.
    bool allocate(uint64_t sizeBytes);
    // Once for each context. bufferType: weights, spill-fill or scratch backup of ZantSharedBufferType.
    bool registerWithContext(void* context, uint32_t bufferType);
    // Gives the block back. Memory handles stay with the backend: its contexts are gone or going by then.
    void free();

private:
    DarlinkLibrary m_library;  // outlives the block
    void* m_buffer = nullptr;
    uint64_t m_size = 0;
    int m_fd = -1;
    std::unordered_map<void*, void*> m_contextHandles;  // memory handle of each context
    const void* m_backendFunctions = nullptr;
};

}  // namespace zant::kor
