#include "decode.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>

#include "zant_sim/sim_backend.h"
#include "zelmar_kor/custom_configs.h"

namespace zant::sim {

namespace {

// A list without its closing null must not run away.
constexpr uint32_t LIST_LIMIT = 4096;
constexpr uint32_t HANDLE_SHIFT = 32;

std::atomic<uint64_t> g_handleCounts[5];

const char* handleName(uint64_t kind) {
    constexpr std::array<const char*, 5> names{nullptr, "device", "context", "graph", "memory"};
    return kind < names.size() ? names[kind] : nullptr;
}

uint32_t recordOption(const void* record) {
    uint32_t option = 0;
    std::memcpy(&option, record, sizeof(option));
    return option;
}

std::string describeDeviceRecord(const KORDeviceCustomConfig& record) {
    const std::string id = std::to_string(record.deviceIdOrSocModel);
    switch (record.option) {
        case KOR_DEVICE_OPTION_SOC_MODEL:
            return "soc model " + id;
        case KOR_DEVICE_OPTION_DSP_ARCH:
            return "device " + id + " dsp arch " + std::to_string(record.value.number);
        case KOR_DEVICE_OPTION_SIGNED_PD_SESSION:
            return "device " + id + " signed pd session " + std::to_string(record.value.flag);
        case KOR_DEVICE_OPTION_ASYNC_EXECUTE:
            return "device " + id + " async execute " + std::to_string(record.value.flag);
        case KOR_DEVICE_OPTION_USE_DYNAMIC_PARTITIONING:
            return "device " + id + " dynamic partitioning " + std::to_string(record.value.flag);
        default:
            return "unknown device option " + std::to_string(record.option);
    }
}

std::string describeSetting(const ZantConfigWrapper& wrapper) {
    std::string text = "custom[option " + std::to_string(wrapper.option);
    if (wrapper.customConfig == nullptr) return text + " without a record]";
    const uint32_t option = recordOption(wrapper.customConfig);
    text += " record " + hex(option);
    if (option == KOR_DEVICE_EXTENSION_OPTION) {
        const auto& record = *static_cast<const KORExtensionOption*>(wrapper.customConfig);
        if (record.extensionSwitch == nullptr) return text + " without a switch]";
        text += " switch " + std::to_string(record.extensionSwitch->option) +
                ": enableKorExtension=" + std::to_string(record.extensionSwitch->enableKorExtension) +
                " consolidateKorExtension=" + std::to_string(record.extensionSwitch->consolidateKorExtension);
    }
    return text + "]";
}

std::string describePowerRecord(const PowerConfigRecord& record) {
    const uint32_t* last = std::find_if(std::rbegin(record.words), std::rend(record.words), [](uint32_t word) {
                               return word != 0;
                           }).base();
    std::string text = "[option " + std::to_string(record.words[0]);
    for (const uint32_t* word = record.words + 1; word < last; ++word) text += " " + std::to_string(*word);
    return text + "]";
}

// Joins what describe makes of each element up to the closing null.
template <typename Element, typename Describe>
std::string joinList(const Element* const* list, uint32_t count, Describe describe) {
    if (list == nullptr) return "none";
    std::string text;
    for (uint32_t i = 0; i < std::min(count, LIST_LIMIT) && list[i] != nullptr; ++i) {
        if (i > 0) text += ", ";
        text += describe(*list[i]);
    }
    return text.empty() ? "none" : text;
}

}  // namespace

void* makeHandle(HandleKind kind) {
    const auto number = static_cast<uint64_t>(kind);
    const uint64_t count = ++g_handleCounts[number];
    return reinterpret_cast<void*>(number << HANDLE_SHIFT | count);
}

std::string describeHandle(const void* handle) {
    const auto value = reinterpret_cast<uint64_t>(handle);
    const char* name = handleName(value >> HANDLE_SHIFT);
    if (handle == nullptr) return "null";
    if (name == nullptr) return "handle " + hex(value);
    return std::string(name) + " " + std::to_string(value & 0xFFFFFFFFU);
}

std::string describeDeviceConfigs(ZantConfigWrapper* const* configs, uint32_t count) {
    return joinList<ZantConfigWrapper>(configs, count, [](const ZantConfigWrapper& wrapper) -> std::string {
        if (wrapper.option != ZANT_CONFIG_OPTION_CUSTOM) return "unknown wrapper " + std::to_string(wrapper.option);
        if (wrapper.customConfig == nullptr) return "wrapper without a record";
        return describeDeviceRecord(*static_cast<const KORDeviceCustomConfig*>(wrapper.customConfig));
    });
}

std::string describeConfigs(const ZantConfigWrapper* const* configs, uint32_t count) {
    return joinList(configs, count, [](const ZantConfigWrapper& wrapper) {
        if (wrapper.customConfig == nullptr) return std::string("wrapper without a record");
        return "record option " + std::to_string(recordOption(wrapper.customConfig));
    });
}

std::string describeDeviceSettings(const ZantConfigWrapper* const* configs) {
    return joinList(configs, LIST_LIMIT, describeSetting);
}

std::string describePowerRecords(const PowerConfigRecord* const* records) {
    return joinList(records, ZANT_SIM_VOTE_RECORDS, describePowerRecord);
}

std::string describeMemoryRecords(const PowerMemoryRecord* const* records) {
    return joinList(records, ZANT_SIM_VOTE_RECORDS, [](const PowerMemoryRecord& record) {
        return "[option " + std::to_string(record.option) + " " + std::to_string(record.value) + "]";
    });
}

}  // namespace zant::sim
