// runhost run on each road to contexts, with external buffers, tensors and detached buffers.
#include <gmock/gmock.h>

#include <filesystem>
#include <regex>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

std::string binaryList(const std::string& arguments) {
    return "run '" + example("binary_list.json") + "' --road binary-list " + arguments;
}

// The names of the calls whose names begin so, in order; "hook FAILED" for one that failed.
std::vector<std::string> calls(const rapidjson::Document& report, const std::string& beginnings) {
    const std::regex meant("(" + beginnings + ").*");
    std::vector<std::string> names;
    for (const auto& stage : report["stages"].GetArray()) {
        for (const auto& call : stage["calls"].GetArray()) {
            const std::string name = call["name"].GetString();
            const bool failed = call["result"].GetString() == std::string("failed");
            if (std::regex_match(name, meant)) names.push_back(name + (failed ? " FAILED" : ""));
        }
    }
    return names;
}

// "context use" of each region of a block.
std::vector<std::string> regions(const rapidjson::Value& block) {
    std::vector<std::string> texts;
    for (const auto& region : block["regions"].GetArray()) {
        texts.push_back(std::string(region["context"].GetString()) + " " + region["as"].GetString() + " at " +
                        std::to_string(region["offset"].GetUint64()));
    }
    return texts;
}

TEST(Roads, OneBinaryTakesItsOwnHooks) {
    const auto report = json("run '" + example("shared_contexts.json") + "' --road binary");
    EXPECT_TRUE(report["succeeded"].GetBool());
    EXPECT_THAT(calls(report, "beforeContext|createContext|afterContext|createGraph|retrieveGraph"),
                ElementsAre("beforeContextCreateFromBinary", "createContextFromBinary", "afterContextCreateFromBinary",
                            "retrieveGraph", "retrieveGraph", "beforeContextFree", "afterContextFree"));
}

TEST(Roads, SeveralBinariesShareTheirPoolsAndKeepTheirWeights) {
    const auto report = json(binaryList("--pools"));
    EXPECT_TRUE(report["succeeded"].GetBool());
    const auto& blocks = report["memory"]["blocks"];
    ASSERT_EQ(blocks.Size(), 8U);
    EXPECT_THAT(regions(blocks[1]),
                ElementsAre("vision.bin spill-fill at 0", "prefill.bin spill-fill at 0", "decode.bin spill-fill at 0"));
    EXPECT_EQ(blocks[1]["bytes"].GetUint64(), 3U * 65536) << "the largest of the three";
    EXPECT_THAT(regions(blocks[3]), ElementsAre("prefill.bin weights at 0"));
    EXPECT_THAT(regions(blocks[7]),
                ElementsAre("decode.bin tensor at 0", "decode.bin tensor at 64", "decode.bin tensor at 1088"));
    EXPECT_THAT(calls(report, "exchange"), ElementsAre("exchange", "exchange", "exchange"));
}

TEST(Roads, BuffersAreDetachedBetweenTheFirstTwoRuns) {
    const auto report = json(binaryList("--contexts 2 --detach"));
    EXPECT_TRUE(report["succeeded"].GetBool());
    EXPECT_THAT(calls(report, "detach|attach|run again"),
                ElementsAre("detachableBuffersEnabled", "detachBuffers", "attachBuffers", "detachBuffers",
                            "attachBuffers", "run again"));
    const auto& detached = report["memory"]["detached"];
    ASSERT_EQ(detached.Size(), 2U);
    EXPECT_STREQ(detached[0]["context"].GetString(), "vision.bin");
    EXPECT_EQ(detached[0]["buffers"].GetUint(), 2U);
    EXPECT_GE(detached[1]["from_ns"].GetUint64(), detached[0]["to_ns"].GetUint64());
}

TEST(Roads, AFailureOfTheMachineIsSeenAndNothingIsLeftBehind) {
    struct Case {
        const char* failure;
        const char* name;
    };
    for (const Case& failing :
         {Case{"getApiVersion=1", "bindBackendLibrary FAILED"},
          Case{"createContextsFromBinaryList=1", "createContextsFromBinaryList FAILED"},
          Case{"darmem_alloc=1", "finalizeExternalBufferPools FAILED"}, Case{"memoryRegister=11", "allocate FAILED"},
          Case{"contextSetConfig=0", "detachBuffers FAILED"}, Case{"contextFinalize=2", "attachBuffers FAILED"}}) {
        const auto report = json(binaryList("--pools --detach --fail " + std::string(failing.failure)));
        EXPECT_FALSE(report["succeeded"].GetBool()) << failing.failure;
        EXPECT_THAT(calls(report, ""), testing::Contains(failing.name)) << failing.failure;
        EXPECT_EQ(report["misuse"].Size(), 0U) << failing.failure << ": " << report["misuse"][0].GetString();
    }
    EXPECT_THAT(runHost(binaryList("--pools --fail darmem_free=1")).output, HasSubstr("misuse: 1 block left over"));
}

TEST(Roads, APatchFileIsMadeAndHandedOver) {
    const std::string path = std::filesystem::path(testing::TempDir() + "runhost_roads.patch").generic_string();
    std::filesystem::remove(path);
    const TemporaryDocument document(
        R"({"devices": [{"device_id": 0}], "context": [{"contextKey": "a", "concurrent_deserialization_patch": ")" +
        path + R"("}]})");
    for (const char* road : {"binary", "binary-list"}) {
        const ProcessResult result = runHost("run '" + document.path() + "' --road " + road);
        EXPECT_EQ(result.status, 0) << result.output;
        EXPECT_THAT(result.output, HasSubstr("DESERIALIZATION_PATCH (21)"));
        EXPECT_TRUE(std::filesystem::remove(path)) << road;
    }
}

}  // namespace
