// A backend that has nothing but a perf infrastructure, which writes down what it is called with. One at a time.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::test {

using Words = std::array<uint32_t, 17>;

struct Vote {
    uint32_t id;
    std::vector<Words> records;
    std::thread::id thread;
};

class FakeInfrastructure {
public:
    FakeInfrastructure();
    ~FakeInfrastructure();
    FakeInfrastructure(const FakeInfrastructure&) = delete;
    FakeInfrastructure& operator=(const FakeInfrastructure&) = delete;

    ZantProviderRecord provider() const;

    // Every call: "create 0 1" (device, core), "destroy 101", "set 101", "memory 0 1 1 33554432". Ids count from 101.
    std::vector<std::string> takeCalls();
    std::vector<Vote> takeVotes();
    // Waits until there are so many votes since the last take.
    bool awaitVotes(size_t count, std::chrono::milliseconds patience = std::chrono::seconds(10));

    // A call's result and whatever else is to happen in it, on its thread. Set while no call can come.
    std::function<uint64_t(const std::string& call)> answer = [](const std::string&) { return 0U; };
    uint64_t fetchStatus = 0;
    ZantPerfInfrastructure table;
    const ZantPerfInfrastructure* fetched = &table;

private:
    uint64_t take(const std::string& call);
    static uint64_t fetch(const ZantPerfInfrastructure** infrastructure);
    static uint64_t create(uint32_t deviceId, uint32_t coreId, uint32_t* id);
    static uint64_t destroy(uint32_t id);
    static uint64_t set(uint32_t id, const PowerConfigRecord** records);
    static uint64_t memory(uint32_t deviceId, uint32_t coreId, const PowerMemoryRecord** records);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    uint32_t m_lastId = 100;
    std::vector<std::string> m_calls;
    std::vector<Vote> m_votes;
};

}  // namespace zant::test
