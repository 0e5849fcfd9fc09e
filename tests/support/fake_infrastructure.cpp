#include "support/fake_infrastructure.h"

#include <algorithm>
#include <utility>

namespace zant::test {

namespace {

FakeInfrastructure* g_current = nullptr;

std::string textOf(const char* operation, std::initializer_list<uint32_t> arguments) {
    std::string text = operation;
    for (const uint32_t argument : arguments) text += " " + std::to_string(argument);
    return text;
}

}  // namespace

FakeInfrastructure::FakeInfrastructure() : table{0, create, destroy, set, memory} {
    g_current = this;
}

FakeInfrastructure::~FakeInfrastructure() {
    g_current = nullptr;
}

ZantProviderRecord FakeInfrastructure::provider() const {
    ZantProviderRecord record{};
    record.deviceGetInfrastructure = fetch;
    return record;
}

std::vector<std::string> FakeInfrastructure::takeCalls() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
}

std::vector<Vote> FakeInfrastructure::takeVotes() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_votes, {});
}

bool FakeInfrastructure::awaitVotes(size_t count, std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, patience, [&] { return m_votes.size() >= count; });
}

uint64_t FakeInfrastructure::take(const std::string& call) {
    {
        const std::lock_guard lock(m_mutex);
        m_calls.push_back(call);
    }
    return answer(call);
}

uint64_t FakeInfrastructure::fetch(const ZantPerfInfrastructure** infrastructure) {
    *infrastructure = g_current->fetched;
    return g_current->fetchStatus;
}

uint64_t FakeInfrastructure::create(uint32_t deviceId, uint32_t coreId, uint32_t* id) {
    const uint64_t status = g_current->take(textOf("create", {deviceId, coreId}));
    if (status == 0) *id = ++g_current->m_lastId;
    return status;
}

uint64_t FakeInfrastructure::destroy(uint32_t id) {
    return g_current->take(textOf("destroy", {id}));
}

uint64_t FakeInfrastructure::set(uint32_t id, const PowerConfigRecord** records) {
    const uint64_t status = g_current->take(textOf("set", {id}));
    if (status != 0) return status;
    Vote vote{id, {}, std::this_thread::get_id()};
    for (; *records != nullptr; ++records) {
        std::copy(std::begin((*records)->words), std::end((*records)->words), vote.records.emplace_back().begin());
    }
    const std::lock_guard lock(g_current->m_mutex);
    g_current->m_votes.push_back(std::move(vote));
    g_current->m_changed.notify_all();
    return 0;
}

uint64_t FakeInfrastructure::memory(uint32_t deviceId, uint32_t coreId, const PowerMemoryRecord** records) {
    std::string call = textOf("memory", {deviceId, coreId});
    for (; *records != nullptr; ++records) call += textOf("", {(*records)->option, (*records)->value});
    return g_current->take(call);
}

}  // namespace zant::test
