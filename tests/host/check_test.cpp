// runhost check: each fault at its place, in words.
#include <gmock/gmock.h>

#include <algorithm>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;

// ":line:column: " of the needle's first byte, which has to stand in the text once.
std::string placeOf(const std::string& text, const std::string& needle) {
    const size_t at = text.find(needle);
    EXPECT_NE(at, std::string::npos) << needle;
    EXPECT_EQ(text.find(needle, at + 1), std::string::npos) << needle << " is not unique";
    const size_t lineStart = text.rfind('\n', at) + 1;
    const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n') + 1;
    return ":" + std::to_string(line) + ":" + std::to_string(at - lineStart + 1) + ": ";
}

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

struct Planted {
    const char* needle;
    const char* words;
};

constexpr Planted PLANTED[] = {
    {"5000", R"(error: "spad_mb" must be at most 4095, not 5000 [/graphs/0/spad_mb])"},
    {"2.5", R"(error: "O" must be a whole number, not 2.5 [/graphs/0/O])"},
    {"\"slu_thread\"", R"(error: "slu_thread" is not a key of an element of "graphs"; did you mean "slu_threads"?)"},
    {"\"decoder\"", R"(error: "graph_names" must be an array, not a string [/graphs/1/graph_names])"},
    {"\"brust\"", R"(error: "perf_profile" must name a perf profile, not "brust")"},
    {"{\"dru_frequency\"", R"(error: "dru_op_bounding" lacks the member "dsp_core_frequency")"},
    {"\"0\"", R"(error: "device_id" must be an integer, not a string [/devices/0/device_id])"},
    {"-1", R"(error: "soc_model" must be a whole number from 0 to 4294967295, not -1)"},
    {"\"73\"", R"(error: "dsp_arch" must be "v" and the architecture's number, not "73"; did you mean "v73"?)"},
    {"\"Signed\"", R"(error: "pd_session" must be "signed" or "unsigned", not "Signed"; did you mean "signed"?)"},
    {"2,\n            \"use", R"(error: "device_type" must be 0 (on-chip) or 1 (off-chip), not 2)"},
    {"\"use_dynamic_partitionning\"",
     R"(warning: "use_dynamic_partitionning" is not a key of an element of "devices")"},
    {"\"rpc_poling_time\"", R"(error: "rpc_poling_time" is not a key of an element of "cores")"},
    {"\"inference_begin\"", R"(error: element 1 of "graphState" cannot be "inference_begin")"},
    {"{\n                                \"powerMode\"",
     R"(error: "dcvsControl" lacks the member "coreVoltageCornerTarget")"},
    {"\"PERFORMANCE_MODE\"", R"(error: "powerMode" must name a power mode, not "PERFORMANCE_MODE")"},
    {"\"DCVS_VOLTAGE_VCORNER_TURBOPLUS\"", R"(did you mean "DCVS_VOLTAGE_VCORNER_TURBO_PLUS"?)"},
    {"\"DCVS_EXP_VCORNER_TUR\"", R"(error: "busVoltageCornerTarget" must name a voltage corner)"},
    {"300", R"(error: "druPerfMode" must be from 0 to 255, not 300)"},
    {"true,\n            \"graph_splitting_configs\"", R"(warning: "graph_splitting_enabled" is deprecated here)"},
    {"\"all\"", R"(error: "num_prepare_threads" must be an integer or "auto", not "all")"},
    {"\"sharedbuffer\"", R"(error: "mem_type" must be "shared_buffer", not "sharedbuffer" [/memory/mem_type])"},
    {"\"groupcontext\"", R"(warning: "groupcontext" is not a key of the document; did you mean "groupContext"?)"},
};

TEST(Check, ReportsEveryFaultOfTheWrongExampleAtItsPlace) {
    const std::string text = readText(example("wrong.json"));
    const std::vector<std::string> found = findings(example("wrong.json"));
    for (const Planted& planted : PLANTED) {
        EXPECT_THAT(found, testing::Contains(testing::AllOf(testing::StartsWith(placeOf(text, planted.needle)),
                                                            HasSubstr(planted.words))));
    }
    EXPECT_EQ(found.size(), std::size(PLANTED)) << "and nothing else";
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

TEST(Check, SyntaxErrorsHaveTheirPlaceInCharacters) {
    EXPECT_THAT(findingsIn("{\n  \"graphs\": [\n  ],\n  \"\xC3\xA9\": tru }"),
                ElementsAre(HasSubstr(":4:11: error: not valid JSON: Invalid value.")));
    EXPECT_THAT(findingsIn("{} x"), ElementsAre(HasSubstr(":1:4: error: not valid JSON")));
    EXPECT_THAT(findingsIn("\xEF\xBB\xBF{}"), ElementsAre(HasSubstr("A byte order mark is no part of JSON.")));
    EXPECT_THAT(findingsIn(""), ElementsAre(HasSubstr(":1:1: error: not valid JSON: The document is empty.")));
}

TEST(Check, HostileDocumentsAreToldNotSuffered) {
    EXPECT_THAT(findingsIn(std::string(100000, '[')), ElementsAre(HasSubstr("Nested deeper than 512 levels.")));
    EXPECT_THAT(findingsIn(R"({"devices":[{"device_id":1e-2147483639}]})"),
                ElementsAre(HasSubstr("\"device_id\" is a number beyond all bounds")));
}

TEST(Check, ARootThatIsNoObject) {
    EXPECT_THAT(findingsIn("[1]"), ElementsAre(":1:1: error: the document must be an object, not an array"));
}

TEST(Check, IndexesStayThoseOfTheFile) {
    // The first two elements are mended before the third is looked at.
    EXPECT_THAT(
        findingsIn(R"({"devices":[{"core_id":[true,"x",-3]}]})"),
        ElementsAre(HasSubstr("[/devices/0/core_id/0]"), HasSubstr("[/devices/0/core_id/1]"),
                    ":1:34: error: element 2 of \"core_id\" must be a whole number from 0 to 4294967295, not -3 "
                    "[/devices/0/core_id/2]"));
}

TEST(Check, AListOfWrongNamesOnlyIsNotEmptyForThat) {
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"custom":[{"graphState":["start","stop"]}]}]}]})"),
                ElementsAre(HasSubstr("element 0 of \"graphState\" cannot be"),
                            HasSubstr("element 1 of \"graphState\" cannot be")));
}

