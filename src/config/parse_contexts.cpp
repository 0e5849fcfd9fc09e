#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "config/config_parser.h"
#include "config/section_walk.h"

namespace zant::kor {

namespace {

// "context" is an array of items or a single object; the object's member names are no index, so that it makes one
// record at index 0.
struct ContextWalk {
    static constexpr KeySection section = KeySection::context;
    static constexpr KeyElement element = KeyElement::context;

    SectionRecords<KORContextConfig> records;
    size_t groupBudget;  // preload groups that may still be made

    KORContextConfig& inForce() const { return records.inForce(); }
    bool handle(const FlatKey& key);
};

const void* asHandle(uint64_t groupId) {
    return reinterpret_cast<const void*>(static_cast<uintptr_t>(groupId));
}

bool readGroupId(ContextWalk& walk, const FlatKey& key, const char*) {
    const uint32_t value = getUint32(key);
    KORContextConfig& context = walk.inForce();
    context.groupId = value;
    if (value == 0) context.partOfNewGroup = true;
    ZANT_LOG_INFO("Key: group_id: %p, is part of new group? %d", asHandle(context.groupId),
                  static_cast<int>(context.partOfNewGroup));
    return true;
}

// Both words are looked for: a key that holds both counts twice.
bool readConcurrentGroup(ContextWalk& walk, const FlatKey& key, const char*) {
    if (key.holds(word("group_id"))) {
        const uint32_t value = getUint32(key);
        KORContextConfig& context = walk.inForce();
        context.concurrentGroupId = value;
        if (value == 0) context.concurrentPartOfNewGroup = true;
        ZANT_LOG_INFO("concurrent_group_registration - Key: group_id: %p, is part of new group? %d",
                      asHandle(context.concurrentGroupId), static_cast<int>(context.concurrentPartOfNewGroup));
    }
    if (key.holds(word("max_spill_fill_buffer_for_group"))) {
        const uint64_t value = getUint64(key);
        walk.inForce().concurrentMaxSpillFillBufferForGroup = value;
        ZANT_LOG_INFO("concurrent_group_registration - Key: max_spill_fill_buffer_for_group: %d",
                      static_cast<int>(value));
    }
    return true;
}

bool readFileReadMemoryBudget(ContextWalk& walk, const FlatKey& key, const char*) {
    const uint64_t value = getUint64(key);
    KORContextConfig& context = walk.inForce();
    context.fileReadMemoryBudgetInMb = value;
    context.fileReadMemoryBudgetSet = true;
    ZANT_LOG_INFO("Key: file_read_memory_budget_in_mb: %d", static_cast<int>(value));
    return true;
}

bool readExtendedUdma(ContextWalk& walk, const FlatKey& key, const char*) {
    const bool value = getBool(key);
    KORContextConfig& context = walk.inForce();
    context.extendedUdma = value;
    context.extendedUdmaSet = true;
    ZANT_LOG_INFO("Key: extended_udma, Value: %d", static_cast<int>(value));
    return true;
}

// Grows the groups to hold this one. A group takes bytes of the document, so that all of them together are no more
// than its bytes; an index beyond that stands in a member name, and counts as a growth that fails: no number in a name
// may decide how much memory is taken.
std::vector<std::string>& preloadGroup(ContextWalk& walk, size_t group) {
    auto& groups = walk.inForce().loraPreloadBufferGroups;
    if (groups.size() <= group) {
        const size_t grown = group + 1 - groups.size();
        if (grown > walk.groupBudget) throw std::length_error("group index");
        groups.resize(group + 1);
        walk.groupBudget -= grown;
    }
    return groups[group];
}

// A key ends in <word>/<group>/<position>; strings are appended in document order, whatever the position says. Any
// fault of a key reads as an invalid index and costs its line only.
bool readLoraPreloadBufferGroup(ContextWalk& walk, const FlatKey& key, const char*) {
    const PreloadGroup place = key.preloadGroup();
    if (!place.isComplete()) return true;
    bool isStored = false;
    try {
        if (place.group().isDigits()) {
            const int32_t index = place.group().toIndex();
            auto& group = preloadGroup(walk, static_cast<size_t>(index));
            // Looked at first: the getter's refusal would build a text that nobody reads.
            if (key.value() != nullptr && key.value()->IsString()) {
                const std::string& name = group.emplace_back(getString(key));
                isStored = true;
                ZANT_LOG_INFO("Key: lora_preload_buffer_group[%u] += %s", static_cast<unsigned>(index), name.c_str());
            }
        }
    } catch (const std::exception&) {
        isStored = false;
    }
    if (!isStored) {
        ZANT_LOG_ERROR("Invalid lora_preload_buffer_group index in key: %s", key.text().c_str());
    }
    return true;
}

bool readGraphSplittingConfigs(ContextWalk& walk, const FlatKey& key, const char*) {
    if (key.holds(word("graph_splitting_enabled"))) {
        const bool value = getBool(key);
        KORContextConfig& context = walk.inForce();
        context.graphSplittingEnabled = value;
        context.graphSplittingConfigured = true;
        ZANT_LOG_INFO("Key: graph_splitting_configs/graph_splitting_enabled, Value: %s", boolWord(value));
    } else if (key.holds(word("num_prepare_threads"))) {
        const bool isText = getValueType(key) == KORValueType::string;
        const uint32_t value = isText ? PREPARE_THREADS_AUTO : getUint32(key);
        walk.inForce().numPrepareThreads = value;
        ZANT_LOG_INFO("Key: graph_splitting_configs/num_prepare_threads, Value: %u", static_cast<unsigned>(value));
    }
    return true;
}

// The deprecated place of the key gives way to the new one, whatever their order.
bool readDeprecatedGraphSplitting(ContextWalk& walk, const FlatKey& key, const char*) {
    ZANT_LOG_WARN(
        "Found deprecated graph_splitting_enabled config. Use graph_splitting_configs/graph_splitting_enabled "
        "instead.");
    const bool value = getBool(key);
    KORContextConfig& context = walk.inForce();
    if (context.graphSplittingConfigured) return true;
    context.graphSplittingEnabled = value;
    ZANT_LOG_INFO("Key: graph_splitting_enabled (deprecated), Value: %s", boolWord(value));
    return true;
}

using Context = KORContextConfig;

template <auto Field>
consteval ChainRow<ContextWalk> flag(KeyWord word, const char* line) {
    return row<ContextWalk, BoolTo<Field>>(word, line);
}

constexpr auto CONTEXT_ROWS = std::to_array<ChainRow<ContextWalk>>({
    row<ContextWalk, StringTo<&Context::contextKey>>(word("contextKey"), "Key: contextKey, Value : %s"),
    row<ContextWalk, BoolWordTo<&Context::referenceWeightSharingEnabled>>(
        word("reference_weight_sharing_enabled"), "Key: reference_weight_sharing_enabled, Value: %s"),
    row<ContextWalk, BoolWordTo<&Context::weightSharingEnabled>>(word("weight_sharing_enabled"),
                                                                 "Key: Weight Sharing, Value: %s"),
    row<ContextWalk>(word("concurrent_group_registration"), readConcurrentGroup),
    row<ContextWalk>(word("group_id"), readGroupId),
    row<ContextWalk, Uint64To<&Context::maxSpillFillBufferForGroup>>(word("max_spill_fill_buffer_for_group"),
                                                                     "Key: max_spill_fill_buffer_for_group: %d"),
    row<ContextWalk>(word("file_read_memory_budget_in_mb"), readFileReadMemoryBudget),
    flag<&Context::dspMemoryProfilingEnabled>(word("dsp_memory_profiling_enabled"),
                                              "Key: dsp_memory_profiling_enabled: %d"),
    flag<&Context::ioMemoryEstimation>(word("io_memory_estimation"), "Key: io_memory_estimation: %d"),
    flag<&Context::prepareOnly>(word("prepare_only"), "Key: prepare_only: %d"),
    flag<&Context::initAcceleration>(word("init_acceleration"), "Key: init_acceleration: %d"),
    flag<&Context::skipValidationOnBinarySection>(word("skip_validation_on_binary_section"),
                                                  "Key: skip_validation_on_binary_section: %d"),
    row<ContextWalk>(word("extended_udma"), readExtendedUdma),
    flag<&Context::loraWeightSharingRamPreload>(word("lora_weight_sharing_ram_preload"),
                                                "Key: Lora Weight Sharing Ram Preload, Value: %d"),
    row<ContextWalk>(word("lora_preload_buffer_group"), readLoraPreloadBufferGroup),
    flag<&Context::loraWeightSharing>(word("lora_weight_sharing"), "Key: Lora Weight Sharing, Value: %d"),
    flag<&Context::detachableBuffersEnabled>(word("detachable_buffers_enabled"),
                                             "Key: Detachable buffers enabled, Value: %d"),
    flag<&Context::hardDetachEnabled>(word("hard_detach_enabled"), "Key: Hard detach enabled, Value: %d"),
    row<ContextWalk, LongTo<&Context::reusedIoLimitMb>>(word("reused_io_limit_mb"), "Key: reused_io_limit_mb: %lu"),
    row<ContextWalk>(word("graph_splitting_configs"), readGraphSplittingConfigs),
    row<ContextWalk>(word("graph_splitting_enabled"), readDeprecatedGraphSplitting),
    row<ContextWalk, StringTo<&Context::concurrentDeserializationPatch>>(
        word("concurrent_deserialization_patch"), "Key: Concurrent Deserialization Patch, Value: %s"),
});

// A key that no row knows is ignored without a line.
bool ContextWalk::handle(const FlatKey& key) {
    const ChainRow<ContextWalk>* hit = firstHit(CONTEXT_ROWS, key);
    return hit == nullptr || hit->apply(*this, key, hit->line);
}

}  // namespace

bool parseContexts(const ConfigDocument& document, const FlatKeyList& keys, std::vector<KORContextConfig>& contexts) {
    ContextWalk walk{SectionRecords<KORContextConfig>(contexts), document.size()};
    return walkSection(keys, walk);
}

}  // namespace zant::kor
