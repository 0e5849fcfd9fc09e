#include "buffers/multi_tensor_shared_buffer.h"

#include <algorithm>
#include <limits>
#include <optional>

#include "buffers/memory_region.h"
#include "buffers/tensor_size.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t SUCCESS = 0;
constexpr uint32_t FAILURE = 1;

// As the log shows it, in 32 bits.
unsigned shown(uint64_t size) {
    return static_cast<unsigned>(std::min<uint64_t>(size, std::numeric_limits<uint32_t>::max()));
}

// So that as many insertions of nodes do not allocate. A table grown by just what each call needs would be made anew
// by each call.
template <class Map>
void makeRoom(Map& map, size_t more) {
    const size_t wanted = map.size() + more;
    // A map that was never filled has a bucket that holds nothing.
    if (wanted >= map.bucket_count()) map.reserve(2 * wanted);
}

}  // namespace

uint32_t MultiTensorSharedBuffer::initialize(void* context, const void* backendFunctions) {
    return guarded("MultiTensorSharedBuffer::initialize", FAILURE, [&] {
        m_context = context;
        m_backendFunctions = backendFunctions;
        const bool isOpen = m_library.open(
            DarlinkLibrary::defaultPath(),
            {"Unable to load backend. dlerror(): %s", "Unable to access symbols in libdarlink. dlerror(): %s"});
        return isOpen ? SUCCESS : FAILURE;
    });
}

uint32_t MultiTensorSharedBuffer::allocate(void* tensors, uint32_t count) {
    return guarded("MultiTensorSharedBuffer::allocate", FAILURE, [&] {
        if (tensors == nullptr && count != 0) {
            ZANT_LOG_ERROR("allocate: an array of %u tensors is needed, got nullptr", count);
            return FAILURE;
        }
        return allocateTensors(static_cast<ZantTensor*>(tensors), count);
    });
}

uint32_t MultiTensorSharedBuffer::allocateTensors(ZantTensor* tensors, uint32_t count) {
    Layout layout;
    if (!measure(tensors, count, layout)) return FAILURE;
    if (!m_library.isOpen()) {
        ZANT_LOG_ERROR("MultiTensorSharedBuffer object is not initialized");
        return FAILURE;
    }
    if (count == 0) return SUCCESS;  // a block without tensors could never be released
    prepare(tensors, count, layout);
    Block block{};
    if (!makeBlock(layout.total, block)) return FAILURE;
    return placeTensors(tensors, block, layout) ? SUCCESS : FAILURE;
}

bool MultiTensorSharedBuffer::measure(const ZantTensor* tensors, uint32_t count, Layout& layout) {
    for (uint32_t i = 0; i < count; ++i) {
        const std::optional<uint64_t> size = tensorSize(tensors[i]);
        if (!size) {
            ZANT_LOG_ERROR("Error in getting the data size for tensor with index = %d", static_cast<int>(i));
            return false;
        }
        layout.sizes.push_back(*size);
        layout.total = addSaturated(layout.total, *size);
        ZANT_LOG_DEBUG("Tensor data size for tensor %u is %u", i, shown(*size));
    }
    ZANT_LOG_DEBUG("Total size of the shared buffer required: %u bytes", shown(layout.total));
    return true;
}

// Nodes for every entry, and room for them in the maps that they go to.
void MultiTensorSharedBuffer::prepare(ZantTensor* tensors, uint32_t count, Layout& layout) {
    layout.places.reserve(count);
    for (uint32_t i = 0; i < count; ++i) layout.places.try_emplace(&tensors[i]);
    layout.blockTensors.try_emplace(nullptr, 0);
    makeRoom(m_blockTensors, 1);
    MutexLock lock(m_tensorAddressesMutex);
    makeRoom(m_tensorAddresses, count);
}

