// Every call of the simulated backend passes here: it is counted, failed when the script says so, and written down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace zant::sim {

class Ledger {
public:
    // Returns the status that the call has to answer with: 0, or the scripted one.
    uint64_t call(const std::string& operation, const std::string& arguments, const std::string& prefix = {});

    void failNthCall(const std::string& operation, uint32_t n, uint64_t status);
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
};

// The one ledger of this library.
Ledger& ledger();

}  // namespace zant::sim
