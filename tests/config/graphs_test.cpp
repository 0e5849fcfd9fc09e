#include <gmock/gmock.h>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using G = kor::KORGraphConfig;
using testing::ElementsAre;

template <auto Field>
double of(const G& graph) {
    return fieldOf<Field>(graph);
}

const OptionRow<G> GRAPH_OPTIONS[] = {
    {"num_cores", "2", "Key : @, Value: %d", of<&G::numCores>},
    {"O", "3", "Key : @, Value: %d", of<&G::optimizationLevel>},
    {"assume_same_quant", "true", "Key: @, Value: %d", of<&G::assumeSameQuant>},
    {"share_io_buffer", "true", "Key: @, Value: %d", of<&G::shareIoBuffer>},
    {"advanced_activation_fusion", "false", "Key: @, Value: %d", of<&G::advancedActivationFusion>},
    {"high_precision_sigmoid", "true", "Key: @, Value: %d", of<&G::highPrecisionSigmoid>},
    {"fp16_clamp_overflow", "true", "Key: @, Value: %d", of<&G::fp16ClampOverflow>},
    {"monolithic_lstm", "true", "Key: @, Value: %d", of<&G::monolithicLstm>},
    {"precision_compensation", "true", "Key: @, Value: %d", of<&G::precisionCompensation>},
    {"enable_predication", "true", "Key: @, Value: %d", of<&G::enablePredication>},
    {"short_depth_conv_on_dru_off", "true", "Key: @, Value: %d", of<&G::shortDepthConvOnDruOff>},
    {"fold_relu_activation_into_conv_off", "true", "Key: @, Value: %d", of<&G::foldReluActivationIntoConvOff>},
    {"dlbc_weights", "1", "Key: @, Value: %d", of<&G::dlbcWeights>},
    {"dlbc", "1", "Key: @, Value: %d", of<&G::dlbc>},
    {"spad_retention", "1", "Key: @, Value: %d", of<&G::spadRetention>},
    {"cached_weights", "1", "Key: @, Value: %d", of<&G::cachedWeights>},
    {"sparse_weights_compression", "1", "Key: @, Value: %d", of<&G::sparseWeightsCompression>},
    {"fp16_relaxed_precision", "1", "Key: @, Value: %d", of<&G::fp16RelaxedPrecision>},
    {"slu_threads", "4", "Enable slu threads : %d", of<&G::sluThreads>},
    {"weights_packing", "true", "Key: @, Value: %d", of<&G::weightsPacking>},
    {"slc_alloc_enable", "1", "Key: @, Value: %d", of<&G::slcAllocEnable>},
    // A capital O anywhere counts, unless an earlier word of the chain is there.
    {"x_O_assume_same_quant", "7", "Key : O, Value: %d", of<&G::optimizationLevel>},
    {"num_cores_O", "7", "Key : num_cores, Value: %d", of<&G::numCores>},
};

std::string item(const std::string& members) {
    return "{\"graphs\":[{" + members + "}]}";
}

TEST(Graphs, EachOptionFillsItsField) {
    const auto first = [](const LoadedConfig& loaded) { return loaded.graphs.at(0); };
    checkOptions(GRAPH_OPTIONS, R"({"graphs":[{)", "}]}", first);
}

TEST(Graphs, NamesListsAndBounding) {
    const LoadedConfig loaded = loadDocument(
        item(R"("graph_names":["a b","O"],"dynamic_partitioning":[3,1],"dru_op_bounding":{"dru_frequency":1.5,)"
             R"("dsp_core_frequency":2,"dru_x":true},"dlbc_weights":1.0)"),
        ZANT_LOG_LEVEL_INFO);
    EXPECT_TRUE(loaded.result);
    const G& graph = loaded.graphs.at(0);
    EXPECT_THAT(graph.graphNames, ElementsAre("a b", "O"));
    EXPECT_THAT(graph.dynamicPartitioning, ElementsAre(3U, 1U));
    EXPECT_EQ(graph.druFrequency, 1.5F);
    EXPECT_EQ(graph.dspCoreFrequency, 2.0F);
    EXPECT_EQ(graph.dlbc, 0xFFFFFFFFU);
    EXPECT_THAT(
        loaded.texts,
        ElementsAre("3 Key :graph_names, Value: a b", "3 Key :graph_names, Value: O", "3 Key: dynamic_partitioning 3",
                    "3 Key: dynamic_partitioning 1", "3 DRU Op Bounding: dru_frequency: 1.500000",
                    "3 DRU Op Bounding: dsp_core_frequency: 2.000000",
                    "1 Unknown DRU Op Bounding key: graphs/0/dru_op_bounding/dru_x", "3 Key: dlbc_weights, Value: 1"));
}

