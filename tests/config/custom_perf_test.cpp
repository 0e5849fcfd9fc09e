// The two forms of "custom", a core's own druControl, and the checks that follow the sections.
#include <gmock/gmock.h>

#include <cstring>
#include <sstream>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using State = kor::KORCustomPerfState;
using testing::ElementsAre;
using testing::IsEmpty;

// A control's numbers in the order of its record.
template <class Control>
std::string show(const Control& control) {
    uint32_t words[sizeof(Control) / 4];
    std::memcpy(words, &control, sizeof(words));
    if constexpr (requires { control.enableDcvs; }) words[0] = control.enableDcvs;
    std::string text;
    for (const uint32_t word : words) text += (text.empty() ? "" : " ") + std::to_string(word);
    return text;
}

std::string showAll(const State& s) {
    return show(s.dcvs) + "|" + show(s.dru) + "|" + show(s.ceng) + "|" + show(s.dcvsExp) + "|" + show(s.cengExp);
}

// Which controls of each state were applied, one letter each.
std::string flags(const LoadedConfig& loaded) {
    std::string text;
    for (const State& s : loaded.devices.at(0).core.customPerfStates) {
        text += std::string(s.dcvsControlSet ? "d" : "") + (s.druControlSet ? "r" : "") +
                (s.cengControlSet ? "c" : "") + (s.dcvsExpControlSet ? "D" : "") + (s.cengExpControlSet ? "C" : "") +
                "|";
    }
    return text;
}

const State& stateOf(const LoadedConfig& loaded, size_t number) {
    return loaded.devices.at(0).core.customPerfStates.at(number);
}

// Behind other members: the corners of the units, each with the next name of the table; in a pair with "done" for the
// object form.
std::string corners(const std::string& table, const std::vector<std::string>& units, const std::string& done = "") {
    std::istringstream names(table == "EXP" ? "MIN RET MIN_SVS LOW_SVS SVS NOM"
                                            : "SVS2 SVS SVS_PLUS NOM NOM_PLUS TURBO");
    std::string text, name;
    for (const std::string& unit : units) {
        for (const char* end : {"Min", "Target", "Max"}) {
            names >> name;
            const std::string value = "\"DCVS_" + table + "_VCORNER_" + name + '"';
            text += ",\"" + unit + "VoltageCorner" + end + "\":";
            text += done.empty() ? value : "{\"done\":\"" + done + "\",\"start\":" + value + "}";
        }
    }
    return text;
}
const std::string PLAIN = corners("VOLTAGE", {"bus", "core"});
const std::string EXP = corners("EXP", {"bus", "core"});
const std::string UNASKED =
    "1 Custom configuration of Bus and Core voltage corners requires perfProfile specification as CUSTOM";
const std::string MODE = R"(,"powerMode":"ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_PERFORMANCE_MODE")";

LoadedConfig loadCore(const std::string& members, const std::string& profile = "custom") {
    return loadDocument(R"({"devices":[{"cores":[{"perf_profile":")" + profile + "\"," + members + "}]}]}");
}

TEST(CustomPerf, AnItemFillsTheStatesThatItNames) {
    const LoadedConfig loaded =
        loadCore(R"("custom":[{"dcvsControl":{"enableDcvs":false,"sleep_latency_us":7,"sleep_disable":true)" + MODE +
                 PLAIN + R"(},"druControl":{"druPickDefault":1,"druPerfMode":255)" + corners("EXP", {"dru"}) +
                 R"(},"cengControl":{"cengPerfMode":2)" + corners("VOLTAGE", {"ceng"}) +
                 R"(},"dcvsExpControl":{"sleep_latency_us":8,"sleepDisable":9,"corePerfMode":3,"busPerfMode":4)" +
                 MODE + EXP + R"(},"cengExpControl":{"cengPerfMode":5)" + corners("EXP", {"ceng"}) +
                 R"(},"sustainInferencePerfState":true,"graphState":["init_start","inference_start"]}])");
    EXPECT_TRUE(loaded.result);
    EXPECT_THAT(loaded.texts, IsEmpty());
    EXPECT_EQ(flags(loaded), "drcDC||drcDC||||");
    EXPECT_TRUE(loaded.devices[0].core.sustainInferencePerfState);
    for (const size_t number : {0U, 2U}) {
        EXPECT_EQ(showAll(stateOf(loaded, number)),
                  "0 16 7 1 48 64 80 96 112 128|1 255 256 272 304|48 64 80 2|16 8 9 256 272 304 320 384 512 3 4|"
                  "256 272 304 5");
    }
    EXPECT_EQ(showAll(stateOf(loaded, 1)),
              "1 4 1000 0 32 32 32 32 32 32|0 0 256 256 256|32 32 32 0|4 1000 0 256 256 256 256 256 256 0 0|"
              "256 256 256 0");
}

