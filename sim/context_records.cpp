#include "context_records.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <set>

#include "shared_memory.h"
#include "text.h"
#include "zelmar_kor/custom_configs.h"

namespace zant::sim {

namespace {

// A list without its closing null, or with a count that lies, must not run away.
constexpr uint32_t LIST_LIMIT = 4096;

enum class Form { ON, FLAG, NUMBER, NUMBER64, PAIR, DETACHABLE, FILE, GROUPS };

struct OptionRow {
    const char* name;
    uint32_t option;
    Form form;
};

constexpr OptionRow OPTIONS[] = {
    {"weight sharing", KOR_CONTEXT_OPTION_WEIGHT_SHARING, Form::ON},
    {"spill fill group", KOR_CONTEXT_OPTION_SPILL_FILL_GROUP, Form::PAIR},
    {"file read memory budget", KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET, Form::NUMBER64},
    {"dsp memory profiling", KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING, Form::ON},
    {"share resources", KOR_CONTEXT_OPTION_SHARE_RESOURCES, Form::ON},
    {"io memory estimation", KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION, Form::ON},
    {"prepare only", KOR_CONTEXT_OPTION_PREPARE_ONLY, Form::ON},
    {"init acceleration", KOR_CONTEXT_OPTION_INIT_ACCELERATION, Form::ON},
    {"skip binary validation", KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION, Form::ON},
    {"share resources type", KOR_CONTEXT_OPTION_SHARE_RESOURCES_TYPE, Form::NUMBER},
    {"extended udma", KOR_CONTEXT_OPTION_EXTENDED_UDMA, Form::FLAG},
    {"concurrent group", KOR_CONTEXT_OPTION_CONCURRENT_GROUP, Form::PAIR},
    {"lora weight sharing", KOR_CONTEXT_OPTION_LORA_WEIGHT_SHARING, Form::ON},
    {"detachable buffers", KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, Form::DETACHABLE},
    {"lora ram preload", KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD, Form::ON},
    {"reused io limit", KOR_CONTEXT_OPTION_REUSED_IO_LIMIT, Form::NUMBER64},
    {"reference weight sharing", KOR_CONTEXT_OPTION_REFERENCE_WEIGHT_SHARING, Form::ON},
    {"deserialization patch", KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH, Form::FILE},
    {"graph splitting", KOR_CONTEXT_OPTION_GRAPH_SPLITTING, Form::ON},
    {"lora preload groups", KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, Form::GROUPS},
    {"prepare threads", KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS, Form::NUMBER},
};

uint32_t optionOf(const void* record) {
    uint32_t option = 0;
    std::memcpy(&option, record, sizeof(option));
    return option;
}

// Adds the groups to text; what is wrong with them otherwise.
std::string readGroups(const KORLoraGroupList* list, std::string& text) {
    if (list == nullptr || list->groups == nullptr || list->groupCount == 0) return "no list of groups";
    if (list->groupCount > LIST_LIMIT) return std::to_string(list->groupCount) + " groups";
    for (uint32_t i = 0; i < list->groupCount; ++i) {
        const KORLoraGroup& group = list->groups[i];
        if (group.nameCount > LIST_LIMIT || (group.nameCount > 0 && group.names == nullptr)) return "no list of names";
        text += " [";
        for (uint32_t name = 0; name < group.nameCount; ++name) {
            if (group.names[name] == nullptr) return "a name that is null";
            text += (name > 0 ? ", " : "") + std::string(group.names[name]);
        }
        text += "]";
    }
    return {};
}

// The record of option 14 is shorter than all others: not a byte behind it is read.
std::string readDetachable(const void* record, std::string& text) {
    const auto& config = *static_cast<const KORContextDetachableConfig*>(record);
    text += " " + std::to_string(config.enabled);
    const bool clean =
        std::all_of(std::begin(config.padding0), std::end(config.padding0), [](uint8_t byte) { return byte == 0; });
    return config.enabled == 1 && clean ? "" : "expected an 8-bit 1 at byte 4 and zeros behind it";
}

std::string readValue(const void* bytes, Form form, std::string& text) {
    if (form == Form::DETACHABLE) return readDetachable(bytes, text);
    const auto& record = *static_cast<const KORContextCustomConfig*>(bytes);
    const uint64_t first = record.first.number64;
    const bool oneValue = record.second == 0;
    switch (form) {
        case Form::ON:
        case Form::FLAG:
            text += " " + std::to_string(first);
            return oneValue && (first == 1 || (first == 0 && form == Form::FLAG)) ? "" : "not a value of this flag";
        case Form::NUMBER:
            text += " " + std::to_string(first);
            return oneValue && first <= std::numeric_limits<uint32_t>::max() ? "" : "more than one 32-bit number";
        case Form::NUMBER64:
            text += " " + std::to_string(first);
            return oneValue ? "" : "more than one number";
        case Form::PAIR:
            text += " " + std::to_string(first) + " at most " + std::to_string(record.second);
            return {};
        case Form::FILE:
            text += " descriptor " + std::to_string(record.first.fileDescriptor);
            return isWritableFile(record.first.fileDescriptor) ? "" : "the descriptor is no file open for writing";
        case Form::GROUPS:
            return readGroups(record.first.groups, text);
        case Form::DETACHABLE:
            break;
    }
    return {};
}

// What every list element has to be, whatever its option.
std::string wrapperMisuse(const ZantConfigWrapper* wrapper) {
    if (wrapper == nullptr) return "a wrapper that is null";
    if (wrapper->option != ZANT_CONFIG_OPTION_CUSTOM) return "unknown wrapper " + std::to_string(wrapper->option);
    return wrapper->customConfig == nullptr ? "a wrapper without a record" : "";
}

std::string readContextRecord(const void* record, std::string& text) {
    const uint32_t option = optionOf(record);
    const auto* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                                   [&](const OptionRow& candidate) { return candidate.option == option; });
    if (row == std::end(OPTIONS)) return "unknown context option " + std::to_string(option);
    text += row->name;
    const std::string fault = readValue(record, row->form, text);
    return fault.empty() ? fault : "option " + std::to_string(option) + " (" + row->name + "): " + fault;
}

std::string readBufferState(const void* record, BufferStates& states) {
    if (optionOf(record) != KOR_CONTEXT_OPTION_BUFFER_STATE)
        return "unknown option " + std::to_string(optionOf(record));
    const auto& state = *static_cast<const ContextBufferStateRecord*>(record);
    if (state.wantedState > KOR_BUFFER_DETACHED) return "unknown buffer state " + std::to_string(state.wantedState);
    states.text +=
        (state.wantedState == KOR_BUFFER_DETACHED ? "detach " : "attach ") + std::to_string(state.fileDescriptor);
    states.records.push_back(state);
    return {};
}

}  // namespace

