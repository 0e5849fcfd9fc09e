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

// One graph name and the config list that applies to it, handed to the host by beforeGraphsCompose. Both are
// borrowed until afterGraphsCompose; the list ends in a null pointer, or is null when it has no wrappers.
struct GraphConfigInfo_t {
    const char* graphName;
    ZantConfigWrapper** configs;
};

static_assert(sizeof(GraphConfigInfo_t) == 16);
static_assert(offsetof(GraphConfigInfo_t, graphName) == 0);
static_assert(offsetof(GraphConfigInfo_t, configs) == 8);
