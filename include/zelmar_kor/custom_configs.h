// Custom config records that the host hands to the closed backend, each behind a ZantConfigWrapper of option 0.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zelmar_kor/provider_record.h"

// Options of KORDeviceCustomConfig. The numbers are wire values.
enum KORDeviceOption : uint32_t {
    KOR_DEVICE_OPTION_SOC_MODEL = 0,                 // byte 8: the SoC model; byte 12 not used
    KOR_DEVICE_OPTION_DSP_ARCH = 1,                  // byte 12: 32-bit architecture number
    KOR_DEVICE_OPTION_SIGNED_PD_SESSION = 2,         // byte 12: 8-bit 1
    KOR_DEVICE_OPTION_ASYNC_EXECUTE = 4,             // byte 12: 8-bit 1
    KOR_DEVICE_OPTION_USE_DYNAMIC_PARTITIONING = 5,  // byte 12: 8-bit 1
};

struct KORDeviceCustomConfig {
    uint32_t option;  // KORDeviceOption
    uint32_t padding0;
    uint32_t deviceIdOrSocModel;
    union Value {
        uint32_t number;
        uint8_t flag;
    } value;
    uint64_t padding1;
};

static_assert(sizeof(KORDeviceCustomConfig) == 24);
static_assert(offsetof(KORDeviceCustomConfig, option) == 0);
static_assert(offsetof(KORDeviceCustomConfig, deviceIdOrSocModel) == 8);
static_assert(offsetof(KORDeviceCustomConfig, value) == 12);
static_assert(sizeof(KORDeviceCustomConfig::Value) == 4);

// The device extension switch, sent by enableKorExtension as wrapper -> option record -> switch record.
constexpr uint32_t KOR_DEVICE_EXTENSION_SWITCH = 1;
constexpr uint32_t KOR_DEVICE_EXTENSION_OPTION = 0x7FFF0000U;

struct KORExtensionSwitch {
    uint32_t option;  // KOR_DEVICE_EXTENSION_SWITCH
    uint32_t padding0;
    uint8_t enableKorExtension;
    uint8_t consolidateKorExtension;
    uint8_t padding1[14];
};

static_assert(sizeof(KORExtensionSwitch) == 24);
static_assert(offsetof(KORExtensionSwitch, option) == 0);
static_assert(offsetof(KORExtensionSwitch, enableKorExtension) == 8);
static_assert(offsetof(KORExtensionSwitch, consolidateKorExtension) == 9);

struct KORExtensionOption {
    uint32_t option;  // KOR_DEVICE_EXTENSION_OPTION
    uint32_t padding0;
    KORExtensionSwitch* extensionSwitch;
};

static_assert(sizeof(KORExtensionOption) == 16);
static_assert(offsetof(KORExtensionOption, option) == 0);
static_assert(offsetof(KORExtensionOption, extensionSwitch) == 8);

// Options of KORGraphCustomConfig. The numbers are wire values.
enum KORGraphOption : uint32_t {
    KOR_GRAPH_OPTION_TUNING = 1,                              // a family: sub-option and float value
    KOR_GRAPH_OPTION_FP16_RELAXED_PRECISION = 2,              // number 1
    KOR_GRAPH_OPTION_SPAD_SIZE_MB = 3,                        // number
    KOR_GRAPH_OPTION_FOLD_RELU_ACTIVATION_INTO_CONV_OFF = 4,  // flag 1
    KOR_GRAPH_OPTION_SHORT_DEPTH_CONV_ON_DRU_OFF = 5,         // flag 1
    KOR_GRAPH_OPTION_SLU_THREADS = 6,                         // number64
    KOR_GRAPH_OPTION_FINALIZE = 7,                            // the finalize view
    KOR_GRAPH_OPTION_NUM_CORES = 8,                           // number
    KOR_GRAPH_OPTION_SPAD_SIZE_BYTES = 10,                    // number
    KOR_GRAPH_OPTION_DRU_OP_BOUNDING = 11,                    // real and second: frequencies of DRU and DSP core
    KOR_GRAPH_OPTION_WEIGHTS_PACKING = 12,                    // flag 1
    KOR_GRAPH_OPTION_ASSUME_SAME_QUANT = 13,                  // flag 1
    KOR_GRAPH_OPTION_SHARE_IO_BUFFER = 14,                    // flag 1
    KOR_GRAPH_OPTION_ADVANCED_ACTIVATION_FUSION = 15,         // flag 0
    KOR_GRAPH_OPTION_HIGH_PRECISION_SIGMOID = 16,             // flag 1
    KOR_GRAPH_OPTION_MONOLITHIC_LSTM = 17,                    // flag 1
    KOR_GRAPH_OPTION_PRECISION_COMPENSATION = 18,             // flag 1
    KOR_GRAPH_OPTION_ENABLE_PREDICATION = 19,                 // flag 1
    KOR_GRAPH_OPTION_FP16_CLAMP_OVERFLOW = 20,                // flag 1
    KOR_GRAPH_OPTION_DYNAMIC_PARTITIONING = 21,               // number: length of the array
};

