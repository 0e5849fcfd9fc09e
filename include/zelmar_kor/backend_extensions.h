// The contract with the host: two exported functions, one hook table, one allocator interface, one log callback.
//
// The host binds to the hooks by position, so the order of the virtual functions is the interface. No hook lets an
// exception out. Hooks that return bool report failure as false, after at least one message at
// ZANT_LOG_LEVEL_ERROR unless their comment says otherwise; the object stays usable. Hooks must not overlap, except
// the buffer hooks (allocateExternalBuffers, finalizeExternalBufferPools, detachBuffers, attachBuffers).
//
// What a "before" hook hands out through an out-pointer stays the library's and is valid until the matching "after"
// hook has run.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zelmar_kor/custom_configs.h"
#include "zelmar_kor/provider_record.h"

// A message passes when its level is at most the logger's level.
enum ZantLogLevel : int32_t {
    ZANT_LOG_LEVEL_ERROR = 1,
    ZANT_LOG_LEVEL_WARN = 2,
    ZANT_LOG_LEVEL_INFO = 3,
    ZANT_LOG_LEVEL_VERBOSE = 4,
    ZANT_LOG_LEVEL_DEBUG = 5,
};

// Receives each message as its unexpanded printf format and arguments. timestampNs counts nanoseconds from
// setupLogging. Runs on whichever thread logs, several at once included; format and arguments are valid for the call
// only. It must not throw.
using ZantLogCallback = void (*)(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments);

namespace zant::tools::iotensor {

// Memory for a host's tensors. Statuses are 0 for success and 1 for failure. The slot order is the interface.
// initialize comes first, once. allocate and release must not overlap; getBuffer may run beside them. Release all
// tensors before the allocator goes: what is left stays allocated and registered.
class IBufferAlloc {
public:
    virtual ~IBufferAlloc() = default;
    // backendFunctions: byte 40 of the bound ZantProviderRecord; borrowed as long as the allocator lives.
    virtual uint32_t initialize(void* context, const void* backendFunctions) = 0;
    // Where the tensor's data begins, null for a tensor that this allocator does not hold.
    virtual void* getBuffer(void* tensor) = 0;
    // tensors: an array of count tensor records of 144 bytes each, which must not move until released. After a
    // failure the tensors before the failing one have their memory, and are released one by one.
    virtual uint32_t allocate(void* tensors, uint32_t count) = 0;
    virtual uint32_t release(void* tensor) = 0;
    virtual uint32_t reservedAllocatorHook1() { return 0; }
    virtual uint32_t reservedAllocatorHook2() { return 0; }
    virtual uint32_t reservedAllocatorHook3() { return 0; }
    virtual uint32_t reservedAllocatorHook4() { return 0; }
};

}  // namespace zant::tools::iotensor

namespace zant::tools::runhost {

// A hook that takes list and count may leave both untouched when there is nothing to hand over, or set the count to 0:
// give both a value before the call. The reserved hooks return what their names say, without a message.
class IBackend {
public:
    virtual ~IBackend() = default;

    // Installs the host's logger. A null callback or a level outside 1 to 5 is refused without a message, and the
    // logger in force stays.
    virtual bool setupLogging(ZantLogCallback callback, ZantLogLevel maxLevel) = 0;
    // library: a module handle of the operating system's loader. Needs to happen before any hook that calls the
    // backend. Refuses a backend API other than 5.x with x >= 51.
    virtual bool bindBackendLibrary(void* library) = 0;
    virtual bool bindInterfaceProviders(ZantInterfaceGetProviders getProviders) = 0;
    // A perf profile number that overrides the document's for the first device; 21 overrides nothing.
    virtual bool setPerfProfile(uint32_t profile) = 0;
    // The first device's profiling level, 0 when none was configured.
    virtual uint32_t getProfilingLevel() = 0;
    // config: the path of a JSON document, or the document itself when the first character is '{'. A further
    // load writes over the records of earlier ones, index by index, and adds to their lists; what it does not name
    // keeps its value: better make a new object for each document. After a failure what was filled so far stays.
    // A member that "custom" does not know fails the load without a message.
    virtual bool loadConfig(std::string config) = 0;
    virtual bool acceptSharedReference(std::shared_ptr<void> reference) = 0;
    virtual bool reservedTrueHook1() = 0;
    virtual bool reservedTrueHook2() = 0;

    virtual bool beforeContextCreate(ZantConfigWrapper*** list, uint32_t* count) = 0;
    virtual bool afterContextCreate() = 0;
    virtual bool beforeGraphsCompose(GraphConfigInfo_t*** list, uint32_t* count) = 0;
    virtual bool afterGraphsCompose() = 0;
    virtual bool reservedTrueHook3() = 0;
    virtual bool beforeGraphFinalize() = 0;
    virtual bool afterGraphFinalize() = 0;
    virtual bool reservedTrueHook4() = 0;
    virtual bool reservedTrueHook5() = 0;
    virtual bool beforeGraphExecute(const char* graphName, ZantConfigWrapper*** list, uint32_t* count) = 0;
    virtual bool afterGraphExecute() = 0;
    // A null handle ends the call: it fails, and the handles behind it stay as they are.
    virtual bool beforeContextFree(std::vector<void*> contexts) = 0;
    virtual bool afterContextFree() = 0;
    virtual bool reservedTrueHook6() = 0;
    virtual bool reservedTrueHook7() = 0;
    virtual bool beforeContextCreateFromBinary(ZantConfigWrapper*** list, uint32_t* count) = 0;
    virtual bool afterContextCreateFromBinary() = 0;
    // True even when memory is too short for the name, which is then told.
    virtual bool setContextName(void* /*context*/, std::string /*name*/) { return true; }
    // perContext: the host's map from context key to that context's list; list and count: the list for all. A key that
    // is in the map already keeps its value. After false the lists may hold wrappers that lead nowhere: pass none on,
    // but call the "after" hook.
    virtual bool beforeContextCreateFromBinaryList(
        std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext, ZantConfigWrapper*** list,
        uint32_t* count) = 0;
    virtual bool afterContextCreateFromBinaryList() = 0;

