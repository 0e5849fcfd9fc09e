// One item of the document's graphs section: options of the graphs that it names. 0xFFFFFFFF means not set: the option
// is left out.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zant::kor {

struct KORGraphConfig {
    uint32_t spadSize = 0xFFFFFFFFU;  // bytes
    bool spadSizeInBytes = false;     // given as spad_size
    uint32_t fp16RelaxedPrecision = 0;
    std::vector<std::string> graphNames;
    uint32_t numCores = 0xFFFFFFFFU;
    uint32_t optimizationLevel = 0xFFFFFFFFU;
    uint32_t dlbc = 0xFFFFFFFFU;
    uint32_t dlbcWeights = 0xFFFFFFFFU;
    uint32_t cachedWeights = 0xFFFFFFFFU;
    uint32_t sparseWeightsCompression = 0xFFFFFFFFU;
    uint32_t sluThreads = 0;
    bool sluThreadsApplied = false;  // handed to the host once already
    uint32_t perfProfile = 21;       // 21: none set
    std::string finalizeConfig;      // compact JSON text
    bool weightsPacking = false;
    bool assumeSameQuant = false;
    bool shareIoBuffer = false;
    bool advancedActivationFusion = true;
    bool highPrecisionSigmoid = false;
    bool monolithicLstm = false;
    bool precisionCompensation = false;
    bool enablePredication = false;
    bool shortDepthConvOnDruOff = false;
    bool foldReluActivationIntoConvOff = false;
    float druFrequency = 0;
    float dspCoreFrequency = 0;
    uint32_t slcAllocEnable = 0xFFFFFFFFU;
    uint32_t spadRetention = 0xFFFFFFFFU;
    bool spadRetentionApplied = false;
    bool fp16ClampOverflow = false;
    bool fp16ClampOverflowApplied = false;
    std::vector<uint32_t> dynamicPartitioning;
};

}  // namespace zant::kor
