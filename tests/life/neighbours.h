// Everything that the library calls out to, in one place: the backend, its power infrastructure and the RPC client
// library. Calls are counted; chosen ones fail or answer nonsense. What the library leaves standing is known.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <mutex>
#include <set>

#include "modules/fake_darlink.h"
#include "zelmar_kor/power_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::test {

// What an out-value holds when a call says success: the usual answer, or one of these.
enum class Answer { usual, minusOne, zero, largest, changing };

// A set that never allocates: what stands at neighbours may grow while the library's allocations fail.
template <class Value>
class FixedSet {
public:
    void insert(Value value) {
        if (m_size == m_values.size()) std::abort();
        m_values[m_size++] = value;
    }
    void erase(Value value) {
        auto* end = m_values.data() + m_size;
        m_size = static_cast<size_t>(std::remove(m_values.data(), end, value) - m_values.data());
    }
    size_t size() const { return m_size; }
    void clear() { m_size = 0; }

private:
    std::array<Value, 4096> m_values{};
    size_t m_size = 0;
};

// One at a time. Calls may come on any thread.
class Neighbours {
public:
    explicit Neighbours(FakeDarlink& darlink);
    ~Neighbours();
    Neighbours(const Neighbours&) = delete;
    Neighbours& operator=(const Neighbours&) = delete;

    static uint32_t getProviders(const ZantProviderRecord*** providers, uint32_t* count);
    const void* functions() const { return &m_provider.functions40; }

    // Calls that fail, by their number from 0.
    void fail(std::initializer_list<size_t> calls);
    // How out-values are answered from now on.
    void answer(Answer answer) { m_answer = answer; }
    // How many calls there were since the last fail.
    size_t calls() const { return m_calls; }
    // Whether a call that makes or fetches ids has failed: the library then cannot give them all back.
    bool lostIds() const { return m_lostIds; }

    size_t liveIds() const { return m_ids.size(); }
    size_t liveTensors() const { return m_tensors.size(); }
    size_t liveBlocks() const { return m_darlink.blocks.size(); }
    // Frees what a failed run could not, as the end of the process would.
    void forget();

private:
    static bool takeCall(const char* operation);
    static uint64_t number(uint64_t usual);
    static uint64_t getInfrastructure(const ZantPerfInfrastructure** infrastructure);
    static uint64_t createId(uint32_t device, uint32_t core, uint32_t* id);
    static uint64_t destroyId(uint32_t id);
    static uint64_t memoryRegister(void* context, const MemRegisterDescriptor* descriptors, uint32_t count,
                                   void** handles);
    static uint64_t memoryDeregister(void** handles, uint32_t count);
    static uint64_t getProperty(void* context, void** properties);

    FakeDarlink& m_darlink;
    ZantProviderRecord m_provider{};
    ZantPerfInfrastructure m_infrastructure{};
    std::mutex m_mutex;
    std::set<size_t> m_failing;
    std::atomic<size_t> m_calls{0};
    std::atomic<Answer> m_answer{Answer::usual};
    bool m_lostIds = false;
    uint32_t m_lastId = 0;
    uintptr_t m_lastHandle = 0x1000;
    FixedSet<uint32_t> m_ids;
    FixedSet<void*> m_tensors;  // handles of registered tensors
};

}  // namespace zant::test
