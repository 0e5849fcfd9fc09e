// Context records: option names, and the value in the form that the option has.
#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

#include "records/decode.h"

namespace runhost {

namespace {

enum class Form { FLAG, NUMBER, MEBIBYTES, GROUP, DETACHABLE, FILE, LORA_GROUPS, THREADS };

struct OptionRow {
    const char* name;
    uint32_t option;
    Form form;
};

constexpr OptionRow OPTIONS[] = {
    {"WEIGHT_SHARING", KOR_CONTEXT_OPTION_WEIGHT_SHARING, Form::FLAG},
    {"SPILL_FILL_GROUP", KOR_CONTEXT_OPTION_SPILL_FILL_GROUP, Form::GROUP},
    {"FILE_READ_MEMORY_BUDGET", KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET, Form::MEBIBYTES},
    {"DSP_MEMORY_PROFILING", KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING, Form::FLAG},
    {"SHARE_RESOURCES", KOR_CONTEXT_OPTION_SHARE_RESOURCES, Form::FLAG},
    {"IO_MEMORY_ESTIMATION", KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION, Form::FLAG},
    {"PREPARE_ONLY", KOR_CONTEXT_OPTION_PREPARE_ONLY, Form::FLAG},
    {"INIT_ACCELERATION", KOR_CONTEXT_OPTION_INIT_ACCELERATION, Form::FLAG},
    {"SKIP_BINARY_VALIDATION", KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION, Form::FLAG},
    {"SHARE_RESOURCES_TYPE", KOR_CONTEXT_OPTION_SHARE_RESOURCES_TYPE, Form::NUMBER},
    {"EXTENDED_UDMA", KOR_CONTEXT_OPTION_EXTENDED_UDMA, Form::FLAG},
    {"CONCURRENT_GROUP", KOR_CONTEXT_OPTION_CONCURRENT_GROUP, Form::GROUP},
    {"LORA_WEIGHT_SHARING", KOR_CONTEXT_OPTION_LORA_WEIGHT_SHARING, Form::FLAG},
    {"DETACHABLE_BUFFERS", KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, Form::DETACHABLE},
    {"LORA_RAM_PRELOAD", KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD, Form::FLAG},
    {"REUSED_IO_LIMIT", KOR_CONTEXT_OPTION_REUSED_IO_LIMIT, Form::MEBIBYTES},
    {"REFERENCE_WEIGHT_SHARING", KOR_CONTEXT_OPTION_REFERENCE_WEIGHT_SHARING, Form::FLAG},
    {"DESERIALIZATION_PATCH", KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH, Form::FILE},
    {"GRAPH_SPLITTING", KOR_CONTEXT_OPTION_GRAPH_SPLITTING, Form::FLAG},
    {"LORA_PRELOAD_GROUPS", KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, Form::LORA_GROUPS},
    {"NUM_PREPARE_THREADS", KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS, Form::THREADS},
};

std::string groupsText(const KORLoraGroupList* list) {
    if (list == nullptr || list->groups == nullptr) return "no groups";
    std::string text;
    for (uint32_t i = 0; i < list->groupCount; ++i) {
        const KORLoraGroup& group = list->groups[i];
        text += fmt::format("{}[{}]", i > 0 ? ", " : "", fmt::join(group.names, group.names + group.nameCount, ", "));
    }
    return text;
}

std::string valueText(const KORContextCustomConfig& record, Form form) {
    switch (form) {
        case Form::FLAG:
            return record.first.flag != 0 ? "on" : "off";
        case Form::NUMBER:
            return fmt::format("{}", record.first.number);
        case Form::MEBIBYTES:
            return fmt::format("{} MiB", record.first.number64);
        case Form::GROUP:
            return fmt::format("group {}, largest buffer {} bytes", record.first.number64, record.second);
        case Form::FILE:
            return fmt::format("file descriptor {}", record.first.fileDescriptor);
        case Form::LORA_GROUPS:
            return groupsText(record.first.groups);
        case Form::THREADS:
            return record.first.number == std::numeric_limits<uint32_t>::max() ? "auto"
                                                                               : fmt::format("{}", record.first.number);
        case Form::DETACHABLE:
            break;
    }
    return {};
}

}  // namespace

DecodedRecord decodeContextRecord(const ZantConfigWrapper& wrapper) {
    if (!holdsCustomRecord(wrapper)) return notCustom(wrapper);
    uint32_t option = 0;
    std::memcpy(&option, wrapper.customConfig, sizeof(option));
    const auto* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                                   [&](const OptionRow& candidate) { return candidate.option == option; });
    if (row == std::end(OPTIONS)) return {option, {}, "an option not known here", bytesOf(wrapper.customConfig, 4)};
    if (row->form == Form::DETACHABLE) {
        const auto& record = *static_cast<const KORContextDetachableConfig*>(wrapper.customConfig);
        return {option, row->name, record.enabled != 0 ? "on" : "off", bytesOf(&record, sizeof(record))};
    }
    const auto& record = *static_cast<const KORContextCustomConfig*>(wrapper.customConfig);
    return {option, row->name, valueText(record, row->form), bytesOf(&record, sizeof(record))};
}

}  // namespace runhost