    // Hands out the first device's config list; also leaves a first device config when the document had none.
    virtual bool beforeDeviceCreate(ZantConfigWrapper*** list, uint32_t* count) = 0;
    virtual bool afterDeviceCreate() = 0;
    virtual bool beforeDeviceFree() = 0;
    virtual bool reservedTrueHook8() = 0;
    virtual bool reservedFalseHook1() = 0;
    virtual bool reservedFalseHook2() = 0;
    virtual bool reservedFalseHook3() = 0;
    virtual bool reservedFalseHook4() = 0;

    // Sets the holder to null: the host then uses an allocator of its own.
    virtual std::unique_ptr<iotensor::IBufferAlloc>& getDefaultAllocator(
        std::unique_ptr<iotensor::IBufferAlloc>& holder) = 0;
    // Frees the block from std::malloc that *holder points at; *holder stays as it is.
    virtual void releaseBlock(void** holder) = 0;
    // An allocator of shared memory when the document asks for one, else null.
    virtual std::unique_ptr<iotensor::IBufferAlloc>& getBufferAllocator(
        std::unique_ptr<iotensor::IBufferAlloc>& holder) = 0;
    // Type 1 switches the perf driver off for the life of the object; other types change nothing.
    virtual bool setAppType(uint32_t type) = 0;
    virtual bool beforeContextApplyBinarySection() = 0;
    virtual bool afterContextApplyBinarySection() = 0;
    virtual bool reservedFalseHook5() = 0;
    // Numbers of 0xFFFFFFFF are not given. dspArch: "V68", "V69", "V73" or "V81"; other texts change nothing.
    // index may be at most the number of graph and of device configs so far; one there is extended, one beyond fails.
    virtual bool setGraphOptions(int32_t index, std::string dspArch, uint32_t spadMb, std::string graphName,
                                 uint32_t optimizationLevel, uint32_t dlbc, uint32_t referenceWeightSharing,
                                 uint32_t sluThreads) = 0;
    // Enters the context into a pool for each kind; an empty id leaves a kind out. An id is "name:N", N the number of
    // contexts that the pool waits for. True once every pool so far has its contexts, those of other calls included;
    // false without a message as long as one waits, and for three empty ids. Enter a context into a pool once, also
    // after a failed call, which leaves what it had entered: a second entry makes finalizeExternalBufferPools fail.
    virtual bool allocateExternalBuffers(void* context, std::string spillFillPoolId, std::string spadBackupPoolId,
                                         std::string weightsPoolId) = 0;
    // Gives the pools their memory, with the contexts that they have; one that joins later is not registered with it.
    virtual bool finalizeExternalBufferPools() { return true; }
    virtual void reservedVoidHook1() = 0;
    // False without a message: whether the first context config asks for detachable buffers.
    virtual bool detachableBuffersEnabled() = 0;
    // Both are true also where nothing was to be done: the context is in that state already, or has no such buffers and
    // stays attached.
    virtual bool detachBuffers(void* context) = 0;
    virtual bool attachBuffers(void* context) = 0;
    // False without a message when no device config asks for the extension.
    virtual bool enableKorExtension(void* /*device*/) { return false; }
    virtual bool runExtensionTestClient(uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t,
                                        uint64_t) {
        return false;
    }
    virtual bool reservedFalseHook6() { return false; }
    virtual void reservedVoidHook2() {}
    virtual uint64_t getDefaultTimeout() { return 6000; }
    // The first core id of the first device, 0 when none was configured.
    virtual uint32_t getCoreId() { return 0; }
};

}  // namespace zant::tools::runhost

#if defined(_WIN32)
#if defined(ZELMAR_KOR_BUILDING_LIBRARY)
#define ZELMAR_KOR_EXPORT __declspec(dllexport)
#else
#define ZELMAR_KOR_EXPORT
#endif
#else
#define ZELMAR_KOR_EXPORT __attribute__((visibility("default")))
#endif

extern "C" {

// Makes the object that answers the hooks, or null when memory is short. The caller owns it.
ZELMAR_KOR_EXPORT zant::tools::runhost::IBackend* createBackendInterface();
// Destroys an object of createBackendInterface; null is ignored. Afterwards no thread of the library runs, and it
// may be unloaded.
ZELMAR_KOR_EXPORT void destroyBackendInterface(zant::tools::runhost::IBackend* backend);
}
