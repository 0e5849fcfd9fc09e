#include "buffers/external_buffer_manager.h"

#include "buffers/memory_region.h"
#include "platform/logger.h"

namespace zant::kor {

bool ExternalBufferManager::initialize(const void* backendFunctions) {
    if (backendFunctions == nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::initialize: zantInterface is nullptr");
        return false;
    }
    m_backendFunctions = backendFunctions;
    return m_library.open(DarlinkLibrary::defaultPath(),
                          {"ExternalBufferManager::initialize: unable to load libdarlink. dlerror(): %s",
                           "ExternalBufferManager::initialize: unable to resolve darmem symbols. dlerror(): %s"});
}

bool ExternalBufferManager::allocate(uint64_t sizeBytes) {
    if (sizeBytes == 0) {
        ZANT_LOG_ERROR("ExternalBufferManager::allocate: sizeBytes is 0");
        return false;
    }
    if (m_buffer != nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::allocate: already allocated");
        return false;
    }
    if (!m_library.isOpen()) {
        ZANT_LOG_ERROR("ExternalBufferManager::allocate: darmem not initialized");
        return false;
    }
    const auto shownSize = static_cast<size_t>(sizeBytes);
    void* block = m_library.alloc(sizeBytes);
    if (block == nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::allocate: darmem_alloc(%zu) failed", shownSize);
        return false;
    }
    m_fd = m_library.toFd(block);
    if (m_fd == -1) {
        ZANT_LOG_ERROR("ExternalBufferManager::allocate: darmem_to_fd failed for %p", block);
        m_library.free(block);
        return false;
    }
    m_buffer = block;
    m_size = sizeBytes;
    ZANT_LOG_DEBUG("ExternalBufferManager::allocate: %zu bytes at %p fd=%d (darmem)", shownSize, block, m_fd);
    return true;
}

bool ExternalBufferManager::registerWithContext(void* context, uint32_t bufferType) {
    if (m_buffer == nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: buffer not allocated");
        return false;
    }
    if (m_backendFunctions == nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: not initialized");
        return false;
    }
    const ZantMemoryRegisterFn memoryRegister = memoryRegisterOf(m_backendFunctions);
    if (memoryRegister == nullptr) {
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: memRegister is nullptr");
        return false;
    }
    if (m_contextHandles.contains(context)) {
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: context already registered");
        return false;
    }
    if (bufferType < ZANT_SHARED_BUFFER_WEIGHTS || bufferType > ZANT_SHARED_BUFFER_SPAD_BACKUP) {
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: unsupported bufferType %d",
                       static_cast<int>(bufferType));
        return false;
    }
    // The size lies in the region alone; the shape says one element.
    constexpr uint32_t ONE = 1;
    const SharedBufferInfo region{bufferType, 0, m_size, m_fd, 0, 0};
    // The entry first: a handle that could not be kept would be lost.
    const auto entry = m_contextHandles.try_emplace(context).first;
    const uint64_t status =
        registerRegion(memoryRegister, context, {1, &ONE, ZANT_DATA_TYPE_BYTE}, region, entry->second);
    if (status != 0) {
        m_contextHandles.erase(entry);
        ZANT_LOG_ERROR("ExternalBufferManager::registerWithContext: memRegister failed, err=%d",
                       static_cast<int>(status));
        return false;
    }
    ZANT_LOG_DEBUG("ExternalBufferManager::registerWithContext: ctx=%p handle=%p", context, entry->second);
    return true;
}

void ExternalBufferManager::free() {
    if (m_buffer == nullptr) return;
    m_library.free(m_buffer);
    m_fd = -1;
    m_buffer = nullptr;
    m_size = 0;
    ZANT_LOG_DEBUG("ExternalBufferManager::free: buffer freed");
}

}  // namespace zant::kor