bool MultiTensorSharedBuffer::makeBlock(uint64_t size, Block& block) const {
    block.size = size;
    block.address = m_library.alloc(size);
    if (block.address == nullptr) {
        ZANT_LOG_ERROR("darmem_alloc failure for size: %u bytes", shown(size));
        return false;
    }
    block.fileDescriptor = m_library.toFd(block.address);
    if (block.fileDescriptor == -1) {
        ZANT_LOG_ERROR("darmem_to_fd failure for size: %u bytes and for rpc mem pointer %p", shown(size),
                       block.address);
        m_library.free(block.address);
        return false;
    }
    ZANT_LOG_DEBUG("Successfully allocated shared buffer of size: %u with fd %d", shown(size), block.fileDescriptor);
    return true;
}

bool MultiTensorSharedBuffer::placeTensors(ZantTensor* tensors, const Block& block, Layout& layout) {
    uint64_t offset = 0;
    for (size_t i = 0; i < layout.sizes.size(); ++i) {
        if (!registerTensor(tensors[i], block, offset)) return false;
        if (i == 0) {
            auto node = layout.blockTensors.extract(layout.blockTensors.begin());
            node.key() = block.address;
            m_blockTensors.insert(std::move(node));
        }
        ++m_blockTensors[block.address];
        auto node = layout.places.extract(&tensors[i]);
        node.mapped() = {static_cast<char*>(block.address) + offset, block.address};
        {
            MutexLock lock(m_tensorAddressesMutex);
            const auto inserted = m_tensorAddresses.insert(std::move(node));
            // A tensor that was never released is known by its newest place.
            if (!inserted.inserted) inserted.position->second = inserted.node.mapped();
        }
        offset += layout.sizes[i];
    }
    return true;
}

bool MultiTensorSharedBuffer::registerTensor(ZantTensor& tensor, const Block& block, uint64_t offset) const {
    const SharedBufferInfo region{ZANT_SHARED_BUFFER_TENSOR, 0, block.size, block.fileDescriptor, 0, offset};
    tensor.memoryType = ZANT_TENSOR_MEMORY_HANDLE;
    tensor.memoryHandle = nullptr;
    const ZantMemoryRegisterFn memoryRegister = memoryRegisterOf(m_backendFunctions);
    void* handle = nullptr;
    if (memoryRegister == nullptr ||
        registerRegion(memoryRegister, m_context, {tensor.rank, tensor.dimensions, tensor.dataType}, region, handle) !=
            0) {
        ZANT_LOG_ERROR("Failure to register ion memory with the backend");
        return false;
    }
    tensor.memoryHandle = handle;
    return true;
}

void* MultiTensorSharedBuffer::getBuffer(void* tensor) {
    if (tensor == nullptr) {
        ZANT_LOG_WARN("getBuffer: received a null pointer to a tensor");
        return nullptr;
    }
    {
        MutexLock lock(m_tensorAddressesMutex);
        const auto place = m_tensorAddresses.find(tensor);
        if (place != m_tensorAddresses.end()) return place->second.address;
    }
    ZANT_LOG_WARN("getBuffer: tensor not found");
    return nullptr;
}

uint32_t MultiTensorSharedBuffer::release(void* tensor) {
    return guarded("MultiTensorSharedBuffer::release", FAILURE, [&] {
        if (tensor == nullptr) {
            ZANT_LOG_ERROR("Received nullptr for tensor");
            return FAILURE;
        }
        return releaseTensor(*static_cast<ZantTensor*>(tensor));
    });
}

uint32_t MultiTensorSharedBuffer::releaseTensor(ZantTensor& tensor) {
    void* handle = tensor.memoryHandle;
    const ZantMemoryDeregisterFn memoryDeregister = memoryDeregisterOf(m_backendFunctions);
    if (memoryDeregister == nullptr || memoryDeregister(&handle, 1) != 0) {
        ZANT_LOG_ERROR("Failed to deregister ion memory with the backend");
        return FAILURE;
    }
    Places::node_type place;
    {
        MutexLock lock(m_tensorAddressesMutex);
        place = m_tensorAddresses.extract(&tensor);
    }
    if (place.empty()) {
        ZANT_LOG_ERROR("Tensor not found");
        return FAILURE;
    }
    const auto block = m_blockTensors.find(place.mapped().block);
    if (--block->second == 0) {
        m_library.free(block->first);
        m_blockTensors.erase(block);
    }
    return SUCCESS;
}

}  // namespace zant::kor
