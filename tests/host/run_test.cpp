// runhost run, as a user starts it.
#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

const rapidjson::Value* findCall(const rapidjson::Document& report, const std::string& name) {
    for (const auto& stage : report["stages"].GetArray()) {
        for (const auto& call : stage["calls"].GetArray()) {
            if (call["name"].GetString() == name) return &call;
        }
    }
    return nullptr;
}

class RunExample : public testing::TestWithParam<const char*> {};

TEST_P(RunExample, SucceedsAndSaysSo) {
    const ProcessResult result = runHost("run '" + example(GetParam()) + "'" + asMachine("chip538"));
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_THAT(result.output, HasSubstr("Every hook succeeded."));
}

INSTANTIATE_TEST_SUITE_P(Examples, RunExample,
                         testing::Values("minimal.json", "burst_async_voting.json", "custom_corners_object.json",
                                         "custom_corners_array.json", "graph_options.json", "shared_contexts.json",
                                         "binary_list.json"));

TEST(Run, WithoutADocumentShowsTheWholeLifeInOrder) {
    const ProcessResult result = runHost("run");
    ASSERT_EQ(result.status, 0) << result.output;
    size_t at = 0;
    for (const char* word : {"createBackendInterface",
                             "setupLogging",
                             "bindBackendLibrary",
                             "loadConfig",
                             "beforeDeviceCreate",
                             "SIGNED_PD_SESSION (2)",
                             "DSP_ARCH (1)",
                             "SOC_MODEL (0)",
                             "ASYNC_EXECUTE (4)",
                             "createDevice",
                             "afterDeviceCreate",
                             "enableKorExtension",
                             "beforeContextCreate",
                             "afterContextCreate",
                             "beforeGraphsCompose",
                             "afterGraphsCompose",
                             "beforeGraphFinalize",
                             "afterGraphFinalize",
                             "beforeGraphExecute",
                             "afterGraphExecute",
                             "beforeContextFree",
                             "afterContextFree",
                             "beforeDeviceFree",
                             "destroyBackendInterface",
                             "Ledger",
                             "getProviders()",
                             "createDevice(",
                             "deviceSetConfig(",
                             "freeDevice("}) {
        const size_t found = result.output.find(word, at);
        ASSERT_NE(found, std::string::npos) << word << " is missing or out of order in\n" << result.output;
        at = found + 1;
    }
}

TEST(Run, JsonHoldsTheSameFacts) {
    const ProcessResult result = runHost("run --json --log-level 3 '" + example("graph_options.json") + "'");
    ASSERT_EQ(result.status, 0) << result.output;
    rapidjson::Document report;
    ASSERT_FALSE(report.Parse(result.output.c_str()).HasParseError()) << result.output;
    EXPECT_TRUE(report["succeeded"].GetBool());
    const rapidjson::Value* create = findCall(report, "beforeDeviceCreate");
    ASSERT_NE(create, nullptr);
    ASSERT_EQ((*create)["records"].Size(), 2U);
    EXPECT_STREQ((*create)["records"][0]["name"].GetString(), "USE_DYNAMIC_PARTITIONING");
    EXPECT_STREQ((*create)["records"][1]["bytes"].GetString(),
                 "01 00 00 00 00 00 00 00 00 00 00 00 49 00 00 00 00 00 00 00 00 00 00 00");
    const rapidjson::Value* load = findCall(report, "loadConfig");
    ASSERT_NE(load, nullptr);
    EXPECT_STREQ((*load)["log"][0]["text"].GetString(), "Key: device_id, Value: 0");
    EXPECT_STREQ((*findCall(report, "enableKorExtension"))["result"].GetString(), "skipped");
    EXPECT_GT(report["ledger"].Size(), 8U);
}

TEST(Run, ARefusedDocumentEndsTheLifeAndFails) {
    const ProcessResult result = runHost("run '" + example("wrong.json") + "'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("Input file does not adhere to schema"));
    EXPECT_THAT(result.output, testing::Not(HasSubstr("beforeDeviceCreate")));
    EXPECT_THAT(result.output, HasSubstr("destroyBackendInterface"));
    EXPECT_EQ(runHost("run no/such/file.json").status, 1);
}

TEST(Run, ABackendThatIsNoneFailsTheBinding) {
    const ProcessResult result = runHost("run --backend '" EXTENSIONS_LIBRARY "'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("Unable to find symbols"));
}

TEST(Run, EveryMachineIsFoundByName) {
    if (asMachine("any").empty()) GTEST_SKIP() << "the library sees the real machine only";
    for (const char* name :
         {"chip405", "chip435", "chip475", "chip497", "chip498", "chip538", "chip662", "chip693", "unknown"}) {
        const ProcessResult result = runHost(std::string("run --machine ") + name);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_THAT(result.output, HasSubstr(std::string("machines/") + name));
    }
}

TEST(Usage, WrongArgumentsGiveTwo) {
    for (const char* arguments :
         {"", "fly", "run --log-level 6", "run --machine nowhere", "run a b", "check", "schema now", "run --library"}) {
        EXPECT_EQ(runHost(arguments).status, 2) << arguments;
    }
    EXPECT_EQ(runHost("run --library no/such/library.so").status, 1);
    for (const char* arguments : {"--help", "--version", "run --help", "check --help", "schema --help"}) {
        const ProcessResult result = runHost(std::string(arguments) + " 2>/dev/null");
        EXPECT_EQ(result.status, 0) << arguments;
        EXPECT_FALSE(result.output.empty()) << arguments;
    }
}

TEST(Schema, IsTheContractsOwn) {
    const ProcessResult result = runHost("schema");
    ASSERT_EQ(result.status, 0);
    rapidjson::Document schema;
    ASSERT_FALSE(schema.Parse(result.output.c_str()).HasParseError());
    EXPECT_EQ(schema["properties"].MemberCount(), 5U);
}

}  // namespace
