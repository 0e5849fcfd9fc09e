// The object behind the hook table. It owns the config parser, every record and every list handed to the host.
//
// The hooks' contracts stand in zelmar_kor/backend_extensions.h. Each group of hooks has a file of its own:
// provider_binding.cpp, device_hooks.cpp, graph_hooks.cpp, graph_options.cpp, execute_hooks.cpp, context_hooks.cpp,
// buffer_hooks.cpp; kor_backend.cpp has the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "buffers/shared_buffer_pool.h"
#include "config/config_parser.h"
#include "extension/backend_common.h"
#include "extension/config_list.h"
#include "extension/context_entries.h"
#include "extension/context_records.h"
#include "perf/perf_driver.h"
#include "zelmar_kor/custom_configs.h"
#include "zelmar_kor/provider_record.h"

namespace zant::kor {

class KORBackend : public tools::runhost::BackendCommon {
public:
    KORBackend();
    ~KORBackend() override;
    KORBackend(const KORBackend&) = delete;
    KORBackend& operator=(const KORBackend&) = delete;

    bool bindBackendLibrary(void* library) override;
    bool bindInterfaceProviders(ZantInterfaceGetProviders getProviders) override;
    bool setPerfProfile(uint32_t profile) override;
    uint32_t getProfilingLevel() override;
    bool loadConfig(std::string config) override;