TEST(CustomPerf, TheObjectFormFillsStartAndDoneStates) {
    const LoadedConfig loaded =
        loadCore(R"("custom":{"dcvsControl":{"x":1,"sustainVote":true,"enableDcvs":false,"sleep_latency_us":3,)"
                 R"("sleep_disable":true)" +
                 MODE + corners("VOLTAGE", {"bus", "core"}, "DCVS_VOLTAGE_CORNER_DISABLE") + "}}");
    EXPECT_TRUE(loaded.result);
    EXPECT_TRUE(loaded.devices.at(0).core.sustainInferencePerfState);
    EXPECT_EQ(flags(loaded), "d|d|d|d|d|d|");
    for (size_t number = 0; number < 6; ++number) {
        EXPECT_EQ(show(stateOf(loaded, number).dcvs),
                  number % 2 == 0 ? "0 16 3 1 48 64 80 96 112 128" : "0 16 3 1 16 16 16 16 16 16");
    }
}

TEST(CustomPerf, ItemsReplaceStatesWholeAcrossCores) {
    const LoadedConfig two =
        loadDocument(R"({"devices":[{"cores":[{"perf_profile":"custom","druControl":{"druPickDefault":5},"custom":[)"
                     R"({"druControl":{"druPickDefault":6},"graphState":["init_done","init_start"],)"
                     R"("dcvsControl":{"enableDcvs":true)" +
                     PLAIN + R"(}}]},{"custom":[{"graphState":["inference_done"],"cengControl":{"cengPerfMode":1)" +
                     corners("VOLTAGE", {"ceng"}) +
                     R"(}}]},{"custom":[{"graphState":["deinit_start"]},{"graphState":["init_done"]}]}]}]})");
    EXPECT_TRUE(two.result);
    // Items of one index in several cores go on filling one pending record; the last item replaced init_done whole.
    EXPECT_EQ(flags(two), "drc||r|drc|drc||");
    EXPECT_EQ(stateOf(two, 0).dru.druPickDefault, 6U);
    EXPECT_EQ(stateOf(two, 2).dru.druPickDefault, 5U);
}

TEST(CustomPerf, Refusals) {
    const std::string corner = "1 Invalid Exp Voltage Corner Passed: x";
    const std::string item = R"("custom":[{"graphState":["init_done"],)";
    const std::string legacy = R"("dcvsControl":{"enableDcvs":false)" + corners("VOLTAGE", {"bus", "core"}, "x") + "}}";
    const std::tuple<std::string, bool, std::string, std::vector<std::string>> cases[] = {
        // A clock mode is stored as invalid and the section goes on; a name ends it, except from a core's druControl.
        {item + R"("druControl":{"druPerfMode":300}}])",
         true,
         "|r|||||",
         {"1 Invalid Clock Perf Mode: 300 (exceeds CLK_PERF_MAX 0xFF)"}},
        {R"("druControl":{"druVoltageCornerMin":"x","druPerfMode":1})", true, "r||r||r||", {corner}},
        {item + R"("druControl":{"druVoltageCornerMin":"x"}}])", false, "||||||", {corner}},
        {item + R"("druControl":{"x":1}}])", false, "||||||", {}},
        {R"("custom":[{"x":1,"graphState":["init_done"]}])",
         false,
         "||||||",
         {"2 Graph state in a backend config must be set to apply custom performance configuration\n"}},
        {R"("custom":{"x":1,)" + legacy, false, "||||||", {}},
        {R"("custom":{)" + legacy, false, "|d||d||d|", {"1 Invalid Voltage Corner Passed : x", UNASKED}},
    };
    for (const auto& [members, result, applied, texts] : cases) {
        const LoadedConfig loaded = loadCore(members, "burst");
        EXPECT_EQ(loaded.result, result) << members;
        EXPECT_EQ(flags(loaded), applied) << members;
        EXPECT_EQ(loaded.texts, texts) << members;
    }
    EXPECT_EQ(show(stateOf(loadCore(std::get<0>(cases[0])), 1).dru), "0 2147483647 256 256 256");
    const LoadedConfig core = loadCore(std::get<0>(cases[1]));
    EXPECT_EQ(show(stateOf(core, 0).dru), "0 1 2147483647 256 256");
    EXPECT_EQ(show(stateOf(core, 2).dru), "0 1 256 256 256");
}

TEST(CustomPerf, ProfileAndCornersGoTogether) {
    const std::string needs =
        "1 Performance profile CUSTOM requires custom configuration of Core and Bus voltage corners.";
    const std::string custom = R"({"cores":[{"perf_profile":"custom"}]})";
    const LoadedConfig burst =
        loadCore(R"("custom":[{"graphState":["init_done"],"dcvsControl":{"enableDcvs":true)" + PLAIN + "}}]", "burst");
    EXPECT_FALSE(burst.result);
    EXPECT_THAT(burst.texts, ElementsAre(UNASKED));
    // Only the first device is checked, and the check comes whatever the sections said.
    checkComplaints({
        {R"({"devices":[{"cores":[{"perf_profile":"custom","druControl":{"druPerfMode":1}}]}]})", false, {needs}},
        {R"({"devices":[{"device_id":1},)" + custom + "]}", true, {}},
        {R"({"devices":[)" + custom + R"(],"graphs":[{"O":-1}]})",
         false,
         {"1 Exception occurred: Value of key (graphs/0/O) is not convertible to uint32_t", needs}},
    });
}

}  // namespace
}  // namespace zant::test
