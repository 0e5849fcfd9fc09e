#include "extension/context_records.h"

#include <algorithm>
#include <iterator>

#include "platform/logger.h"

namespace zant::kor {

namespace {

using Context = KORContextConfig;
using Group = KORGroupContextConfig;
using Custom = KORContextCustomConfig;

// One row for each option of an entry. Without fill the record is of a shape of its own.
struct OptionRow {
    KORContextOption option;
    bool (*isWanted)(const Context& context);
    void (*fill)(const Context& context, Custom& record);
    const char* message = ContextRecords::ALLOCATION_FAILED;
};

template <bool Context::*Field>
bool isTrue(const Context& context) {
    return context.*Field;
}

template <auto Field>
bool isNotEmpty(const Context& context) {
    return !(context.*Field).empty();
}

bool limitsReusedIo(const Context& context) {
    return context.reusedIoLimitMb != 0;
}

template <uint64_t Context::*Id, bool Context::*IsNew, uint64_t Context::*LargestBuffer>
bool belongsToGroup(const Context& context) {
    return context.*Id != 0 || context.*IsNew || context.*LargestBuffer != 0;
}

constexpr auto inSpillFillGroup =
    belongsToGroup<&Context::groupId, &Context::partOfNewGroup, &Context::maxSpillFillBufferForGroup>;
constexpr auto inConcurrentGroup = belongsToGroup<&Context::concurrentGroupId, &Context::concurrentPartOfNewGroup,
                                                  &Context::concurrentMaxSpillFillBufferForGroup>;

void fillOne(const Context&, Custom& record) {
    record.first.flag = 1;
}

template <uint64_t Context::*Field>
void fillNumber64(const Context& context, Custom& record) {
    record.first.number64 = context.*Field;
}

void fillSpillFillGroup(const Context& context, Custom& record) {
    record.first.number64 = context.groupId;
    record.second = context.maxSpillFillBufferForGroup;
    ZANT_LOG_INFO("Spill-fill buffer option set as: (%p, %llu)", reinterpret_cast<void*>(context.groupId),
                  static_cast<unsigned long long>(context.maxSpillFillBufferForGroup));
}

void fillConcurrentGroup(const Context& context, Custom& record) {
    record.first.number64 = context.concurrentGroupId;
    record.second = context.concurrentMaxSpillFillBufferForGroup;
    ZANT_LOG_INFO("Concurrent Spill-fill buffer option set as: (%p, %llu)",
                  reinterpret_cast<void*>(context.concurrentGroupId),
                  static_cast<unsigned long long>(context.concurrentMaxSpillFillBufferForGroup));
}

void fillExtendedUdma(const Context& context, Custom& record) {
    record.first.flag = context.extendedUdma ? 1 : 0;
}

void fillPrepareThreads(const Context& context, Custom& record) {
    record.first.number = context.numPrepareThreads;
}

constexpr OptionRow OPTIONS[] = {
    {KOR_CONTEXT_OPTION_WEIGHT_SHARING, isTrue<&Context::weightSharingEnabled>, fillOne},
    {KOR_CONTEXT_OPTION_SPILL_FILL_GROUP, inSpillFillGroup, fillSpillFillGroup},
    {KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET, isTrue<&Context::fileReadMemoryBudgetSet>,
     fillNumber64<&Context::fileReadMemoryBudgetInMb>},
    {KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING, isTrue<&Context::dspMemoryProfilingEnabled>, fillOne},
    {KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION, isTrue<&Context::ioMemoryEstimation>, fillOne},
    {KOR_CONTEXT_OPTION_PREPARE_ONLY, isTrue<&Context::prepareOnly>, fillOne},
    {KOR_CONTEXT_OPTION_INIT_ACCELERATION, isTrue<&Context::initAcceleration>, fillOne},
    {KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION, isTrue<&Context::skipValidationOnBinarySection>, fillOne},
    {KOR_CONTEXT_OPTION_EXTENDED_UDMA, isTrue<&Context::extendedUdmaSet>, fillExtendedUdma},
    {KOR_CONTEXT_OPTION_CONCURRENT_GROUP, inConcurrentGroup, fillConcurrentGroup},
    {KOR_CONTEXT_OPTION_LORA_WEIGHT_SHARING, isTrue<&Context::loraWeightSharing>, fillOne},
    {KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, isTrue<&Context::detachableBuffersEnabled>, nullptr},
    {KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD, isTrue<&Context::loraWeightSharingRamPreload>, fillOne},
    {KOR_CONTEXT_OPTION_REUSED_IO_LIMIT, limitsReusedIo, fillNumber64<&Context::reusedIoLimitMb>},
    {KOR_CONTEXT_OPTION_REFERENCE_WEIGHT_SHARING, isTrue<&Context::referenceWeightSharingEnabled>, fillOne},
    {KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH, isNotEmpty<&Context::concurrentDeserializationPatch>, nullptr},
    {KOR_CONTEXT_OPTION_GRAPH_SPLITTING, isTrue<&Context::graphSplittingEnabled>, fillOne,
     "graphSplitting alloc failed - %s"},
    {KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, isNotEmpty<&Context::loraPreloadBufferGroups>, nullptr},
    {KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS, isTrue<&Context::graphSplittingEnabled>, fillPrepareThreads,
     "numPrepareThreads alloc failed - %s"},
};

// What each road takes, in the order in which the records stand in a list.
constexpr KORContextOption COMPOSE_OPTIONS[] = {
    KOR_CONTEXT_OPTION_WEIGHT_SHARING,
    KOR_CONTEXT_OPTION_PREPARE_ONLY,
    KOR_CONTEXT_OPTION_EXTENDED_UDMA,
    KOR_CONTEXT_OPTION_LORA_WEIGHT_SHARING,
    KOR_CONTEXT_OPTION_REFERENCE_WEIGHT_SHARING,
    KOR_CONTEXT_OPTION_GRAPH_SPLITTING,
    KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS,
};
constexpr KORContextOption BINARY_OPTIONS[] = {
    KOR_CONTEXT_OPTION_SPILL_FILL_GROUP,        KOR_CONTEXT_OPTION_CONCURRENT_GROUP,
    KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET, KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING,
    KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION,    KOR_CONTEXT_OPTION_INIT_ACCELERATION,
    KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION,  KOR_CONTEXT_OPTION_EXTENDED_UDMA,
    KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS,      KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD,
    KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS,     KOR_CONTEXT_OPTION_GRAPH_SPLITTING,
    KOR_CONTEXT_OPTION_NUM_PREPARE_THREADS,     KOR_CONTEXT_OPTION_REUSED_IO_LIMIT,
    KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH,
};
constexpr KORContextOption BINARY_LIST_OPTIONS[] = {
    KOR_CONTEXT_OPTION_SPILL_FILL_GROUP,        KOR_CONTEXT_OPTION_CONCURRENT_GROUP,
    KOR_CONTEXT_OPTION_FILE_READ_MEMORY_BUDGET, KOR_CONTEXT_OPTION_DSP_MEMORY_PROFILING,
    KOR_CONTEXT_OPTION_IO_MEMORY_ESTIMATION,    KOR_CONTEXT_OPTION_INIT_ACCELERATION,
    KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH,   KOR_CONTEXT_OPTION_SKIP_BINARY_VALIDATION,
    KOR_CONTEXT_OPTION_EXTENDED_UDMA,           KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS,
    KOR_CONTEXT_OPTION_LORA_RAM_PRELOAD,        KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS,
};

std::span<const KORContextOption> optionsOf(ContextRoad road) {
    switch (road) {
        case ContextRoad::compose:
            return COMPOSE_OPTIONS;
        case ContextRoad::binary:
            return BINARY_OPTIONS;
        case ContextRoad::binaryList:
            break;
    }
    return BINARY_LIST_OPTIONS;
}

const OptionRow& rowOf(KORContextOption option) {
    return *std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                         [option](const OptionRow& row) { return row.option == option; });
}

Custom recordOf(const OptionRow& row, const Context& context) {
    Custom record{};
    record.option = row.option;
    row.fill(context, record);
    return record;
}

}  // namespace

