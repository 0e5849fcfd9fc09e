// The closed backend as this library sees it: one entry point, one record of functions, one config wrapper.
//
// Every function returns 0 on success. Handles are opaque pointers owned by whoever created them. Config lists are
// arrays of pointers to ZantConfigWrapper; lists given to the backend end in a null pointer, lists given to the host
// go with a count instead.
#pragma once

#include <cstddef>
#include <cstdint>

struct ZantPerfInfrastructure;  // power_records.h
struct MemRegisterDescriptor;   // memory_records.h

// Option 0 (custom) and the record that it carries. The wrapper does not own the record.
struct ZantConfigWrapper {
    uint32_t option;
    uint32_t padding0;
    void* customConfig;
};

static_assert(sizeof(ZantConfigWrapper) == 16);
static_assert(offsetof(ZantConfigWrapper, option) == 0);
static_assert(offsetof(ZantConfigWrapper, customConfig) == 8);

constexpr uint32_t ZANT_CONFIG_OPTION_CUSTOM = 0;

struct ZantVersionTriple {
    uint32_t major;
    uint32_t minor;
    uint32_t patch;
};

// What the API version operation fills in.
struct ZantApiVersion {
    ZantVersionTriple core;
    ZantVersionTriple backend;
};

static_assert(sizeof(ZantApiVersion) == 24);
static_assert(offsetof(ZantApiVersion, core) == 0);
static_assert(offsetof(ZantApiVersion, backend) == 12);

using ZantGetApiVersionFn = uint64_t (*)(ZantApiVersion* version);
using ZantContextSetConfigFn = uint64_t (*)(void* context, const ZantConfigWrapper** configs);
using ZantMemoryRegisterFn = uint64_t (*)(void* context, const MemRegisterDescriptor* descriptors, uint32_t count,
                                          void** handles);
using ZantMemoryDeregisterFn = uint64_t (*)(void** handles, uint32_t count);
using ZantDeviceGetInfrastructureFn = uint64_t (*)(const ZantPerfInfrastructure** infrastructure);
using ZantDeviceSetConfigFn = uint64_t (*)(void* device, const ZantConfigWrapper** configs);
using ZantContextGetPropertyFn = uint64_t (*)(void* context, void** properties);
using ZantContextFinalizeFn = uint64_t (*)(void* context, void* reserved);

// Backend id of the provider that this library drives.
constexpr uint32_t ZANT_BACKEND_ID_KOR = 6;

// The closed backend's functions, copied whole by value. The functions begin at byte 40; positions without a name
// are copied and never read. A position may be null in a backend that lacks the operation.
struct ZantProviderRecord {
    uint32_t backendId;
    uint32_t padding0;
    uint64_t header[4];
    void* functions40[3];
    ZantGetApiVersionFn getApiVersion;
    void* functions72[6];
    ZantContextSetConfigFn contextSetConfig;
    void* functions128[24];
    ZantMemoryRegisterFn memoryRegister;
    ZantMemoryDeregisterFn memoryDeregister;
    void* functions336[2];
    ZantDeviceGetInfrastructureFn deviceGetInfrastructure;
    void* functions360[1];
    ZantDeviceSetConfigFn deviceSetConfig;
    void* functions376[21];
    ZantContextGetPropertyFn contextGetProperty;
    void* functions552[2];
    ZantContextFinalizeFn contextFinalize;
    void* functions576[8];
};

static_assert(sizeof(void*) == 8, "the records are laid out for 64-bit targets");
static_assert(sizeof(ZantProviderRecord) == 640);
static_assert(offsetof(ZantProviderRecord, backendId) == 0);
static_assert(offsetof(ZantProviderRecord, functions40) == 40);
static_assert(offsetof(ZantProviderRecord, getApiVersion) == 64);
static_assert(offsetof(ZantProviderRecord, contextSetConfig) == 120);
static_assert(offsetof(ZantProviderRecord, memoryRegister) == 320);
static_assert(offsetof(ZantProviderRecord, memoryDeregister) == 328);
static_assert(offsetof(ZantProviderRecord, deviceGetInfrastructure) == 352);
static_assert(offsetof(ZantProviderRecord, deviceSetConfig) == 368);
static_assert(offsetof(ZantProviderRecord, contextGetProperty) == 544);
static_assert(offsetof(ZantProviderRecord, contextFinalize) == 568);

// The backend library's entry point, exported as "ZantInterface_getProviders". Fills in an array of record pointers
// that stays the backend's, and its length. The result is not read: an empty list is a count of 0.
using ZantInterfaceGetProviders = uint32_t (*)(const ZantProviderRecord*** providers, uint32_t* count);