ContextRecords readContextRecords(const ZantConfigWrapper* const* configs, uint32_t count) {
    ContextRecords result;
    std::set<uint32_t> options;
    if (count > LIST_LIMIT || (count > 0 && configs == nullptr)) return {"none", "a list that can't be"};
    for (uint32_t i = 0; i < count && result.misuse.empty(); ++i) {
        result.misuse = wrapperMisuse(configs[i]);
        if (!result.misuse.empty()) break;
        if (i > 0) result.text += ", ";
        const void* record = configs[i]->customConfig;
        result.misuse = readContextRecord(record, result.text);
        const uint32_t option = optionOf(record);
        if (!options.insert(option).second) result.misuse = "option " + std::to_string(option) + " twice";
        if (option == KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS) result.detachable = true;
    }
    if (result.text.empty()) result.text = "none";
    return result;
}

BufferStates readBufferStates(const ZantConfigWrapper* const* configs) {
    BufferStates result;
    if (configs == nullptr || configs[0] == nullptr) return {"", "no records", {}};
    for (uint32_t i = 0; result.misuse.empty() && configs[i] != nullptr; ++i) {
        result.misuse = i < LIST_LIMIT ? wrapperMisuse(configs[i]) : "a list without an end";
        if (!result.misuse.empty()) break;
        if (i > 0) result.text += ", ";
        result.misuse = readBufferState(configs[i]->customConfig, result);
    }
    if (result.text.empty()) result.text = "none";
    return result;
}

}  // namespace zant::sim
