// Votes as a user sees them: the time line of a run, and the table of profiles. Both come from the library that ships.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <regex>

#include "plugin/support/process.h"

namespace {

using namespace testing_support;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// "stage thread bus target corner" of each vote that holds corners.
std::vector<std::string> voteList(const rapidjson::Document& report) {
    std::vector<std::string> list;
    for (const auto& vote : report["votes"].GetArray()) {
        if (!vote["bus_corners"].IsObject()) continue;
        const std::string corner = vote["bus_corners"]["target"].GetString();
        list.push_back(std::string(vote["stage"].GetString()) + " " + vote["thread"].GetString() + " " +
                       corner.substr(corner.rfind("CORNER_") + 7));
    }
    return list;
}

TEST(Votes, OfTheExampleAreHeldBetweenRunsAndFallInThePause) {
    const rapidjson::Document report = json("run" + asMachine("chip538") + " --execute-ms 5 --final-pause-ms 900");
    EXPECT_THAT(
        voteList(report),
        testing::ElementsAre("Finalize host MAX_VOLTAGE_CORNER", "Finalize host SVS",
                             "Run 1 zant_perf_driver MAX_VOLTAGE_CORNER", "Pause zant_perf_driver SVS",
                             "Free the context host MAX_VOLTAGE_CORNER", "Free the context host MIN_VOLTAGE_CORNER"));
    EXPECT_EQ(report["runs_without_votes"].GetUint(), 2U);
    ASSERT_EQ(report["levels"].Size(), 3U);
    EXPECT_EQ(report["levels"][0]["votes"].GetUint(), 3U);
    EXPECT_GE(report["levels"][0]["stood_ns"].GetUint64(), 300000000U);
    EXPECT_LT(report["levels"][2]["stood_ns"].GetUint64(), report["levels"][0]["stood_ns"].GetUint64());
}

TEST(Votes, WithoutAVotingThreadComeFromHostAndTimer) {
    const TemporaryDocument document(
        R"({"devices":[{"core_id":[3],"async_voting":false,"cores":[{"perf_profile":"balanced"}]}]})");
    const rapidjson::Document report =
        json("run '" + document.path() + "' --profile sustained_high_performance --final-pause-ms 900");
    EXPECT_THAT(voteList(report), testing::IsSupersetOf({"Run 1 host TURBO", "Pause timer SVS"}));
    const auto& last = report["votes"][report["votes"].Size() - 1];
    EXPECT_EQ(last["core"].GetUint(), 3U);
    EXPECT_TRUE(last["id_destroyed"].GetBool());
}

TEST(Votes, GraphRecordsShowByNameAndLateOnesInTheFirstRunAlone) {
    const ProcessResult result =
        runHost("run '" + example("graph_options.json") + "' --graphs encoder,stranger --iterations 3 --interval-ms 1");
    EXPECT_EQ(result.status, 0);
    for (const char* text : {"OPTIMIZATION_LEVEL (3) = 3", "[0, 1]", "DRU 1248, DSP core 1171.2",
                             "tiling/rows = 4 (int32)", "weights = packed (text)", "verify = true (bool)",
                             "tolerance = 0.125 (float32)", "stranger: the document has no options for it",
                             "encoder: 1 late record", "SPAD_RETENTION (8) = 1", "runs 2 to 3"}) {
        EXPECT_THAT(result.output, HasSubstr(text));
    }
    EXPECT_THAT(std::string(result.output, result.output.find("SPAD_RETENTION") + 1), Not(HasSubstr("SPAD_RETENTION")));
}

TEST(Votes, ARunThatUsesTheBackendWronglyFails) {
    const std::string run = "run '" + example("minimal.json") + "'";
    const std::vector<std::string> lines = runHost(run).lines();
    const auto fetches = std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
        return line.find("deviceGetInfrastructure()") != std::string::npos;
    });
    ASSERT_GT(fetches, 2);
    // Without its last look at the infrastructure the driver can't give its id back.
    const ProcessResult result = runHost(run + " --fail deviceGetInfrastructure=" + std::to_string(fetches));
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, AllOf(HasSubstr("misuse: freeDevice"), HasSubstr("used wrongly")));
}

// Rows by profile, with the numbers of votes and the blanks of layout taken out.
std::map<std::string, std::string> profileRows(const std::string& arguments) {
    std::map<std::string, std::string> rows;
    for (const std::string& line : runHost("profiles " + arguments).lines()) {
        const std::string row = std::regex_replace(line, std::regex(" #[0-9]+|^ +"), "");
        const size_t end = row.find(' ');
        if (line.starts_with("    ") && end != std::string::npos)
            rows[row.substr(0, end)] =
                std::regex_replace(row.substr(row.find_first_not_of(' ', end)), std::regex(" +"), " ");
    }
    return rows;
}

TEST(Profiles, EachFamilyVotesInItsOwnWay) {
    const std::map<std::string, std::string> expected{
        {"balanced", "- NOM+ SVS2-SVS NOM+ SVS2-SVS - MIN MIN"},
        {"high_performance", "- TURBO SVS2-SVS TURBO SVS2-SVS - TURBO MIN"},
        {"burst", "setting MAX SVS2-SVS MAX - SVS2-SVS MAX MIN"},
        {"llm_decode_burst", "setting refused SVS2-SVS refused - SVS2-SVS refused MIN"},
        {"extreme_power_saver", "- OFF OFF OFF OFF - OFF OFF"},
        {"system_settings", "- - - - - - - -"},
    };
    EXPECT_THAT(profileRows(asMachine("chip538")), testing::IsSupersetOf(expected));
}

TEST(Profiles, OfNewerChipsVoteFurtherRecords) {
    if (asMachine("any").empty()) GTEST_SKIP() << "the library sees the real machine only";
    EXPECT_EQ(profileRows("")["llm_decode_low_power_saver"], "- SVS2|OFF MIN SVS2|OFF MIN - MIN MIN");
    const ProcessResult detail = runHost("profiles llm_decode_burst");
    EXPECT_EQ(detail.status, 0);
    EXPECT_THAT(detail.output, HasSubstr("DRU SVS_L1, CENG TURBO+, DDR perf mode 1"));
}

}  // namespace
