// How a path or a text becomes a document, and what each way to fail says.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

#include "config/schema.h"
#include "support/loaded_config.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
namespace fs = std::filesystem;

const std::string PARSE_FAILED = "1 KOR backend extensions failed to parse config.";
const std::string SCHEMA_FAILED = "1 backend config file schema validation failed";

class ConfigDocumentTest : public testing::Test {
protected:
    std::string path(const std::string& name) const { return m_folder.path(name); }
    std::string file(const std::string& content) const {
        std::ofstream(path("document.json"), std::ios::binary) << content;
        return path("document.json");
    }

    const ScratchFolder m_folder;
};

std::string nested(int levels) {
    return R"({"a":)" + std::string(static_cast<size_t>(levels - 1), '[') +
           std::string(static_cast<size_t>(levels - 1), ']') + "}";
}

TEST_F(ConfigDocumentTest, AcceptsWhatStrictJsonAccepts) {
    EXPECT_TRUE(loadDocument("").result);
    const std::string accepted[] = {
        "{}",
        "{} \t\r\n",
        R"({"unknown":{"a":[1,null,"x"]},"x":null})",
        R"({"devices":[],"graphs":[],"context":[],"groupContext":{},"memory":{}})",
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
    const std::string zeros(60, '0');
    const std::string refused[] = {
        "{",
        "{} x",
        "{}{}",
        R"({"a":1,})",
        "{/**/}",
        R"({"a":NaN})",
        R"({"a":1e400})",
        R"({"a":"\)",
        R"({"a":0.)" + zeros + "1e-2147483639}",
        R"({"a":-1E-00099999999999999999})",
        nested(513),
        R"({"a":)" + std::string(100000, '['),
        std::string("{\0}", 3),
    };
    for (const std::string& text : refused) {
        const LoadedConfig fromText = loadDocument(text);
        EXPECT_FALSE(fromText.result) << text;
        EXPECT_THAT(fromText.texts, ElementsAre("1 Input string is not valid JSON, check format", PARSE_FAILED))
            << text;
    }
    for (const std::string& content :
         {refused[0], refused[1], nested(513), std::string(), std::string("\xEF\xBB\xBF{}")}) {
        const std::string config = file(content);
        const LoadedConfig fromFile = loadDocument(config);
        EXPECT_FALSE(fromFile.result) << content;
        EXPECT_THAT(fromFile.texts,
                    ElementsAre("1 Input file " + config + " is not valid JSON, check format", PARSE_FAILED));
    }
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

TEST_F(ConfigDocumentTest, SchemaFaultNamesThePlaceAndTheKeyword) {
    struct Fault {
        std::string config, key, error;
    };
    const Fault faults[] = {
        {file("[]"), "", R"(\{"type":\{.*"instanceRef":"#".*"schemaRef":"#".*)"},
        {R"({"devices":[{"device_id":"x"}]})", "/devices/0/device_id",
         R"(\{"type":\{.*"instanceRef":"#/devices/0/device_id".*"schemaRef":"#/.*)"},
        {R"({"graphs":[{"O":1},{"O":1.5}]})", "/graphs/1/O", R"(\{"multipleOf":\{.*"instanceRef":"#/graphs/1/O".*)"},
        {R"({"graphs":[{"dru_op_bounding":{"dru_frequency":1}}]})", "/graphs/0/dru_op_bounding", R"(\{"required":.*)"},
        {R"({"memory":{"mem_type":"other"}})", "/memory/mem_type", R"(\{"enum":.*)"},
    };
    for (const Fault& fault : faults) {
        const LoadedConfig loaded = loadDocument(fault.config);
        EXPECT_FALSE(loaded.result) << fault.config;
        EXPECT_THAT(loaded.texts, ElementsAre("1 Input file does not adhere to schema, error in key: " + fault.key,
                                              MatchesRegex("1 Schema error:\n" + fault.error), SCHEMA_FAILED));
    }
}

TEST_F(ConfigDocumentTest, BrokenSchemaTextFails) {
    kor::ConfigDocument document;
    ASSERT_TRUE(kor::loadConfigString(document, "{}"));
    LogCapture log;
    EXPECT_FALSE(kor::validateDocument(document, "{"));
    EXPECT_FALSE(kor::loadConfigString(document, ""));
    EXPECT_THAT(log.texts(),
                ElementsAre("1 Backend provided schema is not valid JSON, check format", "1 Empty string for parsing"));
}

TEST_F(ConfigDocumentTest, AFailedSectionStopsAloneAndTheOthersAreRead) {
    const LoadedConfig loaded = loadDocument(
        R"({"devices":[{"soc_id":7,"device_id":-1,"core_type":9}],"graphs":[{"graph_names":["g"],"num_cores":-1}],)"
        R"("context":{"group_id":-1},"groupContext":{"share_resources":true},"memory":{"mem_type":"shared_buffer"}})");
    EXPECT_FALSE(loaded.result);
    EXPECT_THAT(loaded.texts,
                ElementsAre("1 Exception occurred: Value of key (devices/0/device_id) is not convertible to uint32_t",
                            "1 Exception occurred: Value of key (graphs/0/num_cores) is not convertible to uint32_t",
                            "1 Exception occurred: Value of key (context/group_id) is not convertible to uint32_t"));
    EXPECT_EQ(loaded.devices.at(0).socModel, 7U);
    EXPECT_EQ(loaded.devices.at(0).coreType, 0U);
    EXPECT_THAT(loaded.graphs.at(0).graphNames, ElementsAre("g"));
    EXPECT_TRUE(loaded.groupContext.shareResources);
    EXPECT_EQ(loaded.memory.memType, 1U);
}

TEST_F(ConfigDocumentTest, LaterLoadsWorkOnTheSameRecords) {
    ConfigRecords records;
    EXPECT_FALSE(records.load("{"));
    EXPECT_FALSE(records.load(R"({"devices":7})"));
    EXPECT_TRUE(records.load(R"({"devices":[{"device_id":1},{"device_id":2}]})"));
    // The index counts from the first record, so one appended for the second document stays unused.
    EXPECT_TRUE(records.load(R"({"devices":[{"soc_id":5}]})"));
    ASSERT_EQ(records.devices.size(), 3U);
    EXPECT_EQ(records.devices[0].deviceId, 1U);
    EXPECT_EQ(records.devices[0].socModel, 5U);
    EXPECT_EQ(records.devices[1].deviceId, 2U);
    EXPECT_EQ(records.devices[2].socModel, 0U);
}

}  // namespace
}  // namespace zant::test
