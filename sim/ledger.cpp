#include "ledger.h"

#include <cstring>

#include "decode.h"
#include "zant_sim/sim_backend.h"

namespace zant::sim {

uint64_t Ledger::call(const std::string& operation, const std::string& arguments, const std::string& prefix) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const uint64_t status = scriptedStatus(operation);
    std::string line = prefix + operation + "(" + arguments + ") -> ";
    line += status == 0 ? "0" : hex(status) + " (scripted failure)";
    m_entries.push_back(std::move(line));
    return status;
}

uint64_t Ledger::scriptedStatus(const std::string& operation) {
    const auto found = m_failures.find(operation);
    if (found == m_failures.end()) return 0;
    Failure& failure = found->second;
    if (failure.callsLeft > 1) {
        --failure.callsLeft;
        return 0;
    }
    const uint64_t status = failure.status;
    if (failure.callsLeft == 1) m_failures.erase(found);
    return status;
}

void Ledger::failNthCall(const std::string& operation, uint32_t n, uint64_t status) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_failures[operation] = Failure{n, status};
}

void Ledger::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_failures.clear();
}

size_t Ledger::size() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_entries.size();
}

std::string Ledger::entry(size_t index) const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return index < m_entries.size() ? m_entries[index] : std::string();
}

Ledger& ledger() {
    static Ledger instance;
    return instance;
}

}  // namespace zant::sim

size_t ZantSim_ledgerSize() {
    return zant::sim::ledger().size();
}

size_t ZantSim_ledgerEntry(size_t index, char* text, size_t capacity) {
    const std::string entry = zant::sim::ledger().entry(index);
    if (text != nullptr && capacity > 0) {
        const size_t length = entry.size() < capacity ? entry.size() : capacity - 1;
        std::memcpy(text, entry.data(), length);
        text[length] = '\0';
    }
    return entry.size();
}

void ZantSim_failNthCall(const char* operation, uint32_t n, uint64_t status) {
    if (operation != nullptr) zant::sim::ledger().failNthCall(operation, n, status);
}
