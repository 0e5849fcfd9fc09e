#include "perf/vote_records.h"

namespace zant::kor {

namespace {

template <class Control>
PowerCorners busCorners(const Control& control) {
    return {control.busVoltageCornerMin, control.busVoltageCornerTarget, control.busVoltageCornerMax};
}

template <class Control>
PowerCorners coreCorners(const Control& control) {
    return {control.coreVoltageCornerMin, control.coreVoltageCornerTarget, control.coreVoltageCornerMax};
}

void fillExpanded(PowerConfigRecord& record, const KORDcvsExpControl& control) {
    record.dcvsExp.option = POWER_OPTION_DCVS_EXP;
    record.dcvsExp.powerMode = control.powerMode;
    record.dcvsExp.sleepLatencyValid = 1;
    record.dcvsExp.sleepLatency = control.sleepLatencyUs;
    record.dcvsExp.sleepDisableValid = 1;
    record.dcvsExp.sleepDisable = control.sleepDisable;
    record.dcvsExp.busCornersValid = 1;
    record.dcvsExp.bus = busCorners(control);
    record.dcvsExp.coreCornersValid = 1;
    record.dcvsExp.core = coreCorners(control);
    record.dcvsExp.corePerfMode = control.corePerfMode;
    record.dcvsExp.busPerfMode = control.busPerfMode;
}

void fillLegacy(PowerConfigRecord& record, const KORDcvsControl& control) {
    fillDcvs(record, control.enableDcvs, control.powerMode, control.sleepLatencyUs, busCorners(control),
             coreCorners(control));
    record.dcvs.sleepDisableValid = 1;
    record.dcvs.sleepDisable = control.sleepDisable;
}

}  // namespace

void fillCustomDcvs(PowerConfigRecord& record, const KORCustomPerfState& state) {
    if (state.dcvsExpControlSet) {
        fillExpanded(record, state.dcvsExp);
    } else {
        fillLegacy(record, state.dcvs);
    }
}

}  // namespace zant::kor
