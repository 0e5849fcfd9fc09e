// From the document's graphs to the lists that the host composes with.
#include <optional>
#include <sstream>
#include <tuple>

#include "support/graph_records.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using Texts = std::vector<std::string>;

// Members with the words of the one record that each makes.
const char* const MEMBERS =
    R"("fp16_relaxed_precision":7=2 0 1|;"O":3=1 0 3 40400000|;"spad_size":2097153=a 0 200001|;)"
    R"("spad_mb":2=3 0 2|;"dru_op_bounding":{"dru_frequency":1.5,"dsp_core_frequency":2}=b 0 3fc00000 40000000|;)"
    R"("dru_op_bounding":{"dru_frequency":1.5,"dsp_core_frequency":0}=;"dlbc_weights":1=;)"
    R"("slu_threads":4294967295=6 0 ffffffff|;"advanced_activation_fusion":false=f|;"weights_packing":true=c 0 1|;)"
    R"("slc_alloc_enable":4294967294=1 0 7 4f800000|;"spad_retention":0=;"num_cores":3=8 0 3|;"dlbc":0=1 0 4|;)"
    R"("cached_weights":1=1 0 9 3f800000|;)";

const std::string ALL_MEMBERS =
    R"("weights_packing":true,"slc_alloc_enable":1,"short_depth_conv_on_dru_off":true,"monolithic_lstm":true,)"
    R"("fold_relu_activation_into_conv_off":true,"enable_predication":true,"fp16_clamp_overflow":true,"O":2,)"
    R"("precision_compensation":true,"high_precision_sigmoid":true,"advanced_activation_fusion":false,)"
    R"("share_io_buffer":true,"assume_same_quant":true,"finalize_config":{"x":"text","y":1},"slu_threads":1,)"
    R"("cached_weights":1,"dlbc":1,"dynamic_partitioning":[5,6,7],"spad_retention":1,"spad_mb":8,"num_cores":1,)"
    R"("dru_op_bounding":{"dru_frequency":1,"dsp_core_frequency":1},"fp16_relaxed_precision":1)";

class GraphHooks : public testing::Test {
protected:
    bool compose(const std::string& document) {
        m_backend.emplace();
        EXPECT_TRUE(m_backend->loadConfig(document));
        m_log.take();
        return m_backend->beforeGraphsCompose(&m_infos, &m_count);
    }
    auto records(uint32_t info) const { return recordsOf(info < m_count ? m_infos[info]->configs : nullptr); }

    LogCapture m_log{ZANT_LOG_LEVEL_WARN};
    std::optional<kor::KORBackend> m_backend;
    GraphConfigInfo_t** m_infos = nullptr;
    uint32_t m_count = 77;
};

TEST_F(GraphHooks, EachSettingMakesItsRecord) {
    std::istringstream rows(MEMBERS);
    for (std::string member, words; std::getline(rows, member, '=') && std::getline(rows, words, ';');) {
        EXPECT_TRUE(compose(graphDocument(member))) << member;
        ASSERT_EQ(m_count, 1U);
        EXPECT_EQ(wordsOf(records(0)), words) << member;
        EXPECT_EQ(m_infos[0]->configs == nullptr, words.empty());
    }
}

TEST_F(GraphHooks, AListHasItsOrderAndServesEachOfItsNames) {
    EXPECT_TRUE(compose(R"({"graphs":[{"graph_names":["a b","2c"],)" + ALL_MEMBERS +
                        R"(},{"graph_names":["a b"],"dynamic_partitioning":[9]}]})"));
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(m_count, 3U);
        std::vector<uint32_t> options;
        for (const KORGraphCustomConfig& record : records(0)) options.push_back(record.option);
        ASSERT_EQ(options, (std::vector<uint32_t>{2,  8,  1,  3,  11, 21, 1,  1, 6, 7,  7, 13,
                                                  14, 15, 16, 17, 18, 19, 20, 5, 4, 12, 1}));
        const KORGraphCustomConfig::Setting partitions = records(0)[5].values.setting;
        EXPECT_THAT(std::vector(partitions.array, partitions.array + partitions.first.number), ElementsAre(5, 6, 7));
        EXPECT_EQ(*records(2).at(0).values.setting.array, 9U);
        EXPECT_STREQ(m_infos[0]->graphName, "a_b");
        EXPECT_STREQ(m_infos[1]->graphName, "_2c");
        EXPECT_EQ(m_infos[0]->configs, m_infos[1]->configs);
        EXPECT_TRUE(m_backend->afterGraphsCompose());
        EXPECT_TRUE(m_backend->beforeGraphsCompose(&m_infos, &m_count));
    }
}

