// What the getters make of a value, and the tables of names.
#include <gmock/gmock.h>

#include <iomanip>
#include <sstream>
#include <stdexcept>

#include "config/option_tables.h"
#include "config/typed_access.h"
#include "support/loaded_config.h"

namespace zant::test {
namespace {

using testing::ElementsAre;

// What a getter gives for the document's first key, or the text that it throws.
template <class Get>
std::string outcome(const std::string& config, Get get) {
    kor::ConfigDocument document;
    EXPECT_TRUE(kor::loadConfigString(document, config));
    const kor::FlatKeyList keys = kor::collectKeys(document);
    std::ostringstream text;
    try {
        text << std::setprecision(17) << get(keys[0]);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return text.str();
}

struct Getters {
    const char* value;
    const char* asBool;  // null where the getter refuses
    const char* asDouble;
    const char* asString;
    const char* asUint32;
    const char* asUint64;
};

constexpr const char* MAX32 = "4294967295";
constexpr const char* MAX64 = "18446744073709551615";

const Getters GETTERS[] = {
    {"null", nullptr, nullptr, nullptr, nullptr, nullptr},
    {"true", "1", nullptr, nullptr, nullptr, nullptr},
    {"\"a\\u0000b\"", nullptr, nullptr, "a", nullptr, nullptr},
    {"-1", nullptr, "-1", nullptr, nullptr, nullptr},
    {MAX32, nullptr, MAX32, nullptr, MAX32, MAX32},
    {"4294967296", nullptr, "4294967296", nullptr, nullptr, "4294967296"},
    {MAX64, nullptr, "1.8446744073709552e+19", nullptr, nullptr, MAX64},
    {"18446744073709551616", nullptr, "1.8446744073709552e+19", nullptr, MAX32, MAX64},
    {"7.5", nullptr, "7.5", nullptr, nullptr, nullptr},
    {"-7.0", nullptr, "-7", nullptr, nullptr, nullptr},
    {"-0.0", nullptr, "-0", nullptr, "0", "0"},
    {"1e10", nullptr, "10000000000", nullptr, MAX32, "10000000000"},
};

TEST(Values, GettersTakeTheirKindsAndRefuseTheRest) {
    for (const Getters& row : GETTERS) {
        SCOPED_TRACE(row.value);
        // The key's text reaches the second member: a value of any kind, which has no leaf of its own.
        const std::string config = std::string(R"({"a/b":0,"a":{"b":)") + row.value + "}}";
        const auto expected = [](const char* value, const std::string& ending) {
            return value != nullptr ? value : "Value of key (a/b) is not " + ending;
        };
        EXPECT_EQ(outcome(config, kor::getBool), expected(row.asBool, "a bool"));
        EXPECT_EQ(outcome(config, kor::getDouble), expected(row.asDouble, "numeric"));
        EXPECT_EQ(outcome(config, kor::getString), expected(row.asString, "a string"));
        EXPECT_EQ(outcome(config, kor::getUint32), expected(row.asUint32, "convertible to uint32_t"));
        EXPECT_EQ(outcome(config, kor::getUint64), expected(row.asUint64, "convertible to uint64_t"));
    }
}

// Where a table's numbers jump or two names meet, and names that a table lacks.
TEST(Values, NamesHaveTheirWireNumbers) {
    constexpr uint32_t none = 0x7FFFFFFFU;
    const std::tuple<uint32_t (*)(const std::string&), const char*, uint32_t> rows[] = {
        {kor::lookupExpVoltageCorner, "DCVS_EXP_VCORNER_LOW_SVS_D0_1", 314},
        {kor::lookupExpVoltageCorner, "DCVS_EXP_VCORNER_SUPER_TURBO_NO_CPR", 736},
        {kor::lookupExpVoltageCorner, "DCVS_EXP_VCORNER_MAX", 65535},
        {kor::lookupExpVoltageCorner, "DCVS_VOLTAGE_VCORNER_NOM", none},
        {kor::lookupVoltageCorner, "DCVS_VOLTAGE_VCORNER_TURBO_L2", 146},
        {kor::lookupVoltageCorner, "DCVS_VOLTAGE_VCORNER_MAX_VOLTAGE_CORNER", 160},
        {kor::lookupVoltageCorner, "DCVS_EXP_VCORNER_TUR", none},
        {kor::lookupPowerMode, "ZANT_KOR_PERF_INFRASTRUCTURE_POWERMODE_DUTY_CYCLE_MODE", 32},
        {kor::lookupPowerMode, "PERFORMANCE_MODE", none},
    };
    LogCapture log;
    for (const auto& [lookup, name, number] : rows) EXPECT_EQ(lookup(name), number) << name;
    EXPECT_EQ(kor::lookupGraphState("deinit_done"), 5U);
    EXPECT_FALSE(kor::lookupGraphState("INIT_START"));
    EXPECT_EQ(kor::checkClockPerfMode(255), 255U);
    EXPECT_EQ(kor::checkClockPerfMode(256), none);
    EXPECT_THAT(log.texts(),
                ElementsAre("1 Invalid Exp Voltage Corner Passed: DCVS_VOLTAGE_VCORNER_NOM",
                            "1 Invalid Voltage Corner Passed : DCVS_EXP_VCORNER_TUR",
                            "1 Invalid Power Mode : PERFORMANCE_MODE", "1 Invalid graph state string: INIT_START",
                            "1 Invalid Clock Perf Mode: 256 (exceeds CLK_PERF_MAX 0xFF)"));
}

TEST(Values, PerfProfilesHaveTheirWireNumbers) {
    const LoadedConfig loaded = loadDocument(
        R"({"graphs":[{"perf_profile":"low_balanced"},{"perf_profile":"burst"},{"perf_profile":"llm_decode_burst"},)"
        R"({"perf_profile":"extreme_power_saver"},{"perf_profile":"system_settings"},{"perf_profile":"custom"},)"
        R"({"perf_profile":"High_Performance"}]})");
    EXPECT_TRUE(loaded.result);
    std::vector<uint32_t> numbers;
    for (const auto& graph : loaded.graphs) numbers.push_back(graph.perfProfile);
    EXPECT_THAT(numbers, ElementsAre(0U, 5U, 6U, 16U, 20U, 22U, 3U));
    EXPECT_THAT(loaded.texts, ElementsAre("1 Invalid perf_profile High_Performance passed, Setting perf_profile to "
                                          "default HIGH_PERFORMANCE"));
}

}  // namespace
}  // namespace zant::test