// Where memory is short the record is missing from the list.
template <class Values>
bool ContextRecords::add(ConfigList& list, const Values& values, const char* message) {
    return tellingShortage(message, [&] {
        Record record(new Values(values), [](void* address) { delete static_cast<Values*>(address); });
        return appendRecord(m_contextCustomConfigs, list, std::move(record), message);
    });
}

ContextRecords::Result ContextRecords::build(ContextRoad road, const KORContextConfig& context) {
    m_hasList = tellingShortage(ALLOCATION_FAILED, [&] {
        m_contextConfigLists.emplace_back();
        return true;
    });
    if (!m_hasList) return Result::failed;
    bool result = true;
    for (const KORContextOption option : optionsOf(road)) {
        const OptionRow& row = rowOf(option);
        if (!row.isWanted(context)) continue;
        if (row.fill != nullptr) {
            result = add(list(), recordOf(row, context), row.message) && result;
        } else if (option == KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS) {
            result = add(list(), KORContextDetachableConfig{option, 1, {}}, row.message) && result;
        } else if (option == KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS) {
            result = addGroups(context) && result;
        } else {
            const Result added = addPatchFile(context);
            if (added == Result::noPatchFile) return added;
            result = added == Result::ok && result;
        }
    }
    return result ? Result::ok : Result::failed;
}

