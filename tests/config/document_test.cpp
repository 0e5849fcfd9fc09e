// How a path or a text becomes a document, and what each way to fail says.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "support/loaded_config.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
namespace fs = std::filesystem;

const std::string PARSE_FAILED = "1 KOR backend extensions failed to parse config.";

class ConfigDocumentTest : public testing::Test {
protected:
    std::string path(const std::string& name) const { return m_folder.path(name); }
    std::string file(const std::string& content) const {
        std::ofstream(path("document.json"), std::ios::binary) << content;
        return path("document.json");
    }

    const ScratchFolder m_folder;
};

std::string nested(size_t levels) {
    return R"({"a":)" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
}

TEST_F(ConfigDocumentTest, AcceptsWhatStrictJsonAccepts) {
    EXPECT_TRUE(loadDocument("").result);
    const std::string accepted[] = {
        "{} \t\r\n",
        R"({"unknown":{"a":[1,null,"x"]},"x":null,"devices":[],"context":[],"memory":{}})",
        R"({"a":1e-400,"b":1e0000000000001})",
        R"({"a":"[[[[\"{{{ 1e99999999999 \\"})",
        nested(512),
    };
    for (const std::string& document : accepted) {
        for (const std::string& config : {document, file("\n " + document)}) {
            const LoadedConfig loaded = loadDocument(config);
            EXPECT_TRUE(loaded.result) << config;
            EXPECT_THAT(loaded.texts, IsEmpty()) << config;
            EXPECT_TRUE(loaded.devices.empty() && loaded.graphs.empty() && loaded.contexts.empty()) << config;
        }
    }
}

TEST_F(ConfigDocumentTest, RefusesWhatIsNotJson) {
    const std::string refused[] = {
        "{",
        "{} x",
        R"({"a":1,})",
        "{/**/}",
        R"({"a":NaN})",
        R"({"a":1e400})",
        R"({"a":"\)",
        R"({"a":0.)" + std::string(60, '0') + "1e-2147483639}",
        R"({"a":-1E-00099999999999999999})",
        nested(513),
        R"({"a":)" + std::string(100000, '['),
        std::string("{\0}", 3),
    };
    for (const std::string& text : refused) {
        for (const std::string& config : {text, file(text)}) {
            const std::string source = config == text ? "string" : "file " + config;
            const LoadedConfig loaded = loadDocument(config);
            EXPECT_FALSE(loaded.result) << text;
            EXPECT_THAT(loaded.texts,
                        ElementsAre("1 Input " + source + " is not valid JSON, check format", PARSE_FAILED))
                << text;
        }
    }
    EXPECT_FALSE(loadDocument(file("")).result);
    EXPECT_FALSE(loadDocument(file("\xEF\xBB\xBF{}")).result);
}

TEST_F(ConfigDocumentTest, RefusesWhatIsNoReadableFile) {
    for (const std::string& config : {path("missing"), path("."), m_folder.pipe("pipe"), std::string(" {}")}) {
        const LoadedConfig loaded = loadDocument(config);
        EXPECT_FALSE(loaded.result) << config;
        EXPECT_THAT(loaded.texts, ElementsAre("1 Cannot open file " + config, PARSE_FAILED));
    }
    const std::string huge = file("{}");
    fs::resize_file(huge, kor::MAX_DOCUMENT_BYTES + 1);
    EXPECT_THAT(loadDocument(huge).texts, ElementsAre("1 Cannot allocate memory for configFileBuffer", PARSE_FAILED));
}

// One fault of each kind of type, and the kinds of place where a type may stand.
TEST_F(ConfigDocumentTest, SchemaFaultNamesThePlaceAndTheKeyword) {
    const std::tuple<std::string, std::string, std::string> faults[] = {
        {file("[]"), "", "type"},
        {R"({"devices":[{"device_id":"x"}]})", "/devices/0/device_id", "type"},
        {R"({"devices":[{"core_id":[1,2.5]}]})", "/devices/0/core_id/1", "type"},
        {R"({"devices":[{"cores":[{"custom":{}}]}]})", "/devices/0/cores/0/custom", "anyOf"},
        {R"({"devices":[{"cores":[{"custom":[{"graphState":[]}]}]}]})", "/devices/0/cores/0/custom", "anyOf"},
        {R"({"devices":[{"cores":[{"druControl":{"druPerfMode":"x"}}]}]})", "/devices/0/cores/0/druControl/druPerfMode",
         "type"},
        {R"({"graphs":[{"O":1},{"O":1.5}]})", "/graphs/1/O", "multipleOf"},
        {R"({"graphs":[{"dru_op_bounding":{"dru_frequency":1}}]})", "/graphs/0/dru_op_bounding", "required"},
        {R"({"context":[{"graph_splitting_configs":{"num_prepare_threads":"x"}}]})", "/context", "anyOf"},
        {R"({"groupContext":{"share_resources":1}})", "/groupContext/share_resources", "type"},
        {R"({"memory":{"mem_type":"other"}})", "/memory/mem_type", "enum"},
    };
    for (const auto& [config, key, keyword] : faults) {
        const LoadedConfig loaded = loadDocument(config);
        EXPECT_FALSE(loaded.result) << config;
        EXPECT_THAT(loaded.texts, ElementsAre("1 Input file does not adhere to schema, error in key: " + key,
                                              MatchesRegex("1 Schema error:\n\\{\"" + keyword +
                                                           "\":.*\"instanceRef\":\"#" + key + "\".*"),
                                              "1 backend config file schema validation failed"));
    }
}

TEST_F(ConfigDocumentTest, AFailedSectionStopsAloneAndTheOthersAreRead) {
    const LoadedConfig loaded = loadDocument(
        R"({"devices":[{"soc_id":7,"device_id":-1,"core_type":9}],"graphs":[{"graph_names":["g"],"num_cores":-1}],)"
        R"("groupContext":{"share_resources":true},"memory":{"mem_type":"shared_buffer"}})");
    EXPECT_FALSE(loaded.result);
    EXPECT_THAT(loaded.texts,
                ElementsAre("1 Exception occurred: Value of key (devices/0/device_id) is not convertible to uint32_t",
                            "1 Exception occurred: Value of key (graphs/0/num_cores) is not convertible to uint32_t"));
    EXPECT_EQ(loaded.devices.at(0).socModel, 7U);
    EXPECT_EQ(loaded.devices.at(0).coreType, 0U);
    EXPECT_THAT(loaded.graphs.at(0).graphNames, ElementsAre("g"));
    EXPECT_TRUE(loaded.groupContext.shareResources);
    EXPECT_EQ(loaded.memory.memType, 1U);
}

TEST_F(ConfigDocumentTest, LaterLoadsWorkOnTheSameRecords) {
    ConfigRecords records;
    EXPECT_TRUE(records.load(R"({"devices":[{"device_id":1},{"device_id":2}]})"));
    // The index counts from the first record, so one appended for the second document stays unused.
    EXPECT_TRUE(records.load(R"({"devices":[{"soc_id":5}]})"));
    ASSERT_EQ(records.devices.size(), 3U);
    EXPECT_EQ(records.devices[0].deviceId, 1U);
    EXPECT_EQ(records.devices[0].socModel, 5U);
    EXPECT_EQ(records.devices[1].deviceId, 2U);
}

}  // namespace
}  // namespace zant::test
