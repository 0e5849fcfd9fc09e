// Around the composition and the finalisation of graphs: each entry of the document's graphs becomes one list of
// records, handed out under each of its names.
#include <algorithm>
#include <iterator>

#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t MIN_ARCH_OF_PRECISION_COMPENSATION = 81;
constexpr uint32_t BYTES_PER_MB_SHIFT = 20;
constexpr const char* WRAPPER_FAILED = "graphConfig alloc failed - %s";
constexpr const char* INFO_FAILED = "GraphConfigInfo_t alloc failed - %s";

using Graph = KORGraphConfig;
using Record = KORGraphCustomConfig;

// What a record is filled from.
struct GraphBuild {
    const Graph& graph;
    uint32_t dspArch;  // the first device's, 0 when it has none
    std::vector<std::vector<uint32_t>>& partitions;
};

// One row for each option, in the order in which the records stand in a list. message: the line of a shortage of
// memory; in a row without fill the line of a setting that nothing supports.
struct GraphOptionRow {
    bool (*isWanted)(const Graph& graph);
    KORGraphOption option;
    void (*fill)(const GraphBuild& build, Record& record);
    const char* message;
    bool Graph::*applied = nullptr;  // set once the backend is given the value
};

template <auto Field>
bool isSet(const Graph& graph) {
    return graph.*Field != NOT_SET;
}

template <auto Field>
bool isNotZero(const Graph& graph) {
    return graph.*Field != 0;
}

template <auto Field>
bool isNotEmpty(const Graph& graph) {
    return !(graph.*Field).empty();
}

template <bool Graph::*Field>
bool isTrue(const Graph& graph) {
    return graph.*Field;
}

bool boundsDru(const Graph& graph) {
    return graph.druFrequency != 0 && graph.dspCoreFrequency != 0;
}

bool hasSpadBytes(const Graph& graph) {
    return graph.spadSize != NOT_SET && graph.spadSizeInBytes;
}

bool hasSpadMb(const Graph& graph) {
    return graph.spadSize != NOT_SET && !graph.spadSizeInBytes;
}

bool refusesActivationFusion(const Graph& graph) {
    return !graph.advancedActivationFusion;
}

template <uint8_t Value>
void fillFlag(const GraphBuild&, Record& record) {
    record.values.setting.first.flag = Value;
}

template <uint32_t Value>
void fillConstant(const GraphBuild&, Record& record) {
    record.values.setting.first.number = Value;
}

template <auto Field>
void fillNumber(const GraphBuild& build, Record& record) {
    record.values.setting.first.number = build.graph.*Field;
}

template <KORGraphTuning Tuning, auto Field>
void fillTuning(const GraphBuild& build, Record& record) {
    record.values.setting.first.number = Tuning;
    record.values.setting.second = static_cast<float>(build.graph.*Field);
}

void fillSpadMb(const GraphBuild& build, Record& record) {
    record.values.setting.first.number = build.graph.spadSize >> BYTES_PER_MB_SHIFT;
}

void fillDruOpBounding(const GraphBuild& build, Record& record) {
    record.values.setting.first.real = build.graph.druFrequency;
    record.values.setting.second = build.graph.dspCoreFrequency;
}

// The array stays where it is when the sequence of arrays grows.
void fillDynamicPartitioning(const GraphBuild& build, Record& record) {
    const std::vector<uint32_t>& array = build.partitions.emplace_back(build.graph.dynamicPartitioning);
    record.values.setting.first.number = static_cast<uint32_t>(array.size());
    record.values.setting.array = array.data();
}

void fillSluThreads(const GraphBuild& build, Record& record) {
    record.values.number64 = build.graph.sluThreads;
}

void fillPrecisionCompensation(const GraphBuild& build, Record& record) {
    if (build.dspArch != 0 && build.dspArch < MIN_ARCH_OF_PRECISION_COMPENSATION) {
        ZANT_LOG_WARN("precision_compensation requires min_arch >= 81; current arch may not support it.");
    }
    record.values.setting.first.flag = 1;
}