    bool beforeContextCreate(ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterContextCreate() override;
    bool beforeGraphsCompose(GraphConfigInfo_t*** list, uint32_t* count) override;
    bool afterGraphsCompose() override;
    bool beforeGraphFinalize() override;
    bool afterGraphFinalize() override;
    bool reservedTrueHook4() override { return true; }
    bool reservedTrueHook5() override { return true; }
    bool beforeGraphExecute(const char* graphName, ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterGraphExecute() override;
    bool beforeContextFree(std::vector<void*> contexts) override;
    bool afterContextFree() override;
    bool reservedTrueHook6() override { return true; }
    bool reservedTrueHook7() override { return true; }
    bool beforeContextCreateFromBinary(ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterContextCreateFromBinary() override;
    bool beforeContextCreateFromBinaryList(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext,
                                           ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterContextCreateFromBinaryList() override;
    bool setContextName(void* context, std::string name) override;

    bool beforeDeviceCreate(ZantConfigWrapper*** list, uint32_t* count) override;
    bool afterDeviceCreate() override;
    bool beforeDeviceFree() override;
    bool reservedTrueHook8() override { return true; }
    bool reservedFalseHook1() override { return false; }
    bool reservedFalseHook2() override { return false; }
    bool reservedFalseHook3() override { return false; }
    bool reservedFalseHook4() override { return false; }
    std::unique_ptr<tools::iotensor::IBufferAlloc>& getBufferAllocator(
        std::unique_ptr<tools::iotensor::IBufferAlloc>& holder) override;
    bool setAppType(uint32_t type) override;
    bool beforeContextApplyBinarySection() override;
    bool afterContextApplyBinarySection() override;
    bool reservedFalseHook5() override { return false; }
    bool setGraphOptions(int32_t index, std::string dspArch, uint32_t spadMb, std::string graphName,
                         uint32_t optimizationLevel, uint32_t dlbc, uint32_t referenceWeightSharing,
                         uint32_t sluThreads) override;
    bool allocateExternalBuffers(void* context, std::string spillFillPoolId, std::string spadBackupPoolId,
                                 std::string weightsPoolId) override;
    bool finalizeExternalBufferPools() override;
    void reservedVoidHook1() override {}
    bool detachableBuffersEnabled() override;
    bool detachBuffers(void* context) override;
    bool attachBuffers(void* context) override;
    bool enableKorExtension(void* device) override;
    bool runExtensionTestClient(uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t,
                                uint64_t) override;
    bool reservedFalseHook6() override { return false; }
    void reservedVoidHook2() override {}
    uint64_t getDefaultTimeout() override;
    uint32_t getCoreId() override;

private:
    // Shared by the hooks. text: a line without conversions, logged as its own format.
    static void logText(ZantLogLevel level, const char* text);
    // False after a level 1 line when one of them is null.
    static bool hasOutPointers(const char* hook, const void* list, const void* count);
    // Tells the perf driver of the event. missing: the level 3 line where there is no driver, which is no failure;
    // failed: the level 1 line of the driver's failure, the only one that gives false.
    bool voteEvent(uint8_t event, bool async, const char* missing, const char* failed);
    // Whether the entry holds anything to hand over; in the second form, anything that only composition can apply.
    static bool hasSetting(const KORGraphConfig& graph);
    static bool hasComposeSetting(const KORGraphConfig& graph);

    bool parseConfigAndSanitize(const std::string& config);
    void collectGraphProfiles();
    static std::unique_ptr<KORDevicePerfDriver> makePerfDriver() noexcept;
    bool setUpPerfDriver(KORDeviceConfig& device);
    bool isAsyncVoting() const noexcept;
    bool composeGraph(size_t graphIndex);
    bool emitGraphRecords(size_t graphIndex);
    bool appendGraphInfos(KORGraphConfig& graph);
    // Both add to the list of the entry that is being composed.
    bool addGraphRecord(GraphRecord record);
    bool buildFinalizeConfigRecords(size_t graphIndex);
    bool addLateSettings(const char* graphName);
    KORGraphConfig& graphConfigAt(int32_t index, std::string graphName);
    bool applyGraphOptions(KORGraphConfig& graph, uint32_t spadMb, uint32_t optimizationLevel, uint32_t dlbc);
    bool applyReferenceWeightSharing(uint32_t value);
    bool setDeviceArchitecture(int32_t index, const std::string& dspArch);
    void clearDeviceLists();
    static void handOver(ConfigList& built, ZantConfigWrapper*** list, uint32_t* count);
    void warnOfGraphSettings() const;
    bool buildListedContexts(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>& perContext);
    bool dropContext(void* context);
    bool setBuffersDetached(void* context, KORBufferState wanted);

    // What beforeGraphExecute hands over.
    struct ExecuteConfigs {
        std::vector<GraphRecord> records;
        ConfigList list;
    };

    // Three records that the backend may look at after enableKorExtension: hence members.
    struct ExtensionConfig {
        KORExtensionSwitch extensionSwitch{};
        KORExtensionOption option{};
        ZantConfigWrapper wrapper{};
    };

    ZantProviderRecord m_interface{};  // valid once a provider was bound
    std::map<std::string, uint32_t, std::less<>> m_graphPerfProfiles;
    bool m_perfDriverDisabled = false;
    std::unique_ptr<KORDevicePerfDriver> m_perfDriver;  // from afterDeviceCreate to beforeDeviceFree
    uint32_t m_perfProfile = 21;                        // 21: no override
    std::unique_ptr<KORConfigParser> m_configParser;
    std::vector<KORDeviceConfig> m_deviceConfigs;
    std::vector<KORDeviceCustomConfig> m_deviceCustomConfigs;
    ExtensionConfig m_extensionConfig;
    std::vector<ZantConfigWrapper> m_deviceConfigWrappers;
    std::vector<ZantConfigWrapper*> m_deviceConfigPtrs;
    std::vector<KORGraphConfig> m_graphConfigs;
    std::vector<ConfigList> m_graphConfigLists;  // one for each composed entry
    ExecuteConfigs m_executeConfigs;
    HostList<GraphConfigInfo_t> m_graphConfigInfos;
    std::vector<GraphRecord> m_graphCustomConfigs;
    std::vector<std::vector<uint32_t>> m_dynamicPartitions;  // the arrays that graph records point at
    KORGroupContextConfig m_groupContextConfig;
    std::vector<KORContextConfig> m_contextConfigs;
    ContextRecords m_contextRecords;
    KORMemoryConfig m_memoryConfig;
    ContextEntries m_contextEntries;
    SharedBufferPool m_bufferPools;  // the last member: it ends first, and the blocks with it
};

}  // namespace zant::kor
