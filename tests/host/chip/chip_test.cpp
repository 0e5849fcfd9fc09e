// runhost chip, as a user starts it.
#include <gmock/gmock.h>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;

// "value from" of a fact of the first record of a list; empty when it is not told.
std::string fact(const rapidjson::Document& report, const std::string& list, const std::string& name) {
    for (const auto& told : report["facts"].GetArray()) {
        if (told["list"].GetString() == list && told["name"].GetString() == name && told["record"].GetUint() == 0) {
            return std::string(told["value"].GetString()) + " " + told["from"].GetString();
        }
    }
    return "";
}

// The library lies beside the one that asks, which is the first place that is looked in.
TEST(Chip, TellsItsFactsWithTheirOrigins) {
    if (asMachine("any").empty()) GTEST_SKIP() << "the library sees the real machine only";
    const auto known = json("chip --machine chip538");
    EXPECT_EQ(fact(known, "chip", "identifier"), "538 firmware");
    EXPECT_EQ(fact(known, "dsp", "arch"), "73 row");
    EXPECT_EQ(fact(json("chip --machine unknown"), "chip", "name"), "UNKNOWN_VRD default");
    const TemporaryDocument zant(
        R"({"library":"ZantSystemInfo.dll","version":[1,2],"dsp":{"3":81,"16":[4,5]},"gpu":{"1":9}})");
    const auto unknown = json("chip --machine unknown --capabilities '" + zant.path() + "'");
    EXPECT_EQ(fact(unknown, "chip", "capability library"), "ZantSystemInfo.dll 1.2 library");
    EXPECT_EQ(fact(unknown, "dsp", "arch"), "81 library");
    EXPECT_EQ(fact(unknown, "dsp", "cap16"), "[4, 5] library");
    EXPECT_EQ(fact(unknown, "gpu", "type"), "0 default") << "providers ask the other library";
    const auto confirmed = json("chip --machine chip538 --capabilities '" + zant.path() + "'");
    EXPECT_EQ(fact(confirmed, "dsp", "arch"), "0 default");
    EXPECT_EQ(fact(confirmed, "cpu", "numThreads"), "6 provider row");
}

}  // namespace