template <auto Field, KORGraphTuning Tuning>
consteval GraphOptionRow tuning(const char* message) {
    return {isSet<Field>, KOR_GRAPH_OPTION_TUNING, fillTuning<Tuning, Field>, message};
}

template <bool Graph::*Field>
consteval GraphOptionRow flag(KORGraphOption option, const char* message, bool Graph::*applied = nullptr) {
    return {isTrue<Field>, option, fillFlag<1>, message, applied};
}

template <auto Field>
consteval GraphOptionRow unsupported(const char* message) {
    return {isSet<Field>, KOR_GRAPH_OPTION_TUNING, nullptr, message};
}

constexpr GraphOptionRow GRAPH_OPTIONS[] = {
    {isNotZero<&Graph::fp16RelaxedPrecision>, KOR_GRAPH_OPTION_FP16_RELAXED_PRECISION, fillConstant<1>,
     "fp16CustomConfig alloc failed - %s"},
    {isSet<&Graph::numCores>, KOR_GRAPH_OPTION_NUM_CORES, fillNumber<&Graph::numCores>,
     "numCoreCustomConfig alloc failed - %s"},
    tuning<&Graph::optimizationLevel, KOR_GRAPH_TUNING_OPTIMIZATION_LEVEL>("optimizeCustomConfig alloc failed- %s"),
    {hasSpadBytes, KOR_GRAPH_OPTION_SPAD_SIZE_BYTES, fillNumber<&Graph::spadSize>, "spadCustomConfig alloc failed- %s"},
    {hasSpadMb, KOR_GRAPH_OPTION_SPAD_SIZE_MB, fillSpadMb, "spadCustomConfig alloc failed- %s"},
    {boundsDru, KOR_GRAPH_OPTION_DRU_OP_BOUNDING, fillDruOpBounding, "Failed to set DRU Op Bounding config - %s"},
    {isNotEmpty<&Graph::dynamicPartitioning>, KOR_GRAPH_OPTION_DYNAMIC_PARTITIONING, fillDynamicPartitioning,
     "dynamicPartitionCustomConfig alloc failed- %s"},
    tuning<&Graph::dlbc, KOR_GRAPH_TUNING_DLBC>("dlbcCustomConfig alloc failed- %s"),
    unsupported<&Graph::dlbcWeights>("dlbc weights unsupported"),
    tuning<&Graph::cachedWeights, KOR_GRAPH_TUNING_CACHED_WEIGHTS>("cachedWeightsCustomConfig alloc failed- %s"),
    unsupported<&Graph::sparseWeightsCompression>("Sparse Weights Compression unsupported"),
    {isNotZero<&Graph::sluThreads>, KOR_GRAPH_OPTION_SLU_THREADS, fillSluThreads, "sluThreadConfig alloc failed: %s",
     &Graph::sluThreadsApplied},
    // As many records as the object has leaves, with lines of their own.
    {isNotEmpty<&Graph::finalizeConfig>, KOR_GRAPH_OPTION_FINALIZE, nullptr, nullptr},
    flag<&Graph::assumeSameQuant>(KOR_GRAPH_OPTION_ASSUME_SAME_QUANT,
                                  "Assume Same Quant custom config alloc failed - %s"),
    flag<&Graph::shareIoBuffer>(KOR_GRAPH_OPTION_SHARE_IO_BUFFER, "Assume io share config alloc failed - %s"),
    {refusesActivationFusion, KOR_GRAPH_OPTION_ADVANCED_ACTIVATION_FUSION, fillFlag<0>,
     "Assume advanced activation fusion config alloc failed - %s"},
    flag<&Graph::highPrecisionSigmoid>(KOR_GRAPH_OPTION_HIGH_PRECISION_SIGMOID,
                                       "Assume high precision sigmoid config alloc failed - %s"),
    flag<&Graph::monolithicLstm>(KOR_GRAPH_OPTION_MONOLITHIC_LSTM, "Monolithic lstm config alloc failed - %s"),
    {isTrue<&Graph::precisionCompensation>, KOR_GRAPH_OPTION_PRECISION_COMPENSATION, fillPrecisionCompensation,
     "Precision compensation config alloc failed - %s"},
    flag<&Graph::enablePredication>(KOR_GRAPH_OPTION_ENABLE_PREDICATION, "Enable predication config alloc failed - %s"),
    flag<&Graph::fp16ClampOverflow>(KOR_GRAPH_OPTION_FP16_CLAMP_OVERFLOW,
                                    "fp16 saturate to max config alloc failed - %s", &Graph::fp16ClampOverflowApplied),
    flag<&Graph::shortDepthConvOnDruOff>(KOR_GRAPH_OPTION_SHORT_DEPTH_CONV_ON_DRU_OFF,
                                         "short depth conv custom config alloc failed - %s"),
    flag<&Graph::foldReluActivationIntoConvOff>(KOR_GRAPH_OPTION_FOLD_RELU_ACTIVATION_INTO_CONV_OFF,
                                                "fold relu activation custom config alloc failed - %s"),
    flag<&Graph::weightsPacking>(KOR_GRAPH_OPTION_WEIGHTS_PACKING, "weightsPackingCustomConfig alloc failed- %s"),
    tuning<&Graph::slcAllocEnable, KOR_GRAPH_TUNING_SLC_ALLOC>("slcAllocCustomConfig alloc failed- %s"),
};

