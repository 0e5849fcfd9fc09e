// The host's allocator of shared memory: one block and one descriptor for a whole list of tensors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "buffers/darlink_library.h"
#include "platform/mutex.h"
#include "zelmar_kor/backend_extensions.h"
#include "zelmar_kor/memory_records.h"

namespace zant::kor {

// Tensors of one allocate call lie back to back in one block, in the order of the array, and each is registered with
// the context as a region of it. The block goes when the last of them is released. Tensors are known by address.
//
// allocate and release must not overlap; getBuffer may run beside them. What is still allocated when the object ends
// stays: the host releases its tensors first.
class MultiTensorSharedBuffer : public tools::iotensor::IBufferAlloc {
public:
    uint32_t initialize(void* context, const void* backendFunctions) override;
    void* getBuffer(void* tensor) override;
    // After a failure the tensors before the failing one remain registered and can be released one by one.
    uint32_t allocate(void* tensors, uint32_t count) override;
    uint32_t release(void* tensor) override;

private:
    struct Place {
        void* address;  // where the tensor's data begins
        void* block;
    };
    using Places = std::unordered_map<const void*, Place>;

    struct Block {
        void* address;
        uint64_t size;
        int fileDescriptor;
    };

    // What an allocation needs besides the block. Made beforehand, so that nothing fails for want of memory while
    // tensors are registered.
    struct Layout {
        std::vector<uint64_t> sizes;
        uint64_t total = 0;
        Places places;
        std::unordered_map<void*, size_t> blockTensors;
    };

    uint32_t allocateTensors(ZantTensor* tensors, uint32_t count);
    static bool measure(const ZantTensor* tensors, uint32_t count, Layout& layout);
    void prepare(ZantTensor* tensors, uint32_t count, Layout& layout) EXCLUDES(m_tensorAddressesMutex);
    bool makeBlock(uint64_t size, Block& block) const;
    bool placeTensors(ZantTensor* tensors, const Block& block, Layout& layout) EXCLUDES(m_tensorAddressesMutex);
    bool registerTensor(ZantTensor& tensor, const Block& block, uint64_t offset) const;
    uint32_t releaseTensor(ZantTensor& tensor) EXCLUDES(m_tensorAddressesMutex);

    DarlinkLibrary m_library;
    const void* m_backendFunctions = nullptr;  // byte 40 of a provider record
    void* m_context = nullptr;
    std::unordered_map<void*, size_t> m_blockTensors;  // how many tensors live in each block
    Mutex m_tensorAddressesMutex;
    Places m_tensorAddresses GUARDED_BY(m_tensorAddressesMutex);
};

}  // namespace zant::kor
