// runhost chip, as a user starts it.
#include <gmock/gmock.h>
#include <rapidjson/document.h>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;

// "value from" of a fact of the first record of a list; empty when it is not told.
std::string fact(const ProcessResult& result, const std::string& list, const std::string& name) {
    rapidjson::Document report;
    if (report.Parse(result.output.c_str()).HasParseError()) return result.output;
    for (const auto& told : report["facts"].GetArray()) {
        if (told["list"].GetString() == list && told["name"].GetString() == name && told["record"].GetUint() == 0) {
            return std::string(told["value"].GetString()) + " " + told["from"].GetString();
        }
    }
    return "";
}

TEST(Chip, WithoutACapabilityLibraryIsItsRow) {
    if (asMachine("any").empty()) GTEST_SKIP() << "the library sees the real machine only";
    const ProcessResult known = runHost("chip --json --machine chip538");
    EXPECT_EQ(known.status, 0);
    EXPECT_EQ(fact(known, "chip", "identifier"), "538 firmware");
    EXPECT_EQ(fact(known, "dsp", "arch"), "73 row");
    const ProcessResult unknown = runHost("chip --json --machine unknown");
    EXPECT_EQ(fact(unknown, "chip", "name"), "UNKNOWN_VRD default");
    EXPECT_EQ(fact(unknown, "dsp", "arch"), "0 default");
}

// The library lies beside the one that asks, which is the first place that is looked in.
TEST(Chip, ACapabilityLibraryFillsInOrConfirms) {
    if (asMachine("any").empty()) GTEST_SKIP() << "the library sees the real machine only";
    const TemporaryDocument zant(
        R"({"library":"ZantSystemInfo.dll","version":[1,2],"dsp":{"3":81,"16":[4,5]},"gpu":{"1":9}})");
    const ProcessResult unknown = runHost("chip --json --machine unknown --capabilities '" + zant.path() + "'");
    EXPECT_EQ(fact(unknown, "chip", "capability library"), "ZantSystemInfo.dll 1.2 library");
    EXPECT_EQ(fact(unknown, "chip", "name"), "Dynamic VRD library");
    EXPECT_EQ(fact(unknown, "dsp", "arch"), "81 library");
    EXPECT_EQ(fact(unknown, "dsp", "cap16"), "[4, 5] library");
    EXPECT_EQ(fact(unknown, "gpu", "type"), "0 default") << "providers ask the other library";
    const ProcessResult known = runHost("chip --json --machine chip538 --capabilities '" + zant.path() + "'");
    EXPECT_EQ(fact(known, "dsp", "arch"), "0 default");
    EXPECT_EQ(fact(known, "cpu", "numThreads"), "6 provider row");
}

TEST(Chip, RefusesAFileThatNamesNoLibrary) {
    const TemporaryDocument other(R"({"library":"Other.dll"})");
    const ProcessResult result = runHost("chip --capabilities '" + other.path() + "'");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.output, HasSubstr(other.path() + ": expected \"library\" with \"ZantSystemInfo.dll\" or"));
    EXPECT_EQ(runHost("chip --capabilities nowhere.json").status, 2);
}

}  // namespace