// Sub-options of KOR_GRAPH_OPTION_TUNING.
enum KORGraphTuning : uint32_t {
    KOR_GRAPH_TUNING_OPTIMIZATION_LEVEL = 3,
    KOR_GRAPH_TUNING_DLBC = 4,
    KOR_GRAPH_TUNING_SLC_ALLOC = 7,
    KOR_GRAPH_TUNING_SPAD_RETENTION = 8,
    KOR_GRAPH_TUNING_CACHED_WEIGHTS = 9,
};

// Data type codes of KOR_GRAPH_OPTION_FINALIZE.
enum KORFinalizeDataType : uint32_t {
    KOR_FINALIZE_DATA_TYPE_INT32 = 0x32,
    KOR_FINALIZE_DATA_TYPE_INT64 = 0x64,
    KOR_FINALIZE_DATA_TYPE_UINT32 = 0x132,
    KOR_FINALIZE_DATA_TYPE_UINT64 = 0x164,
    KOR_FINALIZE_DATA_TYPE_FLOAT32 = 0x232,
    KOR_FINALIZE_DATA_TYPE_BOOL = 0x508,
    KOR_FINALIZE_DATA_TYPE_TEXT = 0x608,
};

// The option says which view of the values it uses; bytes that the view leaves out are 0.
struct KORGraphCustomConfig {
    struct Setting {
        union First {
            uint32_t number;
            float real;
            uint8_t flag;
        } first;
        float second;
        const uint32_t* array;
    };
    // The name and a text are zero-terminated, and belong to whoever owns the record.
    struct Finalize {
        char* name;
        uint32_t dataType;  // KORFinalizeDataType
        uint32_t padding0;
        union Value {
            char* text;
            uint8_t flag;
            int32_t int32;
            uint32_t uint32;
            int64_t int64;
            uint64_t uint64;
            float float32;
        } value;
    };

    uint32_t option;  // KORGraphOption
    uint32_t padding0;
    union Values {
        uint64_t words[6];  // first, and as wide as the record allows: {} clears every byte
        uint64_t number64;
        Setting setting;
        Finalize finalize;
    } values;
};

static_assert(sizeof(KORGraphCustomConfig) == 56);
static_assert(offsetof(KORGraphCustomConfig, option) == 0);
static_assert(offsetof(KORGraphCustomConfig, values) == 8);
static_assert(offsetof(KORGraphCustomConfig, values.number64) == 8);
static_assert(offsetof(KORGraphCustomConfig, values.setting.first) == 8);
static_assert(offsetof(KORGraphCustomConfig, values.setting.second) == 12);
static_assert(offsetof(KORGraphCustomConfig, values.setting.array) == 16);
static_assert(offsetof(KORGraphCustomConfig, values.finalize.name) == 8);
static_assert(offsetof(KORGraphCustomConfig, values.finalize.dataType) == 16);
static_assert(offsetof(KORGraphCustomConfig, values.finalize.value) == 24);
static_assert(sizeof(KORGraphCustomConfig::Setting::First) == 4);
static_assert(sizeof(KORGraphCustomConfig::Finalize::Value) == 8);

