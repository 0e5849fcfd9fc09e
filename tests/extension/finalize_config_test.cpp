// finalize_config: one record for each leaf of an object that the library does not know.
#include <tuple>

#include "support/graph_records.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using Texts = std::vector<std::string>;

// "name code value", the value as its text or as its eight bytes.
std::string describe(const KORGraphCustomConfig& record) {
    const KORGraphCustomConfig::Finalize& finalize = record.values.finalize;
    EXPECT_EQ(record.option, KOR_GRAPH_OPTION_FINALIZE);
    const bool isText = finalize.dataType == KOR_FINALIZE_DATA_TYPE_TEXT;
    char code[16];
    char value[32];
    std::snprintf(code, sizeof(code), " %x ", finalize.dataType);
    std::snprintf(value, sizeof(value), "%llx", static_cast<unsigned long long>(finalize.value.uint64));
    return finalize.name + std::string(code) + (isText ? finalize.value.text : value);
}

// The object, its records, and the lines of level 1, any of which makes the result false.
const std::tuple<const char*, Texts, Texts> ROWS[] = {
    {R"({"x":true,"y":false})", {"x 508 1", "y 508 0"}, {}},
    {R"({"x":4294967295,"y":-2147483649})", {"x 132 ffffffff", "y 64 ffffffff7fffffff"}, {}},
    {R"({"x":18446744073709551615,"y":-0.0,"z":1e300})",
     {"x 164 ffffffffffffffff", "y 232 80000000", "z 232 7f800000"},
     {}},
    {R"({"a":[1,{"b":"y\u0000z"}],"n":null,"%s%n":{"":2}})", {"a/0 32 1", "a/1/b 608 y", "%s%n/ 32 2"}, {}},
    {R"({"a/b":1,"c":-3})", {"a/b 0 0", "c 32 fffffffd"}, {"1 Invalid key: a/b", "1 Invalid value type: 0"}},
    {R"({"a/b":1,"a":{"b":{"c":2}}})", {"a/b 0 0", "a/b/c 32 2"}, {"1 Invalid value type: 4"}},
    {R"({"":1})", {" 0 0"}, {"1 Empty key provided.", "1 Invalid key: ", "1 Invalid value type: 0"}},
};

// The second entry has a record behind the leaves: a leaf that fails does not end the list.
TEST(FinalizeConfig, EachLeafMakesARecord) {
    for (const auto& [config, expected, lines] : ROWS) {
        SCOPED_TRACE(config);
        kor::KORBackend backend;
        const std::string document = R"({"graphs":[{"graph_names":["f"],"finalize_config":{"first":1}},)"
                                     R"({"graph_names":["g"],"weights_packing":true,"finalize_config":)";
        ASSERT_TRUE(backend.loadConfig(document + config + "}]}"));
        LogCapture log(ZANT_LOG_LEVEL_ERROR);
        GraphConfigInfo_t** infos = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(backend.beforeGraphsCompose(&infos, &count), lines.empty());
        EXPECT_EQ(log.takeTexts(), lines);
        ASSERT_EQ(count, 2U);
        EXPECT_EQ(describe(recordsOf(infos[0]->configs).at(0)), "first 32 1");
        std::vector<KORGraphCustomConfig> records = recordsOf(infos[1]->configs);
        EXPECT_EQ(records.back().option, KOR_GRAPH_OPTION_WEIGHTS_PACKING);
        records.pop_back();
        Texts texts;
        for (const KORGraphCustomConfig& record : records) texts.push_back(describe(record));
        EXPECT_EQ(texts, expected);
    }
}

}  // namespace
}  // namespace zant::test
