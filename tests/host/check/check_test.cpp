// runhost check: each fault at its place, in words.
#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

// The findings of a document without its name in front, and without the closing count.
std::vector<std::string> findings(const std::string& path) {
    std::vector<std::string> lines = runHost("check '" + path + "'").lines();
    if (!lines.empty()) lines.pop_back();
    for (std::string& line : lines) line.erase(0, line.starts_with(path) ? path.size() : 0);
    return lines;
}

std::vector<std::string> findingsIn(const std::string& text) {
    return findings(TemporaryDocument(text).path());
}

// One of each kind: found by the schema, by the library's lines and by the host itself.
constexpr const char* PLANTED[] = {
    R"(:5:24: error: "spad_mb" must be at most 4095, not 5000 [/graphs/0/spad_mb])",
    R"(:6:18: error: "O" must be a whole number, not 2.5 [/graphs/0/O])",
    R"(:7:13: error: "slu_thread" is not a key of an element of "graphs"; did you mean "slu_threads"?)",
    R"(:10:28: error: "graph_names" must be an array, not a string [/graphs/1/graph_names])",
    R"(:11:29: error: "perf_profile" must name a perf profile, not "brust")",
    R"(:12:32: error: "dru_op_bounding" lacks the member "dsp_core_frequency")",
    R"(:19:25: error: "dsp_arch" must be "v" and the architecture's number, not "73"; did you mean "v73"?)",
    R"(:22:13: warning: "use_dynamic_partitionning" is not a key of an element of "devices")",
    R"(:29:63: error: element 1 of "graphState" cannot be "inference_begin")",
    R"(:38:59: error: "druPerfMode" must be from 0 to 255, not 300)",
    R"(:48:40: warning: "graph_splitting_enabled" is deprecated here)",
    R"(:49:64: error: "num_prepare_threads" must be an integer or "auto", not "all")",
};

TEST(Check, ReportsEveryFaultOfTheWrongExampleAtItsPlace) {
    const std::vector<std::string> found = findings(example("wrong.json"));
    for (const char* planted : PLANTED) EXPECT_THAT(found, testing::Contains(testing::StartsWith(planted)));
    EXPECT_EQ(found.size(), 23U) << "all that is wrong, and nothing else";
    EXPECT_EQ(runHost("check '" + example("wrong.json") + "'").status, 1);
}

TEST(Check, TheOtherExamplesAreClean) {
    std::string arguments = "check";
    for (const char* name : {"minimal.json", "burst_async_voting.json", "custom_corners_object.json",
                             "custom_corners_array.json", "graph_options.json", "shared_contexts.json"}) {
        arguments += " '" + example(name) + "'";
    }
    const ProcessResult result = runHost(arguments);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.lines(), ElementsAre("6 documents: 0 errors, 0 warnings"));
}

TEST(Check, TextsThatTheLibraryCannotTakeAreToldNotSuffered) {
    EXPECT_THAT(findingsIn("{\n  \"graphs\": [\n  ],\n  \"\xC3\xA9\": tru }"),
                ElementsAre(HasSubstr(":4:11: error: not valid JSON: Invalid value.")));
    EXPECT_THAT(findingsIn("\xEF\xBB\xBF{}"), ElementsAre(HasSubstr("A byte order mark is no part of JSON.")));
    EXPECT_THAT(findingsIn(""), ElementsAre(HasSubstr(":1:1: error: not valid JSON: The document is empty.")));
    EXPECT_THAT(findingsIn(std::string(100000, '[')), ElementsAre(HasSubstr("Nested deeper than 512 levels.")));
    EXPECT_THAT(findingsIn(R"({"devices":[{"device_id":1e-2147483639}]})"),
                ElementsAre(HasSubstr("\"device_id\" is a number beyond all bounds")));
    EXPECT_THAT(findingsIn("[1]"), ElementsAre(":1:1: error: the document must be an object, not an array"));
}

