#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>

#include "config/config_parser.h"
#include "config/option_tables.h"
#include "config/section_walk.h"

namespace zant::kor {

namespace {

constexpr uint32_t SPAD_MB_LIMIT = 4096;  // MiB that no longer fit 32 bits of bytes
constexpr uint32_t SPAD_MB_SETTER_MAX = 2047;

struct GraphWalk {
    static constexpr KeySection section = KeySection::graphs;
    static constexpr KeyElement element = KeyElement::graphs;

    SectionRecords<KORGraphConfig> records;
    const JsonValue* items;  // the document's "graphs", null for none

    KORGraphConfig& inForce() const { return records.inForce(); }
    bool handle(const FlatKey& key);
};

bool readGraphName(GraphWalk& walk, const FlatKey& key, const char*) {
    std::string name = getString(key);
    const std::string& stored = walk.inForce().graphNames.emplace_back(std::move(name));
    ZANT_LOG_INFO("Key :graph_names, Value: %s", stored.c_str());
    return true;
}

std::string compactText(const JsonValue& value) {
    using Buffer = rapidjson::GenericStringBuffer<JsonEncoding, ThrowingAllocator>;
    Buffer text;
    rapidjson::Writer<Buffer, JsonEncoding, JsonEncoding, ThrowingAllocator> writer(text);
    value.Accept(writer);
    return {text.GetString(), text.GetSize()};
}

// What the path of an item's finalize_config reaches, null for nothing. The items are looked up once: a root of many
// members is not gone through for each graph.
const JsonValue* findFinalizeConfig(const GraphWalk& walk) {
    const auto index = static_cast<rapidjson::SizeType>(walk.records.index());
    if (walk.items == nullptr || !walk.items->IsArray() || index >= walk.items->Size()) return nullptr;
    const JsonValue& item = (*walk.items)[index];
    if (!item.IsObject()) return nullptr;
    const auto member = item.FindMember("finalize_config");
    return member == item.MemberEnd() ? nullptr : &member->value;
}

// The whole object is taken on the first of its leaves.
bool readFinalizeConfig(GraphWalk& walk, const FlatKey&, const char*) {
    std::string& stored = walk.inForce().finalizeConfig;
    if (!stored.empty()) return true;
    const std::string path = "graphs/" + std::to_string(walk.records.index()) + "/finalize_config";
    const JsonValue* value = findFinalizeConfig(walk);
    if (value == nullptr) throw std::runtime_error("Invalid key: " + path);
    if (!value->IsObject()) throw std::runtime_error("Value of key (" + path + ") is not an object");
    if (value->ObjectEmpty()) throw std::runtime_error("Value of key (" + path + ") is an empty object");
    stored = compactText(*value);
    ZANT_LOG_INFO("Finalize config: %s", stored.c_str());
    return true;
}

// In one item spad_size wins over spad_mb, whatever their order.
void parseSpadSize(const FlatKey& key, bool& spadSizeInBytes, uint32_t& spadSize) {
    const uint32_t value = getUint32(key);
    if (!key.holds(word("spad_mb"))) {
        spadSize = value;
        spadSizeInBytes = true;
    } else if (value >= SPAD_MB_LIMIT) {
        ZANT_LOG_ERROR("spad_mb: %d; Value, in MiB, would cause overflow once converted to bytes",
                       static_cast<int>(value));
        return;
    } else if (spadSizeInBytes) {
        ZANT_LOG_WARN("Ignoring 'spad_mb', since 'spad_size' overrides and has been processed");
        return;
    } else {
        spadSize = value << 20U;
    }
    ZANT_LOG_INFO("Key: %s, Value: %d, %d in bytes", key.text().c_str(), static_cast<int>(value),
                  static_cast<int>(spadSize));
}

bool readSpadSize(GraphWalk& walk, const FlatKey& key, const char*) {
    KORGraphConfig& graph = walk.inForce();
    parseSpadSize(key, graph.spadSizeInBytes, graph.spadSize);
    return true;
}

bool readPerfProfile(GraphWalk& walk, const FlatKey& key, const char*) {
    uint32_t& profile = walk.inForce().perfProfile;
    parsePerfProfile(key, profile);
    ZANT_LOG_INFO("Key: perf_profile, Value: %d", static_cast<int>(profile));
    return true;
}

bool readDruOpBounding(GraphWalk& walk, const FlatKey& key, const char*) {
    KORGraphConfig& graph = walk.inForce();
    if (key.holds(word("dru_op_bounding/dru_frequency"))) {
        graph.druFrequency = getFloat(key);
        ZANT_LOG_INFO("DRU Op Bounding: dru_frequency: %f", static_cast<double>(graph.druFrequency));
    } else if (key.holds(word("dru_op_bounding/dsp_core_frequency"))) {
        graph.dspCoreFrequency = getFloat(key);
        ZANT_LOG_INFO("DRU Op Bounding: dsp_core_frequency: %f", static_cast<double>(graph.dspCoreFrequency));
    } else {
        ZANT_LOG_ERROR("Unknown DRU Op Bounding key: %s", key.text().c_str());
    }
    return true;
}

bool readDynamicPartitioning(GraphWalk& walk, const FlatKey& key, const char*) {
    const uint32_t value = getUint32(key);
    walk.inForce().dynamicPartitioning.push_back(value);
    ZANT_LOG_INFO("Key: dynamic_partitioning %d", static_cast<int>(value));
    return true;
}

using Graph = KORGraphConfig;

template <auto Field>
consteval ChainRow<GraphWalk> flag(KeyWord word, const char* line) {
    return row<GraphWalk, BoolTo<Field>>(word, line);
}

template <auto Field>
consteval ChainRow<GraphWalk> number(KeyWord word, const char* line) {
    return row<GraphWalk, Uint32To<Field>>(word, line);
}

constexpr auto GRAPH_ROWS = std::to_array<ChainRow<GraphWalk>>({
    row<GraphWalk>(word("graph_names"), readGraphName),
    row<GraphWalk>(word("finalize_config"), readFinalizeConfig),
    number<&Graph::numCores>(word("num_cores"), "Key : num_cores, Value: %d"),
    number<&Graph::optimizationLevel>(word("O"), "Key : O, Value: %d"),
    flag<&Graph::assumeSameQuant>(word("assume_same_quant"), "Key: assume_same_quant, Value: %d"),
    flag<&Graph::shareIoBuffer>(word("share_io_buffer"), "Key: share_io_buffer, Value: %d"),
    flag<&Graph::advancedActivationFusion>(word("advanced_activation_fusion"),
                                           "Key: advanced_activation_fusion, Value: %d"),
    flag<&Graph::highPrecisionSigmoid>(word("high_precision_sigmoid"), "Key: high_precision_sigmoid, Value: %d"),
    flag<&Graph::fp16ClampOverflow>(word("fp16_clamp_overflow"), "Key: fp16_clamp_overflow, Value: %d"),
    flag<&Graph::monolithicLstm>(word("monolithic_lstm"), "Key: monolithic_lstm, Value: %d"),
    flag<&Graph::precisionCompensation>(word("precision_compensation"), "Key: precision_compensation, Value: %d"),
    flag<&Graph::enablePredication>(word("enable_predication"), "Key: enable_predication, Value: %d"),
    flag<&Graph::shortDepthConvOnDruOff>(word("short_depth_conv_on_dru_off"),
                                         "Key: short_depth_conv_on_dru_off, Value: %d"),
    flag<&Graph::foldReluActivationIntoConvOff>(word("fold_relu_activation_into_conv_off"),
                                                "Key: fold_relu_activation_into_conv_off, Value: %d"),
    number<&Graph::dlbcWeights>(word("dlbc_weights"), "Key: dlbc_weights, Value: %d"),
    number<&Graph::dlbc>(word("dlbc"), "Key: dlbc, Value: %d"),
    number<&Graph::spadRetention>(word("spad_retention"), "Key: spad_retention, Value: %d"),
    number<&Graph::cachedWeights>(word("cached_weights"), "Key: cached_weights, Value: %d"),
    number<&Graph::sparseWeightsCompression>(word("sparse_weights_compression"),
                                             "Key: sparse_weights_compression, Value: %d"),
    number<&Graph::fp16RelaxedPrecision>(word("fp16_relaxed_precision"), "Key: fp16_relaxed_precision, Value: %d"),
    number<&Graph::sluThreads>(word("slu_threads"), "Enable slu threads : %d"),
    row<GraphWalk>(word("spad_mb"), readSpadSize),
    row<GraphWalk>(word("spad_size"), readSpadSize),
    row<GraphWalk>(word("perf_profile"), readPerfProfile),
    flag<&Graph::weightsPacking>(word("weights_packing"), "Key: weights_packing, Value: %d"),
    number<&Graph::slcAllocEnable>(word("slc_alloc_enable"), "Key: slc_alloc_enable, Value: %d"),
    row<GraphWalk>(word("dru_op_bounding"), readDruOpBounding),
    row<GraphWalk>(word("/dynamic_partitioning/"), readDynamicPartitioning),
});

// A key without a record ends the load, whatever it says.
bool GraphWalk::handle(const FlatKey& key) {
    (void)inForce();
    const ChainRow<GraphWalk>* hit = firstHit(GRAPH_ROWS, key);
    if (hit != nullptr) return hit->apply(*this, key, hit->line);
    ZANT_LOG_ERROR("Unknown Key: %s provided in KOR extensions config", key.text().c_str());
    return true;
}

}  // namespace

bool parseGraphs(const ConfigDocument& document, const FlatKeyList& keys, std::vector<KORGraphConfig>& graphs) {
    const JsonValue* items = findValue(document, "graphs");
    if (items != nullptr && items->IsArray()) {
        // Items without a key make no record.
        const size_t keyed = keys.positionsOf(KeySection::graphs).size();
        graphs.reserve(graphs.size() + std::min<size_t>(items->Size(), keyed));
    }
    GraphWalk walk{SectionRecords<KORGraphConfig>(graphs), items};
    return walkSection(keys, walk);
}

bool setSpadSize(uint32_t& spadSize, uint32_t megabytes) {
    if (megabytes > SPAD_MB_SETTER_MAX) {
        ZANT_LOG_ERROR("spad_mb: %d; Value, in MiB, would cause overflow once converted to bytes",
                       static_cast<int>(megabytes));
        return false;
    }
    spadSize = megabytes << 20U;
    ZANT_LOG_INFO("Setting spad size: %d MB, %d in bytes", static_cast<int>(megabytes), static_cast<int>(spadSize));
    return true;
}

bool setOptimizationLevel(uint32_t& optimizationLevel, uint32_t value) {
    optimizationLevel = value;
    ZANT_LOG_INFO("Setting optimization level: %d", static_cast<int>(value));
    return true;
}

bool setDlbc(uint32_t& dlbc, uint32_t value) {
    dlbc = value;
    ZANT_LOG_INFO("Setting DLBC enable: %d", static_cast<int>(value));
    return true;
}

bool setSluThreads(uint32_t& sluThreads, uint32_t value) {
    sluThreads = value;
    ZANT_LOG_INFO("Setting SLU threads: %d", static_cast<int>(value));
    return true;
}

bool setReferenceWeightSharing(bool& referenceWeightSharingEnabled, uint32_t value) {
    referenceWeightSharingEnabled = value != 0;
    ZANT_LOG_INFO("Setting reference weight sharing enabled: %d", static_cast<int>(referenceWeightSharingEnabled));
    return true;
}

}  // namespace zant::kor
