// Every call of the simulated backend passes here: it is slowed or failed when the script says so, and written down.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace zant::sim {

class Ledger {
public:
    // Returns the status that the call has to answer with: 0, or the scripted one.
    uint64_t call(const std::string& operation, const std::string& arguments, const std::string& prefix = {});
    // The two halves of call, for operations that may refuse by themselves. enter takes the operation's latency and
    // returns the scripted status; write adds the line, and one more when misuse says what was wrong.
    uint64_t enter(const std::string& operation);
    void write(const std::string& callText, uint64_t status, const std::string& misuse);
    // A whole line, and one more when misuse says what was wrong.
    void add(const std::string& line, const std::string& misuse = {});

    void failNthCall(const std::string& operation, uint32_t n, uint64_t status);
    void setLatency(const std::string& operation, uint32_t microseconds);
    // Nanoseconds since the first call; 0 before it.
    uint64_t elapsedNs() const;
    void clear();
    size_t size() const;
    // An empty text past the end.
    std::string entry(size_t index) const;

private:
    struct Failure {
        uint32_t callsLeft;  // 0: every call fails
        uint64_t status;
    };

    uint64_t scriptedStatus(const std::string& operation);

    mutable std::mutex m_mutex;
    std::vector<std::string> m_entries;
    std::map<std::string, Failure> m_failures;
    std::map<std::string, std::chrono::microseconds> m_latencies;
    std::optional<std::chrono::steady_clock::time_point> m_firstCall;
};

// What an operation answers to wrong use.
constexpr uint64_t MISUSE_STATUS = 1001;

// The one ledger of this library.
Ledger& ledger();

// A call that may be used wrongly. act: does the work unless the script fails the call, and returns what was wrong with
// it; empty is success. arguments: the text of them, or what makes it once act has run.
template <typename Arguments, typename Act>
uint64_t answer(const std::string& operation, const Arguments& arguments, Act act, const std::string& prefix = {}) {
    uint64_t status = ledger().enter(operation);
    const std::string misuse = status == 0 ? act() : std::string();
    if (!misuse.empty()) status = MISUSE_STATUS;
    std::string text;
    if constexpr (std::is_invocable_v<Arguments>) {
        text = arguments();
    } else {
        text = arguments;
    }
    ledger().write(prefix + operation + "(" + text + ")", status, misuse.empty() ? misuse : operation + ": " + misuse);
    return status;
}

}  // namespace zant::sim
