#include "context_operations.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "context_records.h"
#include "contexts.h"
#include "decode.h"
#include "ledger.h"
#include "regions.h"

namespace zant::sim {

namespace {

constexpr uint32_t LIST_LIMIT = 64;

std::string listText(const std::vector<int32_t>& numbers) {
    std::string text;
    for (const int32_t number : numbers) text += (text.empty() ? "" : ", ") + std::to_string(number);
    return "[" + text + "]";
}

const char* propertyName(uint32_t option) {
    switch (option) {
        case ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE:
            return "spill-fill size";
        case ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE:
            return "weights size";
        case ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT:
            return "number of detachable buffers";
        case ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS:
            return "detachable buffers";
        case ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE:
            return "scratch backup size";
        default:
            return "unknown property";
    }
}

// Fills in the one record; text tells the answer.
std::string answerProperty(const void* context, void* bytes, std::string& text) {
    uint32_t option = 0;
    std::memcpy(&option, bytes, sizeof(option));
    text = propertyName(option);
    if (option == ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS) {
        std::vector<int32_t> list;
        std::string misuse = contexts().descriptors(context, list);
        int32_t* target = static_cast<ContextFdsProperty*>(bytes)->fileDescriptors;
        if (misuse.empty() && target == nullptr && !list.empty()) misuse = "nowhere to put the descriptors";
        if (!misuse.empty()) return misuse;
        std::copy(list.begin(), list.end(), target);
        text += " " + listText(list);
        return {};
    }
    auto& record = *static_cast<ContextNumberProperty*>(bytes);
    constexpr int64_t noAnswer = -1;
    if (option == ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT && record.answer != noAnswer) return "the count is not -1";
    std::string misuse = contexts().number(context, static_cast<ZantContextProperty>(option), record.answer);
    if (misuse.empty()) text += " " + std::to_string(record.answer);
    return misuse;
}

std::string describeRegion(const MemRegisterDescriptor* descriptor) {
    if (descriptor == nullptr || descriptor->extendedInfo == nullptr) return "no region";
    const SharedBufferInfo& info = *descriptor->extendedInfo;
    return bufferTypeName(info.bufferType) + " at " + std::to_string(info.offset) + " of " + std::to_string(info.size) +
           " bytes, descriptor " + std::to_string(info.fileDescriptor);
}

}  // namespace

uint64_t contextSetConfig(const std::string& prefix, void* context, const ZantConfigWrapper** configs) {
    const BufferStates states = readBufferStates(configs);
    return answer(
        "contextSetConfig", describeHandle(context) + ", " + states.text,
        [&] { return states.misuse.empty() ? contexts().want(context, states.records) : states.misuse; }, prefix);
}

uint64_t contextGetProperty(const std::string& prefix, void* context, void** properties) {
    std::string text;
    const auto act = [&]() -> std::string {
        if (properties == nullptr || properties[0] == nullptr) return "no properties";
        for (uint32_t i = 0; properties[i] != nullptr; ++i) {
            const auto* wrapper = static_cast<const ZantConfigWrapper*>(properties[i]);
            if (i == LIST_LIMIT) return "a list without an end";
            if (wrapper->option != ZANT_CONFIG_OPTION_CUSTOM || wrapper->customConfig == nullptr) return "no record";
            std::string answerText;
            std::string misuse = answerProperty(context, wrapper->customConfig, answerText);
            text += ", " + answerText;
            if (!misuse.empty()) return misuse;
        }
        return {};
    };
    return answer(
        "contextGetProperty", [&] { return describeHandle(context) + text; }, act, prefix);
}

uint64_t contextFinalize(const std::string& prefix, void* context, void* reserved) {
    return answer(
        "contextFinalize", describeHandle(context) + ", " + describeHandle(reserved),
        [&] { return reserved == nullptr ? contexts().finalize(context) : "the second argument is not null"; }, prefix);
}

uint64_t memoryRegister(const std::string& prefix, void* context, const MemRegisterDescriptor* descriptors,
                        uint32_t count, void** handles) {
    std::string handleText;
    const auto act = [&]() -> std::string {
        if (descriptors == nullptr || handles == nullptr) return "no descriptor, or nowhere to put the handle";
        if (count != 1) return "expected 1 descriptor, got " + std::to_string(count);
        std::string misuse = contexts().checkAlive(context);
        if (misuse.empty()) misuse = regions().add(context, *descriptors, *handles);
        if (misuse.empty()) handleText = ", " + describeHandle(*handles);
        return misuse;
    };
    return answer(
        "memoryRegister", [&] { return describeHandle(context) + ", " + describeRegion(descriptors) + handleText; },
        act, prefix);
}

uint64_t memoryDeregister(const std::string& prefix, void** handles, uint32_t count) {
    return answer(
        "memoryDeregister", handles == nullptr ? "none" : describeHandle(*handles),
        [&]() -> std::string {
            if (handles == nullptr || count != 1) return "expected 1 handle";
            return regions().remove(*handles);
        },
        prefix);
}

}  // namespace zant::sim
