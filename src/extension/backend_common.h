// Bodies of the hook table that have nothing to do with one backend.
#pragma once

#include <string>

#include "zelmar_kor/backend_extensions.h"

namespace zant::tools::runhost {

class BackendCommon : public virtual IBackend {
public:
    bool setupLogging(ZantLogCallback callback, ZantLogLevel maxLevel) override;
    bool acceptSharedReference(std::shared_ptr<void> reference) override;
    bool reservedTrueHook1() override { return true; }
    bool reservedTrueHook2() override { return true; }
    bool reservedTrueHook3() override { return true; }
    std::unique_ptr<iotensor::IBufferAlloc>& getDefaultAllocator(
        std::unique_ptr<iotensor::IBufferAlloc>& holder) override;
    void releaseBlock(void** holder) override;

    // Stand-by bodies: a backend without the feature takes the call and does nothing.
    bool setPerfProfile(uint32_t profile) override;
    bool beforeContextFree(std::vector<void*> contexts) override;
    bool beforeContextCreateFromBinaryList(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext,
                                           ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterContextCreateFromBinaryList() override;
    std::unique_ptr<iotensor::IBufferAlloc>& getBufferAllocator(
        std::unique_ptr<iotensor::IBufferAlloc>& holder) override;
    bool setAppType(uint32_t type) override;
    bool setGraphOptions(int32_t index, std::string dspArch, uint32_t spadMb, std::string graphName,
                         uint32_t optimizationLevel, uint32_t dlbc, uint32_t referenceWeightSharing,
                         uint32_t sluThreads) override;
    bool allocateExternalBuffers(void* context, std::string spillFillPoolId, std::string spadBackupPoolId,
                                 std::string weightsPoolId) override;
    bool detachableBuffersEnabled() override;
    bool detachBuffers(void* context) override;
    bool attachBuffers(void* context) override;

    // The text with '_' for each character that is neither alphanumeric nor '_', and with '_' in front unless it
    // begins with a letter or '_'. Classes are those of the C locale.
    virtual std::string sanitizeName(std::string text);
};

}  // namespace zant::tools::runhost
