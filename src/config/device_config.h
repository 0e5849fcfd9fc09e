// Records of the document's devices section.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "config/custom_perf_state.h"

namespace zant::kor {

constexpr uint32_t NOT_SET = 0xFFFFFFFFU;

// How a device's cores are run. A device has one of these, however many items "cores" has.
struct KORCoreConfig {
    uint32_t perfProfile = 21;  // 21: none set
    uint32_t rpcControlLatency = 100;
    uint32_t rpcPollingTime = NOT_SET;
    uint32_t druTimeoutUs = 300000;
    uint32_t adaptivePollingTime = 0;
    bool ddrPerfMode = false;
    bool sustainInferencePerfState = false;
    std::array<KORCustomPerfState, 6> customPerfStates;  // indexed by graph state number
};

struct KORDeviceConfig {
    uint32_t deviceId = NOT_SET;
    bool deviceIdSet = false;
    uint32_t socModel = 0;
    uint32_t dspArch = 0;  // as a plain number: 68 for "v68"
    bool pdSessionSigned = false;
    bool useDynamicPartitioning = false;
    bool enableKorExtension = false;
    bool consolidateKorExtension = false;
    uint32_t profilingLevel = 0;
    bool useClientContext = true;
    std::vector<uint32_t> coreIds;
    uint32_t coreType = 0;
    uint32_t deviceType = 0;  // 0 on-chip, 1 off-chip
    bool enableAsyncExecute = false;
    KORCoreConfig core;
    bool asyncVoting = true;
};

}  // namespace zant::kor
