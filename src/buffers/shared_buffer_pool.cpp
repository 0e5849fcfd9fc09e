#include "buffers/shared_buffer_pool.h"

#include <algorithm>
#include <charconv>

#include "platform/logger.h"

namespace zant::kor {

struct SharedBufferPool::SharedKind {
    uint64_t Sizes::*size;
    std::shared_ptr<ExternalBufferManager> PoolEntry::*buffer;
    ZantSharedBufferType bufferType;
    const char* initializeFailed;  // takes the pool's name
    const char* allocateFailed;    // the size and the name
    const char* registerFailed;    // the name
    const char* done;              // the name, the size and the number of contexts
};

const SharedBufferPool::SharedKind SharedBufferPool::SHARED_KINDS[2] = {
    {&Sizes::spillFill, &PoolEntry::spillFillBuffer, ZANT_SHARED_BUFFER_SPILL_FILL,
     "SharedBufferPool::finalizePool: spillFill initialize failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: spillFill allocate(%lu) failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: spillFill registerWithContext failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: pool \"%s\" spillFill %lu bytes, %zu contexts"},
    {&Sizes::spadBackup, &PoolEntry::spadBackupBuffer, ZANT_SHARED_BUFFER_SPAD_BACKUP,
     "SharedBufferPool::finalizePool: spadBackup initialize failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: spadBackup allocate(%lu) failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: spadBackup registerWithContext failed for pool \"%s\"",
     "SharedBufferPool::finalizePool: pool \"%s\" spadBackup %lu bytes, %zu contexts"},
};

namespace {

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// As the messages print it.
unsigned long shown(uint64_t size) {
    return static_cast<unsigned long>(size);
}

}  // namespace

bool SharedBufferPool::parsePoolId(const std::string& id, std::string& name, uint32_t& count) {
    const size_t colon = id.rfind(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == id.size()) {
        ZANT_LOG_ERROR("SharedBufferPool::parsePoolId: invalid format \"%s\", expected \"name:N\"", id.c_str());
        return false;
    }
    const char* digits = id.data() + colon + 1;
    const char* end = id.data() + id.size();
    if (!std::all_of(digits, end, isDigit)) {
        ZANT_LOG_ERROR("SharedBufferPool::parsePoolId: non-numeric count in \"%s\"", id.c_str());
        return false;
    }
    if (std::from_chars(digits, end, count).ec != std::errc()) {
        ZANT_LOG_ERROR("SharedBufferPool::parsePoolId: count out of range in \"%s\", expected at most 4294967295",
                       id.c_str());
        return false;
    }
    if (count == 0) {
        ZANT_LOG_ERROR("SharedBufferPool::parsePoolId: count must be > 0 in \"%s\"", id.c_str());
        return false;
    }
    name = id.substr(0, colon);
    return true;
}

bool SharedBufferPool::registerContext(const Ids& ids, void* context, const Sizes& sizes,
                                       const void* backendFunctions) {
    if (ids.spillFill.empty() && ids.spadBackup.empty() && ids.weights.empty()) {
        ZANT_LOG_ERROR("SharedBufferPool::registerContext: all pool IDs are empty");
        return false;
    }
    MutexLock lock(m_poolsMutex);
    const bool backupWithSpillFill = !ids.spillFill.empty() && ids.spillFill == ids.spadBackup;
    const bool weightsWithSpillFill = !ids.spillFill.empty() && ids.spillFill == ids.weights;
    const bool weightsWithBackup = !ids.spadBackup.empty() && ids.spadBackup == ids.weights;
    if (!ids.spillFill.empty()) {
        const Sizes first{sizes.spillFill, backupWithSpillFill ? sizes.spadBackup : 0,
                          weightsWithSpillFill ? sizes.weights : 0};
        if (!registerInPool(ids.spillFill, {context, first, nullptr}, backendFunctions)) return false;
    }
    if (!ids.spadBackup.empty() && !backupWithSpillFill) {
        const Sizes second{0, sizes.spadBackup, weightsWithBackup ? sizes.weights : 0};
        if (!registerInPool(ids.spadBackup, {context, second, nullptr}, backendFunctions)) return false;
    }
    if (!ids.weights.empty() && !weightsWithSpillFill && !weightsWithBackup) {
        const Sizes third{0, 0, sizes.weights};
        if (!registerInPool(ids.weights, {context, third, nullptr}, backendFunctions)) return false;
    }
    return std::all_of(m_pools.begin(), m_pools.end(),
                       [](const auto& pool) { return pool.second.members.size() >= pool.second.expectedCount; });
}

bool SharedBufferPool::registerInPool(const std::string& id, const Member& member, const void* backendFunctions) {
    std::string name;
    uint32_t count = 0;
    if (!parsePoolId(id, name, count)) return false;
    PoolEntry& pool = m_pools[name];
    if (pool.expectedCount != 0 && pool.expectedCount != count) {
        ZANT_LOG_ERROR("SharedBufferPool::registerContext: pool \"%s\" expected count mismatch (%u vs %u)",
                       name.c_str(), pool.expectedCount, count);
        return false;
    }
    pool.members.push_back(member);
    pool.expectedCount = count;
    if (pool.backendFunctions == nullptr) pool.backendFunctions = backendFunctions;
    ZANT_LOG_DEBUG("SharedBufferPool::registerContext: pool \"%s\" registered %u/%u (sf=%lu spadBackup=%lu wt=%lu)",
                   name.c_str(), static_cast<unsigned>(pool.members.size()), pool.expectedCount,
                   shown(member.sizes.spillFill), shown(member.sizes.spadBackup), shown(member.sizes.weights));
    return true;
}

bool SharedBufferPool::finalizeAllPools() {
    MutexLock lock(m_poolsMutex);
    return std::all_of(m_pools.begin(), m_pools.end(),
                       [](auto& pool) { return pool.second.finalized || finalizePool(pool.first, pool.second); });
}

bool SharedBufferPool::finalizePool(const std::string& name, PoolEntry& pool) {
    if (pool.members.empty()) return true;  // memory was too short for its first context, which may come again
    for (const SharedKind& kind : SHARED_KINDS) {
        if (!finalizeShared(kind, name, pool)) return false;
    }
    if (!finalizeWeights(name, pool)) return false;
    pool.finalized = true;
    return true;
}

bool SharedBufferPool::finalizeShared(const SharedKind& kind, const std::string& name, PoolEntry& pool) {
    uint64_t largest = 0;
    for (const Member& member : pool.members) largest = std::max(largest, member.sizes.*kind.size);
    if (largest == 0) return true;
    const auto buffer = std::make_shared<ExternalBufferManager>();
    pool.*kind.buffer = buffer;
    if (!buffer->initialize(pool.backendFunctions)) {
        ZANT_LOG_ERROR(kind.initializeFailed, name.c_str());
        return false;
    }
    if (!buffer->allocate(largest)) {
        ZANT_LOG_ERROR(kind.allocateFailed, shown(largest), name.c_str());
        return false;
    }
    for (const Member& member : pool.members) {
        if (buffer->registerWithContext(member.context, kind.bufferType)) continue;
        ZANT_LOG_ERROR(kind.registerFailed, name.c_str());
        return false;
    }
    ZANT_LOG_DEBUG(kind.done, name.c_str(), shown(largest), pool.members.size());
    return true;
}

bool SharedBufferPool::finalizeWeights(const std::string& name, PoolEntry& pool) {
    for (size_t i = 0; i < pool.members.size(); ++i) {
        Member& member = pool.members[i];
        const uint64_t size = member.sizes.weights;
        if (size == 0) continue;
        const auto buffer = std::make_shared<ExternalBufferManager>();
        if (!buffer->initialize(pool.backendFunctions)) {
            ZANT_LOG_ERROR("SharedBufferPool::finalizePool: weights initialize failed for pool \"%s\" ctx %zu",
                           name.c_str(), i);
            return false;
        }
        if (!buffer->allocate(size)) {
            ZANT_LOG_ERROR("SharedBufferPool::finalizePool: weights allocate(%lu) failed for pool \"%s\" ctx %zu",
                           shown(size), name.c_str(), i);
            return false;
        }
        if (!buffer->registerWithContext(member.context, ZANT_SHARED_BUFFER_WEIGHTS)) {
            ZANT_LOG_ERROR("SharedBufferPool::finalizePool: weights registerWithContext failed for pool \"%s\" ctx %zu",
                           name.c_str(), i);
            return false;
        }
        member.weightsBuffer = buffer;
        ZANT_LOG_DEBUG("SharedBufferPool::finalizePool: pool \"%s\" ctx %zu weights %lu bytes", name.c_str(), i,
                       shown(size));
    }
    return true;
}

std::vector<ExternalBuffers> SharedBufferPool::buffersOfContexts() const {
    MutexLock lock(m_poolsMutex);
    std::vector<ExternalBuffers> buffers;
    for (const auto& [name, pool] : m_pools) {
        for (const Member& member : pool.members) {
            buffers.push_back({member.context, pool.spillFillBuffer, pool.spadBackupBuffer, member.weightsBuffer});
        }
    }
    return buffers;
}

}  // namespace zant::kor