TEST_F(GraphHooks, WhatIsToldAndWhatFails) {
    const std::string unnamed = "1 Valid 'graph_names' must be specified to configure graph settings.";
    const std::string old = "2 precision_compensation requires min_arch >= 81; current arch may not support it.";
    const std::string graphs = graphDocument(R"("precision_compensation":true)").substr(1);
    const std::tuple<std::string, bool, uint32_t, Texts> rows[] = {
        {R"({"graphs":[{"graph_names":["a","b"],"perf_profile":"burst"}]})", true, 0, {}},
        {R"({"graphs":[{"perf_profile":"burst"}]})", false, 0, {unnamed}},
        {R"({"graphs":[{"num_cores":1},{"graph_names":["b"],"num_cores":1}]})", false, 2, {unnamed}},
        {graphDocument(R"("dlbc_weights":1)"), true, 1, {"1 dlbc weights unsupported"}},
        {R"({"devices":[{"dsp_arch":"v73"}],)" + graphs, true, 1, {old}},
        {R"({"devices":[{"dsp_arch":"v81"},{"dsp_arch":"v73"}],)" + graphs, true, 1, {}},
    };
    for (const auto& [document, result, count, lines] : rows) {
        m_count = 77;
        EXPECT_EQ(compose(document), result) << document;
        EXPECT_EQ(m_count, count) << document;
        EXPECT_EQ(m_log.takeTexts(), lines);
        EXPECT_TRUE(count != 2 || std::string(m_infos[0]->graphName).empty());
    }
}

// The value as its text or as its eight bytes: "name code value".
std::string describe(const KORGraphCustomConfig& record) {
    const KORGraphCustomConfig::Finalize& finalize = record.values.finalize;
    EXPECT_EQ(record.option, KOR_GRAPH_OPTION_FINALIZE);
    std::ostringstream text;
    text << finalize.name << " " << std::hex << finalize.dataType << " ";
    if (finalize.dataType == KOR_FINALIZE_DATA_TYPE_TEXT) return text.str() + finalize.value.text;
    text << finalize.value.uint64;
    return text.str();
}

// One record for each leaf of an object that the library does not know. A leaf that fails does not end the list, and
// makes the result false by its lines.
TEST_F(GraphHooks, EachLeafOfFinalizeConfigMakesARecord) {
    const std::tuple<const char*, Texts, Texts> rows[] = {
        {R"({"x":true,"y":false})", {"x 508 1", "y 508 0"}, {}},
        {R"({"x":4294967295,"y":-2147483649})", {"x 132 ffffffff", "y 64 ffffffff7fffffff"}, {}},
        {R"({"x":18446744073709551615,"y":-0.0,"z":1e300})",
         {"x 164 ffffffffffffffff", "y 232 80000000", "z 232 7f800000"},
         {}},
        // On both sides of half a step above the greatest float.
        {R"({"x":3.4028235677973362e38,"y":-3.4028235677973366e38})", {"x 232 7f7fffff", "y 232 ff800000"}, {}},
        {R"({"a":[1,{"b":"y\u0000z"}],"n":null,"%s%n":{"":2}})", {"a/0 32 1", "a/1/b 608 y", "%s%n/ 32 2"}, {}},
        {R"({"a/b":1,"c":-3})", {"a/b 0 0", "c 32 fffffffd"}, {"1 Invalid key: a/b", "1 Invalid value type: 0"}},
        {R"({"a/b":1,"a":{"b":{"c":2}}})", {"a/b 0 0", "a/b/c 32 2"}, {"1 Invalid value type: 4"}},
        {R"({"":1})", {" 0 0"}, {"1 Empty key provided.", "1 Invalid key: ", "1 Invalid value type: 0"}},
    };
    for (const auto& [config, expected, lines] : rows) {
        const std::string members = R"("weights_packing":true,"finalize_config":)";
        EXPECT_EQ(compose(graphDocument(members + config)), lines.empty());
        EXPECT_EQ(m_log.takeTexts(), lines);
        const std::vector<KORGraphCustomConfig> leaves = records(0);
        ASSERT_EQ(leaves.size(), expected.size() + 1) << config;
        EXPECT_EQ(leaves.back().option, KOR_GRAPH_OPTION_WEIGHTS_PACKING);
        for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(describe(leaves[i]), expected[i]);
    }
}

}  // namespace
}  // namespace zant::test
