// Memory for tensors, pools of external buffers, and buffers that a context gives up and takes back.
#include <new>

#include "buffers/multi_tensor_shared_buffer.h"
#include "extension/context_properties.h"
#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

using tools::iotensor::IBufferAlloc;

// What a change to a state says.
struct StateWords {
    const char* state;
    const char* doing;
    const char* done;
};

constexpr StateWords STATE_WORDS[] = {
    {"attached.", "Attaching", "Attach complete for %zu buffer(s)"},
    {"detached.", "Detaching", "Detach complete for %zu buffer(s)"},
};

// The records that tell the backend what becomes of each buffer; valid as long as the object.
class BufferStateConfig {
public:
    BufferStateConfig(const std::vector<int32_t>& fds, KORBufferState wanted)
        : m_records(fds.size()), m_wrappers(fds.size()) {
        m_list.reserve(fds.size() + 1);
        for (size_t i = 0; i < fds.size(); ++i) {
            m_records[i] = {KOR_CONTEXT_OPTION_BUFFER_STATE, fds[i], wanted};
            m_wrappers[i] = {ZANT_CONFIG_OPTION_CUSTOM, 0, &m_records[i]};
            m_list.push_back(&m_wrappers[i]);
        }
        m_list.push_back(nullptr);
    }
    const ZantConfigWrapper** list() noexcept { return m_list.data(); }

private:
    std::vector<ContextBufferStateRecord> m_records;
    std::vector<ZantConfigWrapper> m_wrappers;
    std::vector<const ZantConfigWrapper*> m_list;
};

// What the context needs of one kind, told at level 3; 0 for a kind that it has no pool for.
uint64_t sizeNeeded(const ZantProviderRecord& backend, void* context, const std::string& poolId, uint32_t property,
                    const char* line) {
    if (poolId.empty()) return 0;
    const uint64_t size = queryBufferSize(backend, context, property);
    ZANT_LOG_INFO(line, context, static_cast<unsigned long>(size));
    return size;
}

}  // namespace

std::unique_ptr<IBufferAlloc>& KORBackend::getBufferAllocator(std::unique_ptr<IBufferAlloc>& holder) {
    holder = nullptr;
    if (m_memoryConfig.memType == ZANT_KOR_MEM_SHARED_BUFFER) {
        holder.reset(new (std::nothrow) MultiTensorSharedBuffer);
        if (holder == nullptr) ZANT_LOG_ERROR("getBufferAllocator: no memory for an allocator");
    }
    return holder;
}

bool KORBackend::allocateExternalBuffers(void* context, std::string spillFillPoolId, std::string spadBackupPoolId,
                                         std::string weightsPoolId) {
    return guarded("allocateExternalBuffers", false, [&] {
        if (spillFillPoolId.empty() && spadBackupPoolId.empty() && weightsPoolId.empty()) return false;
        m_contextEntries.ensure(context);
        const SharedBufferPool::Sizes sizes{
            sizeNeeded(m_interface, context, spillFillPoolId, ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE,
                       "allocateExternalBuffers: spillFill size for ctx=%p is %lu"),
            sizeNeeded(m_interface, context, spadBackupPoolId, ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE,
                       "allocateExternalBuffers: spadBackup size for ctx=%p is %lu"),
            sizeNeeded(m_interface, context, weightsPoolId, ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE,
                       "allocateExternalBuffers: weights size for ctx=%p is %lu")};
        return m_bufferPools.registerContext({spillFillPoolId, spadBackupPoolId, weightsPoolId}, context, sizes,
                                             &m_interface.functions40);
    });
}

bool KORBackend::finalizeExternalBufferPools() {
    return guarded("finalizeExternalBufferPools", false, [&] {
        if (!m_bufferPools.finalizeAllPools()) {
            ZANT_LOG_ERROR("finalizeExternalBufferPools: finalizeAllPools failed");
            return false;
        }
        for (const ExternalBuffers& buffers : m_bufferPools.buffersOfContexts()) m_contextEntries.hold(buffers);
        return true;
    });
}

bool KORBackend::detachBuffers(void* context) {
    return guarded("detachBuffers", false, [&] { return setBuffersDetached(context, KOR_BUFFER_DETACHED); });
}

bool KORBackend::attachBuffers(void* context) {
    return guarded("attachBuffers", false, [&] { return setBuffersDetached(context, KOR_BUFFER_ATTACHED); });
}

// The state changes only after the backend has taken both calls: a later call repeats them.
bool KORBackend::setBuffersDetached(void* context, KORBufferState wanted) {
    const StateWords& words = STATE_WORDS[wanted];
    if (m_contextEntries.ensure(context) == wanted) {
        ZANT_LOG_WARN("Buffers already in the desired state %s", words.state);
        return true;
    }
    ZANT_LOG_DEBUG("%s buffers in KOR Backend", words.doing);
    std::vector<int32_t> fds;
    if (!getDetachableBufferFds(m_interface, context, fds)) return false;
    if (fds.empty()) return true;
    BufferStateConfig config(fds, wanted);
    if (m_interface.contextSetConfig == nullptr || m_interface.contextSetConfig(context, config.list()) != 0) {
        ZANT_LOG_ERROR("Unable to set context config to detach the buffers");
        return false;
    }
    if (m_interface.contextFinalize == nullptr || m_interface.contextFinalize(context, nullptr) != 0) {
        ZANT_LOG_ERROR(
            "Error in Finalizing the KOR backend context after modifying the detaching/attaching the buffers");
        return false;
    }
    ZANT_LOG_DEBUG(words.done, fds.size());
    m_contextEntries.setState(context, wanted);
    return true;
}

}  // namespace zant::kor