// One frequency alone is a setting too, though no record comes of it.
constexpr bool (*COMPOSE_SETTINGS[])(const Graph&) = {
    isNotZero<&Graph::fp16RelaxedPrecision>,
    isSet<&Graph::optimizationLevel>,
    isSet<&Graph::spadSize>,
    isSet<&Graph::numCores>,
    isSet<&Graph::dlbc>,
    isSet<&Graph::dlbcWeights>,
    isSet<&Graph::cachedWeights>,
    isSet<&Graph::sparseWeightsCompression>,
    isSet<&Graph::slcAllocEnable>,
    isNotEmpty<&Graph::finalizeConfig>,
    isNotEmpty<&Graph::dynamicPartitioning>,
    isNotZero<&Graph::druFrequency>,
    isNotZero<&Graph::dspCoreFrequency>,
    isTrue<&Graph::weightsPacking>,
    isTrue<&Graph::assumeSameQuant>,
    isTrue<&Graph::shareIoBuffer>,
    isTrue<&Graph::highPrecisionSigmoid>,
    isTrue<&Graph::monolithicLstm>,
    isTrue<&Graph::precisionCompensation>,
    isTrue<&Graph::enablePredication>,
    isTrue<&Graph::shortDepthConvOnDruOff>,
    isTrue<&Graph::foldReluActivationIntoConvOff>,
    refusesActivationFusion,
};

constexpr bool (*LATE_SETTINGS[])(const Graph&) = {isNotZero<&Graph::sluThreads>, isSet<&Graph::spadRetention>,
                                                   isTrue<&Graph::fp16ClampOverflow>};

template <size_t N>
bool holdsAny(bool (*const (&settings)[N])(const Graph&), const Graph& graph) {
    return std::any_of(std::begin(settings), std::end(settings), [&](auto* holds) { return holds(graph); });
}

}  // namespace

bool KORBackend::hasComposeSetting(const KORGraphConfig& graph) {
    return holdsAny(COMPOSE_SETTINGS, graph);
}

bool KORBackend::hasSetting(const KORGraphConfig& graph) {
    return hasComposeSetting(graph) || holdsAny(LATE_SETTINGS, graph);
}

bool KORBackend::addGraphRecord(GraphRecord record) {
    return appendRecord(m_graphCustomConfigs, m_graphConfigLists.back(), std::move(record), WRAPPER_FAILED);
}

