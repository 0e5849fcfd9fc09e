// Records of the document's context, groupContext and memory sections.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zant::kor {

constexpr uint32_t PREPARE_THREADS_AUTO = 0xFFFFFFFFU;

struct KORContextConfig {
    std::string contextKey;
    bool weightSharingEnabled = false;
    bool partOfNewGroup = false;  // group_id was read as 0
    uint64_t groupId = 0;         // has the width of a group handle
    uint64_t maxSpillFillBufferForGroup = 0;
    bool fileReadMemoryBudgetSet = false;
    uint64_t fileReadMemoryBudgetInMb = 0;
    bool dspMemoryProfilingEnabled = false;
    bool ioMemoryEstimation = false;
    bool prepareOnly = false;
    bool initAcceleration = false;
    bool skipValidationOnBinarySection = false;
    bool extendedUdma = false;
    bool extendedUdmaSet = false;
    std::string concurrentDeserializationPatch;  // path of a file
    bool concurrentPartOfNewGroup = false;
    uint64_t concurrentGroupId = 0;
    uint64_t concurrentMaxSpillFillBufferForGroup = 0;
    bool loraWeightSharing = false;
    bool detachableBuffersEnabled = false;
    bool hardDetachEnabled = false;
    bool loraWeightSharingRamPreload = false;
    std::vector<std::vector<std::string>> loraPreloadBufferGroups;
    uint64_t reusedIoLimitMb = 0;
    bool referenceWeightSharingEnabled = false;
    bool graphSplittingConfigured = false;  // the form under graph_splitting_configs was read
    bool graphSplittingEnabled = false;
    uint32_t numPrepareThreads = 1;
};

// How contexts share resources.
struct KORGroupContextConfig {
    bool shareResources = false;
    uint32_t shareResourcesOptimizationType = 0;
    uint64_t reusedIoLimitMb = 0;
};

constexpr uint32_t ZANT_KOR_MEM_UNDEFINED = 0x7FFFFFFFU;
constexpr uint32_t ZANT_KOR_MEM_SHARED_BUFFER = 1;

struct KORMemoryConfig {
    uint32_t memType = ZANT_KOR_MEM_UNDEFINED;
};

}  // namespace zant::kor
