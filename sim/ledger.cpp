#include "ledger.h"

#include <cstring>
#include <thread>

#include "text.h"
#include "zant_sim/sim_ledger.h"

namespace zant::sim {

uint64_t Ledger::call(const std::string& operation, const std::string& arguments, const std::string& prefix) {
    const uint64_t status = enter(operation);
    write(prefix + operation + "(" + arguments + ")", status, {});
    return status;
}

uint64_t Ledger::enter(const std::string& operation) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_firstCall) m_firstCall = std::chrono::steady_clock::now();
    const uint64_t status = scriptedStatus(operation);
    const auto latency = m_latencies.find(operation);
    if (latency == m_latencies.end()) return status;
    const std::chrono::microseconds pause = latency->second;
    lock.unlock();
    std::this_thread::sleep_for(pause);
    return status;
}

void Ledger::write(const std::string& callText, uint64_t status, const std::string& misuse) {
    const char* reason = misuse.empty() ? " (scripted failure)" : " (misuse)";
    add(callText + " -> " + (status == 0 ? "0" : hex(status) + reason), misuse);
}

void Ledger::add(const std::string& line, const std::string& misuse) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.push_back(line);
    if (!misuse.empty()) m_entries.push_back("misuse: " + misuse);
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

void Ledger::setLatency(const std::string& operation, uint32_t microseconds) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_latencies[operation] = std::chrono::microseconds(microseconds);
    if (microseconds == 0) m_latencies.erase(operation);
}

uint64_t Ledger::elapsedNs() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_firstCall) return 0;
    const auto elapsed = std::chrono::steady_clock::now() - *m_firstCall;
    return static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count());
}

void Ledger::clear() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_entries.clear();
    m_failures.clear();
    m_latencies.clear();
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

void ZantSim_setLatency(const char* operation, uint32_t microseconds) {
    if (operation != nullptr) zant::sim::ledger().setLatency(operation, microseconds);
}