// One graph name and the config list that applies to it, handed to the host by beforeGraphsCompose. Both are
// borrowed until afterGraphsCompose; the list ends in a null pointer, or is null when it has no wrappers. The name of a
// graph config without one is empty: it applies to no graph.
struct GraphConfigInfo_t {
    const char* graphName;
    ZantConfigWrapper** configs;
};

static_assert(sizeof(GraphConfigInfo_t) == 16);
static_assert(offsetof(GraphConfigInfo_t, graphName) == 0);
static_assert(offsetof(GraphConfigInfo_t, configs) == 8);

// Options of KORContextCustomConfig. The numbers are wire values. Unless told otherwise the first value is an 8-bit 1.
enum KORContextOption : uint32_t {
    KOR_CONTEXT_OPTION_WEIGHT_SHARING = 1,
    KOR_CONTEXT_OPTION_SPILL_FILL_GROUP = 2,         // 64-bit group; second: 64-bit largest buffer
    KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET = 3,  // 64-bit MiB
    KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING = 4,
    KOR_CONTEXT_OPTION_SHARE_RESOURCES = 5,
    KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION = 6,
    KOR_CONTEXT_OPTION_PREPARE_ONLY = 7,
    KOR_CONTEXT_OPTION_INIT_ACCELERATION = 8,
    KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION = 9,
    KOR_CONTEXT_OPTION_SHARE_RESOURCES_TYPE = 10,  // 32-bit optimization type
    KOR_CONTEXT_OPTION_EXTENDED_UDMA = 11,         // 8-bit 0 or 1
    KOR_CONTEXT_OPTION_CONCURRENT_GROUP = 12,      // 64-bit group; second: 64-bit largest buffer
    KOR_CONTEXT_OPTION_LORA_WEIGHT_SHARING = 13,
    KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS = 14,  // a KORContextDetachableConfig
    KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD = 16,
    KOR_CONTEXT_OPTION_REUSED_IO_LIMIT = 17,  // 64-bit MiB
    KOR_CONTEXT_OPTION_REFERENCE_WEIGHT_SHARING = 18,
    KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH = 21,  // signed 32-bit file descriptor of this process
    KOR_CONTEXT_OPTION_GRAPH_SPLITTING = 22,
    KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS = 23,  // a pointer to a KORLoraGroupList
    KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS = 26,  // 32-bit; 0xFFFFFFFF: the backend chooses
};

// A group of names, and all groups of a context. The arrays and the characters are borrowed until the "after" hook.
struct KORLoraGroup {
    const char* const* names;
    uint32_t nameCount;
    uint32_t padding0;
};

struct KORLoraGroupList {
    const KORLoraGroup* groups;
    uint32_t groupCount;
    uint32_t padding0;
};

static_assert(sizeof(KORLoraGroup) == 16);
static_assert(offsetof(KORLoraGroup, names) == 0);
static_assert(offsetof(KORLoraGroup, nameCount) == 8);
static_assert(sizeof(KORLoraGroupList) == 16);
static_assert(offsetof(KORLoraGroupList, groups) == 0);
static_assert(offsetof(KORLoraGroupList, groupCount) == 8);

struct KORContextCustomConfig {
    uint32_t option;  // KORContextOption
    uint32_t padding0;
    union First {
        uint64_t number64;  // first: {} clears every byte
        uint32_t number;
        uint8_t flag;
        int32_t fileDescriptor;
        const KORLoraGroupList* groups;
    } first;
    uint64_t second;
};

static_assert(sizeof(KORContextCustomConfig) == 24);
static_assert(offsetof(KORContextCustomConfig, option) == 0);
static_assert(offsetof(KORContextCustomConfig, first) == 8);
static_assert(sizeof(KORContextCustomConfig::First) == 8);
static_assert(offsetof(KORContextCustomConfig, second) == 16);

// The one context record of another shape.
struct KORContextDetachableConfig {
    uint32_t option;  // KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS
    uint8_t enabled;
    uint8_t padding0[7];
};

static_assert(sizeof(KORContextDetachableConfig) == 12);
static_assert(offsetof(KORContextDetachableConfig, option) == 0);
static_assert(offsetof(KORContextDetachableConfig, enabled) == 4);
