// The two forms of "custom", and a core's own "druControl".
#include <array>

#include "config/config_parser.h"
#include "config/option_tables.h"
#include "config/section_walk.h"

namespace zant::kor {

namespace {

// One key of a control record. store returns false for a name that its table lacks; the field then holds
// INVALID_OPTION_VALUE.
template <class Control>
struct ControlRow {
    KeyWord word;
    bool (*store)(const FlatKey& key, Control& control);
};

template <auto Field, class Control>
bool storeBool(const FlatKey& key, Control& control) {
    control.*Field = getBool(key);
    return true;
}

template <auto Field, class Control>
bool storeNumber(const FlatKey& key, Control& control) {
    control.*Field = getUint32(key);
    return true;
}

template <auto Field, class Control>
bool storeClockPerfMode(const FlatKey& key, Control& control) {
    control.*Field = checkClockPerfMode(getUint32(key));
    return true;
}

template <auto Field, auto Lookup, class Control>
bool storeName(const FlatKey& key, Control& control) {
    control.*Field = Lookup(getString(key));
    return control.*Field != INVALID_OPTION_VALUE;
}

template <auto Field, class Control>
bool storeCorner(const FlatKey& key, Control& control) {
    return storeName<Field, lookupVoltageCorner>(key, control);
}

template <auto Field, class Control>
bool storeExpCorner(const FlatKey& key, Control& control) {
    return storeName<Field, lookupExpVoltageCorner>(key, control);
}

template <auto Field, class Control>
bool storePowerMode(const FlatKey& key, Control& control) {
    return storeName<Field, lookupPowerMode>(key, control);
}

constexpr auto DCVS_ROWS = std::to_array<ControlRow<KORDcvsControl>>({
    {word("enableDcvs"), storeBool<&KORDcvsControl::enableDcvs>},
    {word("powerMode"), storePowerMode<&KORDcvsControl::powerMode>},
    {word("sleep_latency_us"), storeNumber<&KORDcvsControl::sleepLatencyUs>},
    // A boolean that the vote carries as a number.
    {word("sleep_disable"), storeBool<&KORDcvsControl::sleepDisable>},
    {word("busVoltageCornerMin"), storeCorner<&KORDcvsControl::busVoltageCornerMin>},
    {word("busVoltageCornerTarget"), storeCorner<&KORDcvsControl::busVoltageCornerTarget>},
    {word("busVoltageCornerMax"), storeCorner<&KORDcvsControl::busVoltageCornerMax>},
    {word("coreVoltageCornerMin"), storeCorner<&KORDcvsControl::coreVoltageCornerMin>},
    {word("coreVoltageCornerTarget"), storeCorner<&KORDcvsControl::coreVoltageCornerTarget>},
    {word("coreVoltageCornerMax"), storeCorner<&KORDcvsControl::coreVoltageCornerMax>},
});

constexpr auto DCVS_EXP_ROWS = std::to_array<ControlRow<KORDcvsExpControl>>({
    {word("powerMode"), storePowerMode<&KORDcvsExpControl::powerMode>},
    {word("sleep_latency_us"), storeNumber<&KORDcvsExpControl::sleepLatencyUs>},
    {word("sleepDisable"), storeNumber<&KORDcvsExpControl::sleepDisable>},
    {word("busVoltageCornerMin"), storeExpCorner<&KORDcvsExpControl::busVoltageCornerMin>},
    {word("busVoltageCornerTarget"), storeExpCorner<&KORDcvsExpControl::busVoltageCornerTarget>},
    {word("busVoltageCornerMax"), storeExpCorner<&KORDcvsExpControl::busVoltageCornerMax>},
    {word("coreVoltageCornerMin"), storeExpCorner<&KORDcvsExpControl::coreVoltageCornerMin>},
    {word("coreVoltageCornerTarget"), storeExpCorner<&KORDcvsExpControl::coreVoltageCornerTarget>},
    {word("coreVoltageCornerMax"), storeExpCorner<&KORDcvsExpControl::coreVoltageCornerMax>},
    {word("corePerfMode"), storeClockPerfMode<&KORDcvsExpControl::corePerfMode>},
    {word("busPerfMode"), storeClockPerfMode<&KORDcvsExpControl::busPerfMode>},
});

constexpr auto DRU_ROWS = std::to_array<ControlRow<KORDruControl>>({
    {word("druPerfMode"), storeClockPerfMode<&KORDruControl::druPerfMode>},
    {word("druPickDefault"), storeNumber<&KORDruControl::druPickDefault>},
    {word("druVoltageCornerMin"), storeExpCorner<&KORDruControl::druVoltageCornerMin>},
    {word("druVoltageCornerTarget"), storeExpCorner<&KORDruControl::druVoltageCornerTarget>},
    {word("druVoltageCornerMax"), storeExpCorner<&KORDruControl::druVoltageCornerMax>},
});

constexpr auto CENG_ROWS = std::to_array<ControlRow<KORCengControl>>({
    {word("cengPerfMode"), storeClockPerfMode<&KORCengControl::cengPerfMode>},
    {word("cengVoltageCornerMin"), storeCorner<&KORCengControl::cengVoltageCornerMin>},
    {word("cengVoltageCornerTarget"), storeCorner<&KORCengControl::cengVoltageCornerTarget>},
    {word("cengVoltageCornerMax"), storeCorner<&KORCengControl::cengVoltageCornerMax>},
});

constexpr auto CENG_EXP_ROWS = std::to_array<ControlRow<KORCengExpControl>>({
    {word("cengPerfMode"), storeClockPerfMode<&KORCengExpControl::cengPerfMode>},
    {word("cengVoltageCornerMin"), storeExpCorner<&KORCengExpControl::cengVoltageCornerMin>},
    {word("cengVoltageCornerTarget"), storeExpCorner<&KORCengExpControl::cengVoltageCornerTarget>},
    {word("cengVoltageCornerMax"), storeExpCorner<&KORCengExpControl::cengVoltageCornerMax>},
});

template <class Rows, class Control>
bool parseControl(const Rows& rows, const FlatKey& key, Control& control) {
    const auto* hit = firstHit(rows, key);
    return hit != nullptr && hit->store(key, control);
}

bool parseDcvsControl(const FlatKey& key, KORDcvsControl& control) {
    return parseControl(DCVS_ROWS, key, control);
}
bool parseDruControl(const FlatKey& key, KORDruControl& control) {
    return parseControl(DRU_ROWS, key, control);
}
bool parseCengControl(const FlatKey& key, KORCengControl& control) {
    return parseControl(CENG_ROWS, key, control);
}
bool parseDcvsExpControl(const FlatKey& key, KORDcvsExpControl& control) {
    return parseControl(DCVS_EXP_ROWS, key, control);
}
bool parseCengExpControl(const FlatKey& key, KORCengExpControl& control) {
    return parseControl(CENG_EXP_ROWS, key, control);
}

// A control of an array item: which record it goes to and which flag says so.
struct ItemRow {
    KeyWord word;
    bool (*parse)(const FlatKey& key, KORCustomPerfState& state);
};

template <auto Parse, auto Control, auto Flag>
bool parseInto(const FlatKey& key, KORCustomPerfState& state) {
    if (!Parse(key, state.*Control)) return false;
    state.*Flag = true;
    return true;
}

using State = KORCustomPerfState;
constexpr auto ITEM_ROWS = std::to_array<ItemRow>({
    {word("dcvsControl"), parseInto<parseDcvsControl, &State::dcvs, &State::dcvsControlSet>},
    {word("druControl"), parseInto<parseDruControl, &State::dru, &State::druControlSet>},
    {word("cengControl"), parseInto<parseCengControl, &State::ceng, &State::cengControlSet>},
    {word("dcvsExpControl"), parseInto<parseDcvsExpControl, &State::dcvsExp, &State::dcvsExpControlSet>},
    {word("cengExpControl"), parseInto<parseCengExpControl, &State::cengExp, &State::cengExpControlSet>},
});

using StateNumbers = std::array<uint32_t, 3>;
constexpr StateNumbers START_STATES = {GRAPH_STATE_INFERENCE_START, GRAPH_STATE_INIT_START, GRAPH_STATE_DEINIT_START};
constexpr StateNumbers DONE_STATES = {GRAPH_STATE_INFERENCE_DONE, GRAPH_STATE_INIT_DONE, GRAPH_STATE_DEINIT_DONE};
constexpr StateNumbers DRU_STATES = {GRAPH_STATE_INIT_START, GRAPH_STATE_INFERENCE_START, GRAPH_STATE_DEINIT_START};

// Stops at the first state that refuses the key.
template <auto Parse, auto Control>
bool parseForStates(const FlatKey& key, KORCoreConfig& core, const StateNumbers& states) {
    for (const uint32_t state : states) {
        if (!Parse(key, core.customPerfStates[state].*Control)) return false;
    }
    return true;
}

void setFlag(KORCoreConfig& core, const StateNumbers& states, bool State::*flag) {
    for (const uint32_t state : states) core.customPerfStates[state].*flag = true;
}

bool parseLegacyDcvs(const FlatKey& key, KORCoreConfig& core) {
    constexpr auto parseFor = parseForStates<parseDcvsControl, &State::dcvs>;
    if (key.holds(word("sustainVote"))) {
        core.sustainInferencePerfState = getBool(key);
        return true;
    }
    if (key.holds(word("start"))) {
        setFlag(core, START_STATES, &State::dcvsControlSet);
        return parseFor(key, core, START_STATES);
    }
    if (key.holds(word("done"))) {
        setFlag(core, DONE_STATES, &State::dcvsControlSet);
        return parseFor(key, core, DONE_STATES);
    }
    if (key.holds(word("enableDcvs")) || key.holds(word("powerMode")) || key.holds(word("sleep_latency_us")) ||
        key.holds(word("sleep_disable"))) {
        return parseFor(key, core, START_STATES) && parseFor(key, core, DONE_STATES);
    }
    return true;
}

}  // namespace

bool parseLegacyCustomPerf(const FlatKey& key, KORCoreConfig& core) {
    if (key.holds(word("custom/dcvsControl"))) return parseLegacyDcvs(key, core);
    if (!key.holds(word("druControl"))) return false;
    setFlag(core, DRU_STATES, &State::druControlSet);
    return parseForStates<parseDruControl, &State::dru>(key, core, DRU_STATES);
}

// A new item's first key flushes the one before it into the core that is being read, and the document's last item goes
// into the first device's: with arrays in several devices, the last item of each goes to the next one's core.
bool KORConfigParser::parseCustomPerfItem(const FlatKey& key, KORCoreConfig& core) {
    const IndexElement element = key.after(KeyElement::custom);
    if (!element.isDigits()) return false;
    const int32_t index = element.toIndex();
    if (index != lastCustomPerfIndex) {
        flushPendingCustomPerf(core);
        lastCustomPerfIndex = index;
        pendingCustomPerfValid = true;
    }
    return applyCustomPerfKey(key, core);
}

bool KORConfigParser::applyCustomPerfKey(const FlatKey& key, KORCoreConfig& core) {
    if (key.holds(word("sustainInferencePerfState"))) {
        core.sustainInferencePerfState = getBool(key);
        return true;
    }
    if (key.holds(word("graphState"))) {
        if (const auto state = lookupGraphState(getString(key))) pendingGraphStates.push_back(*state);
        return true;
    }
    const ItemRow* hit = firstHit(ITEM_ROWS, key);
    return hit != nullptr && hit->parse(key, pendingCustomPerf);
}

// An item's graphState may stand behind its controls: hence the item is kept until it is over.
void KORConfigParser::flushPendingCustomPerf(KORCoreConfig& core) {
    if (!pendingCustomPerfValid) return;
    if (pendingGraphStates.empty()) {
        ZANT_LOG_WARN("Graph state in a backend config must be set to apply custom performance configuration\n");
        return;
    }
    for (const uint32_t state : pendingGraphStates) core.customPerfStates[state] = pendingCustomPerf;
    pendingCustomPerfValid = false;
    pendingGraphStates.clear();
    pendingCustomPerf = KORCustomPerfState();
}

}  // namespace zant::kor
