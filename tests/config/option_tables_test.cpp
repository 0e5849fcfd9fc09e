#include "config/option_tables.h"

#include <gmock/gmock.h>

#include <sstream>

#include "support/loaded_config.h"

namespace zant::test {
namespace {

using testing::ElementsAre;

// Where a table's numbers jump or two names meet.
TEST(OptionTables, NamesHaveTheirWireNumbers) {
    const std::pair<const char*, uint32_t> exp[] = {
        {"DISABLE", 0},       {"MIN", 256},      {"LOW_SVS_D1", 312}, {"LOW_SVS_D0_1", 314},       {"LOW_SVS_L2", 352},
        {"SVS_L0_2", 402},    {"SVS_L2_0", 481}, {"NOM_L1", 576},     {"TUR_L1_2", 675},           {"TUR_L4", 708},
        {"DEFINED_MAX", 736}, {"TUR_L5", 712},   {"MAX", 65535},      {"SUPER_TURBO_NO_CPR", 736}, {"SUPER_TURBO", 720},
    };
    for (const auto& [name, number] : exp) {
        EXPECT_EQ(kor::lookupExpVoltageCorner(std::string("DCVS_EXP_VCORNER_") + name), number) << name;
    }
    const std::pair<const char*, uint32_t> corners[] = {
        {"CORNER_DISABLE", 16},    {"VCORNER_MIN_VOLTAGE_CORNER", 32}, {"VCORNER_TURBO_PLUS", 144},
        {"VCORNER_TURBO_L2", 146}, {"VCORNER_TURBO_L5", 149},          {"VCORNER_MAX_VOLTAGE_CORNER", 160},
    };
    for (const auto& [name, number] : corners) {
        EXPECT_EQ(kor::lookupVoltageCorner(std::string("DCVS_VOLTAGE_") + name), number) << name;
    }
    EXPECT_EQ(kor::lookupPowerMode("ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_POWER_SAVER_AGGRESSIVE_MODE"), 8U);
    EXPECT_EQ(kor::lookupPowerMode("ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_DUTY_CYCLE_MODE"), 32U);
    const char* const states[] = {"init_start",     "init_done",    "inference_start",
                                  "inference_done", "deinit_start", "deinit_done"};
    for (uint32_t number = 0; number < 6; ++number) EXPECT_EQ(kor::lookupGraphState(states[number]), number);
}

TEST(OptionTables, UnknownNamesCostOneLine) {
    LogCapture log;
    EXPECT_EQ(kor::lookupVoltageCorner("DCVS_EXP_VCORNER_TUR"), 0x7FFFFFFFU);
    EXPECT_EQ(kor::lookupExpVoltageCorner("DCVS_VOLTAGE_VCORNER_NOM"), 0x7FFFFFFFU);
    EXPECT_EQ(kor::lookupPowerMode("PERFORMANCE_MODE"), 0x7FFFFFFFU);
    EXPECT_FALSE(kor::lookupGraphState("INIT_START"));
    EXPECT_EQ(kor::checkClockPerfMode(255), 255U);
    EXPECT_EQ(kor::checkClockPerfMode(256), 0x7FFFFFFFU);
    EXPECT_THAT(log.texts(),
                ElementsAre("1 Invalid Voltage Corner Passed : DCVS_EXP_VCORNER_TUR",
                            "1 Invalid Exp Voltage Corner Passed: DCVS_VOLTAGE_VCORNER_NOM",
                            "1 Invalid Power Mode : PERFORMANCE_MODE", "1 Invalid graph state string: INIT_START",
                            "1 Invalid Clock Perf Mode: 256 (exceeds CLK_PERF_MAX 0xFF)"));
}

TEST(OptionTables, PerfProfilesOfGraphsAndCores) {
    std::istringstream names(
        "low_balanced balanced default high_performance sustained_high_performance burst llm_decode_burst "
        "llm_decode_low_balanced llm_decode_balanced llm_decode_default llm_decode_high_performance "
        "llm_decode_sustained_high_performance llm_decode_extreme_power_saver llm_decode_low_power_saver "
        "llm_decode_power_saver llm_decode_high_power_saver extreme_power_saver low_power_saver power_saver "
        "high_power_saver system_settings");
    uint32_t number = 0;
    for (std::string name; names >> name; ++number) {
        const std::string member = "[{\"perf_profile\":\"" + name + "\"}]";
        const LoadedConfig loaded =
            loadDocument("{\"devices\":[{\"cores\":" + member + "}],\"graphs\":" + member + "}", ZANT_LOG_LEVEL_INFO);
        EXPECT_EQ(loaded.devices.at(0).core.perfProfile, number);
        EXPECT_EQ(loaded.graphs.at(0).perfProfile, number);
        const std::string line = "3 Key: perf profile, Value: " + name + " ";
        const std::string stored = "3 Key: perf_profile, Value: " + std::to_string(number);
        EXPECT_THAT(loaded.texts, ElementsAre(line, stored, line, stored));
    }
    EXPECT_EQ(number, 21U);
    EXPECT_EQ(loadDocument(R"({"graphs":[{"perf_profile":"custom"}]})").graphs.at(0).perfProfile, 22U);
    const LoadedConfig unknown = loadDocument(R"({"graphs":[{"perf_profile":"High_Performance"}]})");
    EXPECT_TRUE(unknown.result);
    EXPECT_EQ(unknown.graphs.at(0).perfProfile, 3U);
    EXPECT_THAT(unknown.texts, ElementsAre("1 Invalid perf_profile High_Performance passed, Setting perf_profile to "
                                           "default HIGH_PERFORMANCE"));
}

}  // namespace
}  // namespace zant::test
