// Named pools of contexts that share the backend's large working buffers.
//
// A pool id is "name:N": the pool's name, which may hold colons, and the number of contexts that the pool expects.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "buffers/external_buffer_manager.h"
#include "platform/mutex.h"

namespace zant::kor {

// The buffers of one context in one pool; those that the pool lacks are null.
struct ExternalBuffers {
    void* context = nullptr;
    std::shared_ptr<ExternalBufferManager> spillFill;
    std::shared_ptr<ExternalBufferManager> spadBackup;
    std::shared_ptr<ExternalBufferManager> weights;
};

// Any thread. The lock is held through the backend's calls of finalizeAllPools. Inside it come only locks of the
// platform: the loader's, the driver directory's and the table of loggers'.
class SharedBufferPool {
public:
    struct Ids {
        std::string spillFill;
        std::string spadBackup;
        std::string weights;
    };
    // In bytes; 0 for a kind that the context does not use.
    struct Sizes {
        uint64_t spillFill = 0;
        uint64_t spadBackup = 0;
        uint64_t weights = 0;
    };

    // Puts the context into each distinct pool of the ids once; an empty id is no pool. True when every pool has its
    // number of contexts. False without a line: one still waits. What went into other pools before a failure stays.
    bool registerContext(const Ids& ids, void* context, const Sizes& sizes, const void* backendFunctions)
        EXCLUDES(m_poolsMutex);

    // Makes the blocks of each pool that has none yet, in name order, and registers them: one of the largest size for
    // spill-fill and one for the scratch backup, shared by all; one for each context's weights. Ends at the first
    // failure; pools done stay so, and a later call begins the failing one anew.
    bool finalizeAllPools() EXCLUDES(m_poolsMutex);

    // Every context of every pool, in name order, as it stands now.
    std::vector<ExternalBuffers> buffersOfContexts() const EXCLUDES(m_poolsMutex);

    static bool parsePoolId(const std::string& id, std::string& name, uint32_t& count);

private:
    struct Member {
        void* context;
        Sizes sizes;
        std::shared_ptr<ExternalBufferManager> weightsBuffer;
    };

    struct PoolEntry {
        uint32_t expectedCount = 0;   // 0: no id was read yet
        std::vector<Member> members;  // as many as were registered
        std::shared_ptr<ExternalBufferManager> spillFillBuffer;
        std::shared_ptr<ExternalBufferManager> spadBackupBuffer;
        const void* backendFunctions = nullptr;  // byte 40 of the provider record
        bool finalized = false;
    };

    // A buffer that all contexts of a pool share, with its level 1 and level 5 lines.
    struct SharedKind;
    static const SharedKind SHARED_KINDS[2];

    bool registerInPool(const std::string& id, const Member& member, const void* backendFunctions)
        REQUIRES(m_poolsMutex);
    static bool finalizePool(const std::string& name, PoolEntry& pool);
    static bool finalizeShared(const SharedKind& kind, const std::string& name, PoolEntry& pool);
    static bool finalizeWeights(const std::string& name, PoolEntry& pool);

    mutable Mutex m_poolsMutex;
    std::map<std::string, PoolEntry> m_pools GUARDED_BY(m_poolsMutex);
};

}  // namespace zant::kor