TEST(Check, MendingOneFaultMovesOrHidesNoOther) {
    // The first two elements are mended before the third is looked at.
    EXPECT_THAT(
        findingsIn(R"({"devices":[{"core_id":[true,"x",-3]}]})"),
        ElementsAre(HasSubstr("[/devices/0/core_id/0]"), HasSubstr("[/devices/0/core_id/1]"),
                    ":1:34: error: element 2 of \"core_id\" must be a whole number from 0 to 4294967295, not -3 "
                    "[/devices/0/core_id/2]"));
    // A list of wrong names alone is not empty for that.
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"custom":[{"graphState":["start","stop"]}]}]}]})"),
                ElementsAre(HasSubstr("element 0 of \"graphState\" cannot be"),
                            HasSubstr("element 1 of \"graphState\" cannot be")));
    EXPECT_THAT(findingsIn(R"({"graphs":[{"perf_profile":"fast"}],"devices":[{"cores":[{"perf_profile":"fast"}]}]})"),
                ElementsAre(HasSubstr("[/graphs/0/perf_profile]"), HasSubstr("[/devices/0/cores/0/perf_profile]")));
    // A section that ended early has read no corners: that is no fault of the profile.
    std::string text = readText(example("custom_corners_object.json"));
    text.replace(text.find("\"rpc_control_latency\": 40"), 25, "\"rpc_control_latency\": -40");
    EXPECT_THAT(findingsIn(text), ElementsAre(HasSubstr("[/devices/0/cores/0/rpc_control_latency]")));
}

TEST(Check, WhatTheLibraryRefusesOrDropsWithoutALineIsFound) {
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"custom":[{"graphState":["init_start"],)"
                           R"("druControl":{"druPerfMod":1}}]}]}]})"),
                ElementsAre(HasSubstr("error: \"druPerfMod\" is not a key of \"druControl\"; did you mean "
                                      "\"druPerfMode\"? (the whole section is refused for it)")));
    EXPECT_THAT(findingsIn(R"({"graphs":[{},{"O":1}]})"),
                ElementsAre(HasSubstr(":1:12: error: element 0 of \"graphs\" holds no value")));
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"perf_profile":"custom"}]}]})"),
                ElementsAre(HasSubstr(":1:39: error: \"perf_profile\" is \"custom\", which needs")));
    const std::string one = R"({"cores":[{"custom":[{"graphState":["init_start"],"druControl":{"druPerfMode":1}}]}]})";
    EXPECT_THAT(findingsIn("{\"devices\":[" + one + "]}"), ElementsAre());
    EXPECT_THAT(findingsIn("{\"devices\":[" + one + "," + one + "]}"),
                ElementsAre(HasSubstr("warning: \"custom\" is an array in an earlier device too")));
}

TEST(Check, TheNamesThatItOffersAreTheLibrarysOwn) {
    const std::string finding = findingsIn(R"({"graphs":[{"perf_profile":"zzzzzzzzzzzz"}]})").at(0);
    std::smatch known;
    ASSERT_TRUE(std::regex_search(finding, known, std::regex("known are (.*) \\["))) << finding;
    const std::string names = known[1];
    EXPECT_EQ(std::count(names.begin(), names.end(), ','), 21);
    const std::string graphs = std::regex_replace(names, std::regex(", "), R"("},{"perf_profile":")");
    EXPECT_THAT(findingsIn(R"({"graphs":[{"perf_profile":")" + graphs + R"("}]})"), ElementsAre());
}

TEST(Check, WarningsAloneAreClean) {
    const TemporaryDocument document(R"({"graphs":[{"enable_predication":true,"finalize_config":{"any":{"thing":1}}}],
        "device":[], "context":{"prepare_onyl":true}, "memory":{}, "memory":{}})");
    EXPECT_THAT(findings(document.path()),
                ElementsAre(HasSubstr("warning: \"device\" is not a key of the document; did you mean \"devices\"?"),
                            HasSubstr("\"prepare_only\"? [/context/prepare_onyl]"),
                            HasSubstr("warning: \"memory\" stands here a second time")));
    EXPECT_EQ(runHost("check '" + document.path() + "'").status, 0);
}

TEST(Check, AnUnreadableFileIsAnErrorOnStandardError) {
    const ProcessResult result = runHost("check no/such.json '" + example("minimal.json") + "'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("no/such.json: error: No such file or directory"));
    EXPECT_THAT(runHost("check no/such.json 2>/dev/null").output, testing::Not(HasSubstr("No such file")));
}

}  // namespace
