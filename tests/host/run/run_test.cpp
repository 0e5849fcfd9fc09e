// runhost run, as a user starts it.
#include <gmock/gmock.h>

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

TEST(Run, SucceedsWithEachExample) {
    for (const char* name :
         {"minimal.json", "custom_corners_object.json", "custom_corners_array.json", "binary_list.json"}) {
        const ProcessResult result = runHost("run '" + example(name) + "'" + asMachine("chip538"));
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_THAT(result.output, HasSubstr("Every hook succeeded."));
    }
}

TEST(Run, WithoutADocumentShowsTheWholeLifeInOrder) {
    const ProcessResult result = runHost("run");
    ASSERT_EQ(result.status, 0) << result.output;
    std::istringstream words(
        "createBackendInterface setupLogging bindBackendLibrary loadConfig beforeDeviceCreate SIGNED_PD_SESSION "
        "DSP_ARCH SOC_MODEL ASYNC_EXECUTE createDevice afterDeviceCreate enableKorExtension beforeContextCreate "
        "afterContextCreate beforeGraphsCompose afterGraphsCompose beforeGraphFinalize afterGraphFinalize "
        "beforeGraphExecute afterGraphExecute beforeContextFree afterContextFree beforeDeviceFree "
        "destroyBackendInterface Ledger getProviders() createDevice( 9999]) deviceSetConfig( freeDevice(");
    size_t at = 0;
    for (std::string word; words >> word; ++at) {
        at = result.output.find(word, at);
        ASSERT_NE(at, std::string::npos) << word << " is missing or out of order in\n" << result.output;
    }
}

TEST(Run, JsonHoldsTheSameFacts) {
    const auto report = json("run --log-level 3 '" + example("graph_options.json") + "'");
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

TEST(Run, ARefusedDocumentOrBackendEndsTheLifeAndFails) {
    const ProcessResult result = runHost("run '" + example("wrong.json") + "'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("Input file does not adhere to schema"));
    EXPECT_THAT(result.output, testing::Not(HasSubstr("beforeDeviceCreate")));
    EXPECT_THAT(result.output, HasSubstr("destroyBackendInterface"));
    EXPECT_EQ(runHost("run no/such/file.json").status, 1);
    EXPECT_EQ(runHost("run --library no/such/library.so").status, 1);
    const ProcessResult unbound = runHost("run --backend '" EXTENSIONS_LIBRARY "'");
    EXPECT_EQ(unbound.status, 1);
    EXPECT_THAT(unbound.output, HasSubstr("Unable to find symbols"));
}

TEST(Usage, WrongArgumentsGiveTwo) {
    for (const char* arguments :
         {"", "fly", "run --machine nowhere", "run a b", "check", "run --library", "run --road sideways",
          "run --iterations 0", "run --latency setPowerConfig", "run --fail =1", "chip --capabilities nowhere.json"}) {
        EXPECT_EQ(runHost(arguments).status, 2) << arguments;
    }
    const std::pair<std::string, const char*> told[] = {
        {"run --road binary --contexts 2", "--contexts needs --road binary-list"},
        {"run --detach --iterations 1", "--detach needs --iterations 2 or more"},
        {"run --profile brust", "did you mean \"burst\"?"},
        {"profiles brust", "did you mean \"burst\"?"},
        {"chip --capabilities '" + example("minimal.json") + "'", "expected \"library\" with \"ZantSystemInfo.dll\""},
    };
    for (const auto& [arguments, words] : told) {
        const ProcessResult result = runHost(arguments);
        EXPECT_EQ(result.status, 2) << arguments;
        EXPECT_THAT(result.output, HasSubstr(words));
    }
}

TEST(Usage, HelpAndSchemaGoToStandardOutput) {
    for (const char* arguments : {"--help", "--version", "run --help", "schema"}) {
        const ProcessResult result = runHost(std::string(arguments) + " 2>/dev/null");
        EXPECT_EQ(result.status, 0) << arguments;
        EXPECT_FALSE(result.output.empty()) << arguments;
    }
}

}  // namespace