TEST(Check, EqualValuesAreToldApart) {
    EXPECT_THAT(findingsIn(R"({"graphs":[{"perf_profile":"fast"}],"devices":[{"cores":[{"perf_profile":"fast"}]}]})"),
                ElementsAre(HasSubstr("[/graphs/0/perf_profile]"), HasSubstr("[/devices/0/cores/0/perf_profile]")));
}

TEST(Check, WhatTheLibraryRefusesWithoutALineIsFound) {
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"custom":[{"graphState":["init_start"],)"
                           R"("druControl":{"druPerfMod":1}}]}]}]})"),
                ElementsAre(HasSubstr("error: \"druPerfMod\" is not a key of \"druControl\"; did you mean "
                                      "\"druPerfMode\"? (the whole section is refused for it)")));
    EXPECT_THAT(findingsIn(R"({"graphs":[{},{"O":1}]})"),
                ElementsAre(HasSubstr(":1:12: error: element 0 of \"graphs\" holds no value")));
}

TEST(Check, ProfileAndCornersHaveToAgree) {
    EXPECT_THAT(findingsIn(R"({"devices":[{"cores":[{"perf_profile":"custom"}]}]})"),
                ElementsAre(HasSubstr(":1:39: error: \"perf_profile\" is \"custom\", which needs")));
    // A section that ended early has read no corners: that is no fault of the profile.
    std::string text = readText(example("custom_corners_object.json"));
    text.replace(text.find("\"rpc_control_latency\": 40"), 25, "\"rpc_control_latency\": -40");
    EXPECT_THAT(findingsIn(text), ElementsAre(HasSubstr("[/devices/0/cores/0/rpc_control_latency]")));
}

// The names that a finding lists behind "known are ".
std::vector<std::string> listedNames(const std::string& document) {
    const std::vector<std::string> found = findingsIn(document);
    EXPECT_EQ(found.size(), 1U);
    const std::string& line = found.front();
    const size_t start = line.find("known are ");
    EXPECT_NE(start, std::string::npos) << line;
    std::istringstream names(line.substr(start + 10, line.find(" [", start) - start - 10));
    std::vector<std::string> list;
    for (std::string name; names >> name;) list.push_back(name.substr(0, name.find(',')));
    return list;
}

TEST(Check, TheNamesThatItOffersAreTheLibrarysOwn) {
    const std::vector<std::string> profiles = listedNames(R"({"graphs":[{"perf_profile":"zzzzzzzzzzzz"}]})");
    EXPECT_EQ(profiles.size(), 22U);
    std::string graphs;
    for (const std::string& name : profiles) graphs += ",{\"perf_profile\":\"" + name + "\"}";
    EXPECT_THAT(findingsIn("{\"graphs\":[" + graphs.substr(1) + "]}"), ElementsAre());

    std::string text = readText(example("custom_corners_object.json"));
    const std::string mode = "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE";
    const size_t at = text.find(mode);
    for (const std::string& name : listedNames(text.replace(at, mode.size(), "?"))) {
        std::string document = text;
        EXPECT_THAT(findingsIn(document.replace(at, 1, name)), ElementsAre()) << name;
    }
}

TEST(Check, WarningsAloneAreClean) {
    const TemporaryDocument document(R"({"graphs":[{"enable_predication":true,"finalize_config":{"any":{"thing":1}}}],
        "device":[], "context":{"prepare_onyl":true}, "memory":{}, "memory":{}})");
    EXPECT_THAT(findings(document.path()),
                ElementsAre(HasSubstr("warning: \"device\" is not a key of the document; did you mean \"devices\"?"),
                            HasSubstr("warning: \"prepare_onyl\" is not a key of \"context\"; did you mean "
                                      "\"prepare_only\"? [/context/prepare_onyl]"),
                            HasSubstr("warning: \"memory\" stands here a second time")));
    EXPECT_EQ(runHost("check '" + document.path() + "'").status, 0);
}

TEST(Check, CustomArraysOfSeveralDevicesRunIntoOneAnother) {
    const std::string one = R"({"cores":[{"custom":[{"graphState":["init_start"],"druControl":{"druPerfMode":1}}]}]})";
    EXPECT_THAT(findingsIn("{\"devices\":[" + one + "]}"), ElementsAre());
    EXPECT_THAT(findingsIn("{\"devices\":[" + one + "," + one + "]}"),
                ElementsAre(HasSubstr("warning: \"custom\" is an array in an earlier device too")));
}

TEST(Check, AnUnreadableFileIsAnErrorOnStandardError) {
    const ProcessResult result = runHost("check no/such.json '" + example("minimal.json") + "'");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("no/such.json: error: No such file or directory"));
    EXPECT_THAT(runHost("check no/such.json 2>/dev/null").output, testing::Not(HasSubstr("No such file")));
}

}  // namespace