bool KORBackend::emitGraphRecords(size_t graphIndex) {
    KORGraphConfig& graph = m_graphConfigs[graphIndex];
    const uint32_t dspArch = m_deviceConfigs.empty() ? 0 : m_deviceConfigs.front().dspArch;
    const GraphBuild build{graph, dspArch, m_dynamicPartitions};
    bool result = true;
    for (const GraphOptionRow& row : GRAPH_OPTIONS) {
        if (!row.isWanted(graph)) continue;
        if (row.option == KOR_GRAPH_OPTION_FINALIZE) {
            result = buildFinalizeConfigRecords(graphIndex) && result;
        } else if (row.fill == nullptr) {
            logText(ZANT_LOG_LEVEL_ERROR, row.message);
        } else {
            const bool added = tellingShortage(row.message, [&] {
                KORGraphCustomConfig record{};
                record.option = row.option;
                row.fill(build, record);
                return addGraphRecord(makeGraphRecord(record));
            });
            if (added && row.applied != nullptr) graph.*row.applied = true;
            result = result && added;
        }
    }
    return result;
}

bool KORBackend::appendGraphInfos(KORGraphConfig& graph) {
    bool result = true;
    if (graph.graphNames.empty()) {
        result = tellingShortage(INFO_FAILED, [&] {
            graph.graphNames.emplace_back();
            return true;
        });
    }
    for (const std::string& name : graph.graphNames) {
        const bool added = tellingShortage(INFO_FAILED, [&] {
            m_graphConfigInfos.append({name.c_str(), m_graphConfigLists.back().data()});
            return true;
        });
        result = result && added;
    }
    return result;
}

bool KORBackend::composeGraph(size_t graphIndex) {
    KORGraphConfig& graph = m_graphConfigs[graphIndex];
    const bool isNamed = !graph.graphNames.empty();
    if (!isNamed) ZANT_LOG_ERROR("Valid 'graph_names' must be specified to configure graph settings.");
    if (!hasSetting(graph)) {
        ZANT_LOG_VERBOSE("No graph settings to configure for graph %s", isNamed ? graph.graphNames.back().c_str() : "");
        return isNamed;
    }
    const bool hasList = tellingShortage(WRAPPER_FAILED, [&] {
        m_graphConfigLists.emplace_back();
        return true;
    });
    if (!hasList) return false;
    const bool emitted = emitGraphRecords(graphIndex);
    return appendGraphInfos(graph) && emitted && isNamed;
}

bool KORBackend::beforeGraphsCompose(GraphConfigInfo_t*** list, uint32_t* count) {
    return guarded("beforeGraphsCompose", false, [&] {
        if (!hasOutPointers("beforeGraphsCompose", list, count)) return false;
        if (m_graphConfigs.empty()) return true;
        bool result = true;
        for (size_t i = 0; i < m_graphConfigs.size(); ++i) result = composeGraph(i) && result;
        *list = m_graphConfigInfos.data();
        *count = m_graphConfigInfos.size();
        return result;
    });
}

bool KORBackend::afterGraphsCompose() {
    m_graphCustomConfigs.clear();
    m_dynamicPartitions.clear();
    m_graphConfigLists.clear();
    m_graphConfigInfos.clear();
    return true;
}

bool KORBackend::beforeGraphFinalize() {
    return guarded("beforeGraphFinalize", false, [&] {
        return voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before graph finalize",
                         "PerfDriver setState GRAPH_INIT_START failed before graph finalize.");
    });
}

bool KORBackend::afterGraphFinalize() {
    return guarded("afterGraphFinalize", false, [&] {
        return voteEvent(GRAPH_INIT_DONE, false, "PerfDriver not available after graph finalize",
                         "PerfDriver setState GRAPH_INIT_DONE failed after graph finalize.");
    });
}

}  // namespace zant::kor