TEST(Graphs, SpadSizeWinsOverSpadMb) {
    struct Case {
        const char* members;
        uint32_t size;
        bool inBytes;
        std::vector<std::string> texts;
    };
    const std::string overflow = "1 spad_mb: 4096; Value, in MiB, would cause overflow once converted to bytes";
    const std::string ignored = "2 Ignoring 'spad_mb', since 'spad_size' overrides and has been processed";
    const std::string size = "3 Key: graphs/0/spad_size, Value: 1000, 1000 in bytes";
    const std::string mb = "3 Key: graphs/0/spad_mb, Value: ";
    const Case cases[] = {
        {R"("spad_mb":4095)", 4293918720U, false, {mb + "4095, -1048576 in bytes"}},
        {R"("spad_mb":4096)", 0xFFFFFFFFU, false, {overflow}},
        {R"("spad_mb":64,"spad_size":1000)", 1000, true, {mb + "64, 67108864 in bytes", size}},
        {R"("spad_size":1000,"spad_mb":64)", 1000, true, {size, ignored}},
        {R"("spad_size":1000,"spad_mb":4096)", 1000, true, {size, overflow}},
    };
    for (const Case& row : cases) {
        const LoadedConfig loaded = loadDocument(item(row.members), ZANT_LOG_LEVEL_INFO);
        EXPECT_TRUE(loaded.result) << row.members;
        EXPECT_EQ(loaded.graphs.at(0).spadSize, row.size) << row.members;
        EXPECT_EQ(loaded.graphs.at(0).spadSizeInBytes, row.inBytes) << row.members;
        EXPECT_EQ(loaded.texts, row.texts);
    }
}

TEST(Graphs, FinalizeConfigIsTakenWholeAndOnce) {
    const std::string text = R"({"a":1.0,"b":{"context":{"0":1},"c":null},"d/e":"x"})";
    const LoadedConfig loaded =
        loadDocument(item(R"("x":{"finalize_config":"y"},"finalize_config":)" + text), ZANT_LOG_LEVEL_INFO);
    EXPECT_TRUE(loaded.result);
    EXPECT_THAT(loaded.texts, ElementsAre("3 Finalize config: " + text));
    EXPECT_EQ(loaded.graphs.at(0).finalizeConfig, text);
    EXPECT_EQ(loaded.contexts.size(), 1U) << "a member of it counts for the other sections too";
    EXPECT_EQ(loadDocument(item(R"("O":1,"finalize_config":{"a":null,"b":{}})")).graphs.at(0).finalizeConfig, "");
}

TEST(Graphs, Complaints) {
    checkComplaints({
        {item(R"("x/y":1,"O":3.0)"), true, {"1 Unknown Key: graphs/0/x/y provided in KOR extensions config"}},
        {item(R"("O":-1,"x":1)"),
         false,
         {"1 Exception occurred: Value of key (graphs/0/O) is not convertible to uint32_t"}},
        {item(R"("num_cores/y":1)"), false, {"1 Exception occurred: Invalid key: graphs/0/num_cores/y"}},
        {R"({"x":{"graphs":{"finalize_config":1}}})",
         false,
         {"1 Exception occurred: Invalid key: graphs/0/finalize_config"}},
        {R"({"graphs":[{"finalize_config":{}}],"x":{"graphs/finalize_config":1}})",
         false,
         {"1 Exception occurred: Value of key (graphs/0/finalize_config) is an empty object"}},
    });
}

}  // namespace
}  // namespace zant::test
