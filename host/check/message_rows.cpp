#include "check/message_rows.h"

namespace runhost {

namespace {

using enum Place;
constexpr Severity ERROR = Severity::ERROR;
constexpr Severity WARNING = Severity::WARNING;

// clang-format off: a table
constexpr MessageRow ROWS[] = {
    {"Exception occurred: Value of key (", ") is not convertible to uint32_t", BY_KEY, ERROR, "", "",
     "must be a whole number from 0 to 4294967295, not {}", Repair::Kind::REPLACE, "0"},
    {"Exception occurred: Value of key (", ") is not convertible to uint64_t", BY_KEY, ERROR, "", "",
     "must be a whole number from 0 to 18446744073709551615, not {}", Repair::Kind::REPLACE, "0"},
    {"Exception occurred: Value of key (", ") is not a bool", BY_KEY, ERROR, "", "", "must be true or false, not {}",
     Repair::Kind::REPLACE, "false"},
    {"Exception occurred: Value of key (", ") is not a string", BY_KEY, ERROR, "", "", "must be a string, not {}",
     Repair::Kind::REMOVE, ""},
    {"Exception occurred: Value of key (", ") is not numeric", BY_KEY, ERROR, "", "", "must be a number, not {}",
     Repair::Kind::REPLACE, "0"},
    {"Exception occurred: Invalid key: ", "", BY_KEY, ERROR, "", "",
     "cannot be reached: names with '/' or '~' are not read", Repair::Kind::REMOVE, ""},
    {"Invalid key: ", "", BY_KEY, ERROR, "", "", "cannot be reached: names with '/' or '~' are not read",
     Repair::Kind::REMOVE, ""},
    {"Invalid graph state string: ", "", BY_TEXT, ERROR, "graphState", "", "must name a graph state, not {}",
     Repair::Kind::REPLACE, ""},
    {"Unknown Key: ", " provided in KOR extensions config", BY_KEY, ERROR, "", "", "is an unknown key",
     Repair::Kind::REMOVE, ""},
    {"Unknown DRU Op Bounding key: ", "", BY_KEY, ERROR, "", "", "is an unknown key", Repair::Kind::REMOVE, ""},
    {"Invalid lora_preload_buffer_group index in key: ", "", BY_KEY, ERROR, "", "",
     "cannot be read as a member of a group", Repair::Kind::REMOVE, ""},
    {"Invalid perf_profile ", " passed, Setting perf_profile to default HIGH_PERFORMANCE", BY_TEXT, ERROR,
     "perf_profile", "", "must name a perf profile, not {} (high_performance is taken instead)", Repair::Kind::REPLACE,
     ""},
    {"Invalid Voltage Corner Passed : ", "", BY_TEXT, ERROR, "VoltageCorner", "", "must name a voltage corner, not {}",
     Repair::Kind::REPLACE, ""},
    {"Invalid Exp Voltage Corner Passed: ", "", BY_TEXT, ERROR, "VoltageCorner", "",
     "must name an expanded voltage corner, not {}", Repair::Kind::REPLACE, ""},
    {"Invalid Power Mode : ", "", BY_TEXT, ERROR, "powerMode", "", "must name a power mode, not {}",
     Repair::Kind::REPLACE, ""},
    {"Error invalid dsp_arch value: ", "", BY_TEXT, ERROR, "dsp_arch", "",
     "must be \"v\" and the architecture's number, not {}", Repair::Kind::REPLACE, ""},
    {"Invalid pd_session option: ", " provided, Setting default pd_session = unsigned", BY_TEXT, ERROR, "pd_session",
     "", "must be \"signed\" or \"unsigned\", not {}", Repair::Kind::REPLACE, ""},
    {"Profiling level ", " is not supported", BY_TEXT, WARNING, "profiling_level", "",
     "must be \"linting\", not {}: it stays off", Repair::Kind::REPLACE, ""},
    {"Invalid Clock Perf Mode: ", " (exceeds CLK_PERF_MAX 0xFF)", BY_NUMBER, ERROR, "PerfMode", "",
     "must be from 0 to 255, not {}", Repair::Kind::REPLACE, "0"},
    {"Invalid device_type value: ", ". Must be 0 (on-chip) or 1 (off-chip)", BY_NUMBER, ERROR, "device_type", "",
     "must be 0 (on-chip) or 1 (off-chip), not {}", Repair::Kind::REPLACE, "0"},
    {"spad_mb: ", "; Value, in MiB, would cause overflow once converted to bytes", BY_NUMBER, ERROR, "spad_mb", "",
     "must be at most 4095, not {}", Repair::Kind::REPLACE, "0"},
    {"Ignoring 'spad_mb', since 'spad_size' overrides and has been processed", "", BY_WORD, WARNING, "spad_mb", "",
     "is ignored: \"spad_size\" of the same graph counts", Repair::Kind::REMOVE, ""},
    {"Found deprecated graph_splitting_enabled config.",
     " Use graph_splitting_configs/graph_splitting_enabled instead.", BY_WORD, WARNING, "graph_splitting_enabled",
     "graph_splitting_configs", "is deprecated here: write it into \"graph_splitting_configs\"", Repair::Kind::REMOVE,
     ""},
    {"Performance profile CUSTOM requires custom configuration of Core and Bus voltage corners.", "", FIRST_NAME, ERROR,
     "perf_profile", "", "is {}, which needs a \"custom\" member with corners for core and bus", Repair::Kind::NOTHING,
     ""},
    {"Custom configuration of Bus and Core voltage corners requires perfProfile specification as CUSTOM", "",
     FIRST_NAME, ERROR, "custom", "", "with corners needs a \"perf_profile\" of \"custom\" beside it",
     Repair::Kind::NOTHING, ""},
    // The check itself looks into these.
    {"Exception occurred while loading backend extensions config: ", "", NOWHERE, ERROR, "", "", "",
     Repair::Kind::NOTHING, ""},
    {"Input ", " is not valid JSON, check format", NOWHERE, ERROR, "", "", "", Repair::Kind::NOTHING, ""},
    {"KOR backend extensions failed to parse config.", "", NOWHERE, ERROR, "", "", "", Repair::Kind::NOTHING, ""},
    {"backend config file schema validation failed", "", NOWHERE, ERROR, "", "", "", Repair::Kind::NOTHING, ""},
    {"Input file does not adhere to schema, error in key: ", "", NOWHERE, ERROR, "", "", "", Repair::Kind::NOTHING, ""},
    {"Schema error:", "", NOWHERE, ERROR, "", "", "", Repair::Kind::NOTHING, ""},
};
// clang-format on

}  // namespace

std::span<const MessageRow> messageRows() {
    return ROWS;
}

}  // namespace runhost
