#include "power_check.h"

#include <algorithm>
#include <iterator>

#include "zant_sim/sim_backend.h"

namespace zant::sim {

namespace {

struct OptionRow {
    uint32_t option;
    uint32_t words;  // that the option uses
    bool namesId;    // word 1 is the power config id
};

constexpr OptionRow OPTIONS[] = {
    {POWER_OPTION_DCVS, 17, true},     {POWER_OPTION_RPC_POLLING, 2, false},   {POWER_OPTION_DRU_TIMEOUT, 2, false},
    {POWER_OPTION_DRU, 6, false},      {POWER_OPTION_DDR_PERF_MODE, 2, false}, {POWER_OPTION_CENG, 5, false},
    {POWER_OPTION_DCVS_EXP, 17, true}, {POWER_OPTION_CENG_EXP, 5, false},
};

constexpr uint32_t MEMORY_OPTION = 1;

// Counts the elements before the closing null; one more than the limit when there is none.
template <typename Record>
size_t length(const Record* const* list) {
    size_t count = 0;
    while (count <= ZANT_SIM_VOTE_RECORDS && list[count] != nullptr) ++count;
    return count;
}

template <typename Record>
std::string checkList(const Record* const* list) {
    if (list == nullptr) return "the list is null";
    const size_t count = length(list);
    if (count == 0) return "the list is empty";
    if (count > ZANT_SIM_VOTE_RECORDS) return "the list has no null after at most 16 records";
    return {};
}

std::string checkRecord(uint32_t id, const PowerConfigRecord& record) {
    const OptionRow* row = std::find_if(std::begin(OPTIONS), std::end(OPTIONS),
                                        [&](const OptionRow& candidate) { return candidate.option == record.option; });
    const std::string option = "option " + std::to_string(record.option);
    if (row == std::end(OPTIONS)) return option + " is unknown";
    if (row->namesId && record.words[1] != id) return option + " is for id " + std::to_string(record.words[1]);
    const bool isClean =
        std::all_of(record.words + row->words, std::end(record.words), [](uint32_t word) { return word == 0; });
    return isClean ? std::string() : option + " holds words beyond its own";
}

}  // namespace

std::string takePowerRecords(uint32_t id, const PowerConfigRecord* const* list,
                             std::vector<PowerConfigRecord>& records) {
    std::string fault = checkList(list);
    for (size_t i = 0; fault.empty() && list[i] != nullptr; ++i) {
        fault = checkRecord(id, *list[i]);
        records.push_back(*list[i]);
    }
    return fault;
}

std::string checkMemoryRecords(const PowerMemoryRecord* const* list) {
    std::string fault = checkList(list);
    for (size_t i = 0; fault.empty() && list[i] != nullptr; ++i) {
        if (list[i]->option != MEMORY_OPTION)
            fault = "memory option " + std::to_string(list[i]->option) + " is unknown";
    }
    return fault;
}

}  // namespace zant::sim
