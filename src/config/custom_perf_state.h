// What the document says to vote at one graph state, under the perf profile "custom".
//
// Corner numbers are those of the voltage corner table; in the Exp records and in KORDruControl those of the exp
// voltage corner table. A field that holds INVALID_OPTION_VALUE was refused at load.
#pragma once

#include <cstdint>

namespace zant::kor {

constexpr uint32_t DEFAULT_POWER_MODE = 4;  // power saver
constexpr uint32_t DEFAULT_SLEEP_LATENCY_US = 1000;
constexpr uint32_t DEFAULT_VOLTAGE_CORNER = 32;       // minimum
constexpr uint32_t DEFAULT_EXP_VOLTAGE_CORNER = 256;  // minimum

struct KORDcvsControl {
    bool enableDcvs = true;
    uint32_t powerMode = DEFAULT_POWER_MODE;
    uint32_t sleepLatencyUs = DEFAULT_SLEEP_LATENCY_US;
    uint32_t sleepDisable = 0;
    uint32_t busVoltageCornerMin = DEFAULT_VOLTAGE_CORNER;
    uint32_t busVoltageCornerTarget = DEFAULT_VOLTAGE_CORNER;
    uint32_t busVoltageCornerMax = DEFAULT_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerMin = DEFAULT_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerTarget = DEFAULT_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerMax = DEFAULT_VOLTAGE_CORNER;
};

struct KORDruControl {
    uint32_t druPickDefault = 0;
    uint32_t druPerfMode = 0;  // up to 255
    uint32_t druVoltageCornerMin = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t druVoltageCornerTarget = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t druVoltageCornerMax = DEFAULT_EXP_VOLTAGE_CORNER;
};

struct KORCengControl {
    uint32_t cengVoltageCornerMin = DEFAULT_VOLTAGE_CORNER;
    uint32_t cengVoltageCornerTarget = DEFAULT_VOLTAGE_CORNER;
    uint32_t cengVoltageCornerMax = DEFAULT_VOLTAGE_CORNER;
    uint32_t cengPerfMode = 0;  // up to 255
};

struct KORDcvsExpControl {
    uint32_t powerMode = DEFAULT_POWER_MODE;
    uint32_t sleepLatencyUs = DEFAULT_SLEEP_LATENCY_US;
    uint32_t sleepDisable = 0;
    uint32_t busVoltageCornerMin = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t busVoltageCornerTarget = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t busVoltageCornerMax = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerMin = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerTarget = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t coreVoltageCornerMax = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t corePerfMode = 0;  // up to 255
    uint32_t busPerfMode = 0;   // up to 255
};

struct KORCengExpControl {
    uint32_t cengVoltageCornerMin = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t cengVoltageCornerTarget = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t cengVoltageCornerMax = DEFAULT_EXP_VOLTAGE_CORNER;
    uint32_t cengPerfMode = 0;  // up to 255
};

// The flags tell whether some key of the control was applied.
struct KORCustomPerfState {
    KORDcvsControl dcvs;
    KORDruControl dru;
    KORCengControl ceng;
    KORDcvsExpControl dcvsExp;
    KORCengExpControl cengExp;
    bool dcvsControlSet = false;
    bool druControlSet = false;
    bool cengControlSet = false;
    bool dcvsExpControlSet = false;
    bool cengExpControlSet = false;
};

}  // namespace zant::kor
