// The two neighbours that memory goes through: the RPC client library, and a backend that records what it is given.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "modules/fake_darlink.h"
#include "zelmar_kor/memory_records.h"
#include "zelmar_kor/provider_record.h"

namespace zant::test {

// The fake library that the driver directory of this process leads to, as if nothing had happened so far.
FakeDarlink& fakeDarlink();

// One at a time. Handles given out are 0x1001, 0x1002, ...
class FakeMemoryBackend {
public:
    FakeMemoryBackend();
    FakeMemoryBackend(const FakeMemoryBackend&) = delete;
    FakeMemoryBackend& operator=(const FakeMemoryBackend&) = delete;

    const ZantProviderRecord& provider() const { return m_provider; }
    const void* functions() const { return &m_provider.functions40; }

    // Calls so far, as "register ctx=1 type=3 size=30 fd=100 offset=0 rank=1 dims=1 dtype=0x108 kind=2".
    std::vector<std::string> takeCalls();

    // Answers.
    std::map<std::pair<void*, uint32_t>, uint64_t> sizes;  // by context and property
    std::vector<int32_t> detachableFds;
    int64_t detachableCount = -2;  // -2: as many as there are descriptors
    std::string failing;           // the operation that fails: "register", "setConfig", ...
    int failingAfter = 0;          // that many calls of it succeed before

private:
    static uint64_t memoryRegister(void* context, const MemRegisterDescriptor* descriptors, uint32_t count,
                                   void** handles);
    static uint64_t memoryDeregister(void** handles, uint32_t count);
    static uint64_t getProperty(void* context, void** properties);
    static uint64_t setConfig(void* context, const ZantConfigWrapper** configs);
    static uint64_t finalize(void* context, void* reserved);
    uint64_t record(const char* operation, std::string call);

    ZantProviderRecord m_provider{};
    std::mutex m_mutex;
    std::vector<std::string> m_calls;
    uintptr_t m_lastHandle = 0x1000;
};

inline void* contextHandle(uintptr_t number) {
    return reinterpret_cast<void*>(number);
}

}  // namespace zant::test