bool ContextRecords::addGroups(const KORContextConfig& context) {
    return tellingShortage(ALLOCATION_FAILED, [&] {
        LoraGroups& all = *m_loraGroups.emplace_back(std::make_unique<LoraGroups>());
        for (const auto& group : context.loraPreloadBufferGroups) {
            for (const std::string& name : group) all.names.push_back(name.c_str());
        }
        // Only now do the names stay where they are.
        const char* const* next = all.names.data();
        for (const auto& group : context.loraPreloadBufferGroups) {
            all.groups.push_back({next, static_cast<uint32_t>(group.size()), 0});
            next += group.size();
        }
        all.list = {all.groups.data(), static_cast<uint32_t>(all.groups.size()), 0};
        Custom record{};
        record.option = KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS;
        record.first.groups = &all.list;
        return add(list(), record, ALLOCATION_FAILED);
    });
}

ContextRecords::Result ContextRecords::addPatchFile(const KORContextConfig& context) {
    int descriptor = -1;
    const bool hadMemory = tellingShortage(ALLOCATION_FAILED, [&] {
        descriptor = m_patchFiles.open(context.concurrentDeserializationPatch);
        return true;
    });
    if (!hadMemory) return Result::failed;
    if (descriptor < 0) return Result::noPatchFile;
    Custom record{};
    record.option = KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH;
    record.first.fileDescriptor = descriptor;
    return add(list(), record, ALLOCATION_FAILED) ? Result::ok : Result::failed;
}

bool ContextRecords::buildCommon(const KORGroupContextConfig& group) {
    m_commonContextConfigs.clear();
    bool result = true;
    const auto emit = [&](KORContextOption option, auto Custom::First::*field, auto value) {
        Custom record{};
        record.option = option;
        record.first.*field = value;
        result = add(m_commonContextConfigs, record, ALLOCATION_FAILED) && result;
    };
    if (group.shareResources) emit(KOR_CONTEXT_OPTION_SHARE_RESOURCES, &Custom::First::flag, uint8_t{1});
    emit(KOR_CONTEXT_OPTION_SHARE_RESOURCES_TYPE, &Custom::First::number, group.shareResourcesOptimizationType);
    if (group.reusedIoLimitMb != 0) {
        emit(KOR_CONTEXT_OPTION_REUSED_IO_LIMIT, &Custom::First::number64, group.reusedIoLimitMb);
    }
    return result;
}

void ContextRecords::clear() noexcept {
    m_contextCustomConfigs.clear();
    m_contextConfigLists.clear();
    m_loraGroups.clear();
}

void ContextRecords::dropRecords(size_t firstPatch) noexcept {
    for (ConfigList& list : m_contextConfigLists) list.forEach([](auto& wrapper) { wrapper.customConfig = nullptr; });
    m_commonContextConfigs.forEach([](auto& wrapper) { wrapper.customConfig = nullptr; });
    m_contextCustomConfigs.clear();
    m_loraGroups.clear();
    m_patchFiles.closeFrom(firstPatch);
}

}  // namespace zant::kor
