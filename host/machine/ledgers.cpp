#include "machine/ledgers.h"

#include <algorithm>
#include <iterator>

#include "zant_sim/sim_ledger.h"

namespace runhost {

std::vector<std::string> ledgerOf(const Module& module) {
    ZantSimLedgerSizeFn size = nullptr;
    ZantSimLedgerEntryFn text = nullptr;
    module.resolve(size, "ZantSim_ledgerSize");
    module.resolve(text, "ZantSim_ledgerEntry");
    std::vector<std::string> entries;
    for (size_t i = 0; size != nullptr && text != nullptr && i < size(); ++i) {
        std::string entry(text(i, nullptr, 0) + 1, '\0');
        text(i, entry.data(), entry.size());
        entry.pop_back();
        entries.push_back(std::move(entry));
    }
    return entries;
}

std::vector<std::string> misuseIn(const std::vector<std::string>& ledger) {
    std::vector<std::string> lines;
    std::copy_if(ledger.begin(), ledger.end(), std::back_inserter(lines),
                 [](const std::string& line) { return line.starts_with("misuse: "); });
    return lines;
}

}  // namespace runhost
