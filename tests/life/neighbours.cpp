#include "life/neighbours.h"

#include <cstdlib>
#include <cstring>

#include "zelmar_kor/memory_records.h"

namespace zant::test {
namespace {

constexpr uint64_t FAILED = 7;
constexpr int32_t DETACHABLE_FDS[] = {40, 41, 42};

Neighbours* g_neighbours = nullptr;

uint64_t status(bool succeeded) {
    return succeeded ? 0 : FAILED;
}

}  // namespace

Neighbours::Neighbours(FakeDarlink& darlink) : m_darlink(darlink) {
    g_neighbours = this;
    m_infrastructure.createPowerConfigId = createId;
    m_infrastructure.destroyPowerConfigId = destroyId;
    m_infrastructure.setPowerConfig = [](uint32_t, const PowerConfigRecord**) { return status(takeCall("set")); };
    m_infrastructure.setMemoryConfig = [](uint32_t, uint32_t, const PowerMemoryRecord**) {
        return status(takeCall("memory"));
    };
    m_provider.backendId = ZANT_BACKEND_ID_KOR;
    m_provider.getApiVersion = [](ZantApiVersion* version) {
        const bool succeeded = takeCall("version");
        if (succeeded) *version = {{2, 0, 0}, {static_cast<uint32_t>(number(5)), 51, 0}};
        return status(succeeded);
    };
    m_provider.deviceGetInfrastructure = getInfrastructure;
    m_provider.deviceSetConfig = [](void*, const ZantConfigWrapper**) { return status(takeCall("device config")); };
    m_provider.contextSetConfig = [](void*, const ZantConfigWrapper**) { return status(takeCall("context config")); };
    m_provider.contextFinalize = [](void*, void*) { return status(takeCall("context finalize")); };
    m_provider.contextGetProperty = getProperty;
    m_provider.memoryRegister = memoryRegister;
    m_provider.memoryDeregister = memoryDeregister;
    m_darlink.allow = takeCall;
    m_darlink.descriptor = [](int usual) { return static_cast<int>(number(static_cast<uint64_t>(usual))); };
}

Neighbours::~Neighbours() {
    m_darlink.allow = nullptr;
    m_darlink.descriptor = nullptr;
    g_neighbours = nullptr;
}

uint32_t Neighbours::getProviders(const ZantProviderRecord*** providers, uint32_t* count) {
    static const ZantProviderRecord* list[1];
    list[0] = &g_neighbours->m_provider;
    *providers = list;
    *count = takeCall("providers") ? 1 : 0;
    return 0;
}

void Neighbours::fail(std::initializer_list<size_t> calls) {
    m_failing = calls;
    m_calls = 0;
    m_lostIds = false;
}

void Neighbours::forget() {
    m_ids.clear();
    m_tensors.clear();
    while (!m_darlink.blocks.empty()) {
        std::free(m_darlink.blocks.back().address);
        m_darlink.blocks.pop_back();
    }
}

bool Neighbours::takeCall(const char* operation) {
    const size_t call = g_neighbours->m_calls++;
    const bool fails = g_neighbours->m_failing.contains(call);
    if (fails && (std::strcmp(operation, "create") == 0 || std::strcmp(operation, "destroy") == 0 ||
                  std::strcmp(operation, "infrastructure") == 0)) {
        g_neighbours->m_lostIds = true;
    }
    return !fails;
}

uint64_t Neighbours::number(uint64_t usual) {
    switch (g_neighbours->m_answer.load()) {
        case Answer::usual:
            return usual;
        case Answer::minusOne:
            return UINT64_MAX;
        case Answer::zero:
            return 0;
        case Answer::largest:
            return INT64_MAX;
        case Answer::changing:
            break;
    }
    return usual + g_neighbours->m_calls % 3;
}

uint64_t Neighbours::getInfrastructure(const ZantPerfInfrastructure** infrastructure) {
    if (!takeCall("infrastructure")) return FAILED;
    const bool isThere = g_neighbours->m_answer != Answer::zero;
    if (!isThere) g_neighbours->m_lostIds = true;
    *infrastructure = isThere ? &g_neighbours->m_infrastructure : nullptr;
    return 0;
}

uint64_t Neighbours::createId(uint32_t, uint32_t, uint32_t* id) {
    if (!takeCall("create")) return FAILED;
    const std::lock_guard lock(g_neighbours->m_mutex);
    *id = static_cast<uint32_t>(number(++g_neighbours->m_lastId));
    g_neighbours->m_ids.insert(*id);
    return 0;
}

uint64_t Neighbours::destroyId(uint32_t id) {
    if (!takeCall("destroy")) return FAILED;
    const std::lock_guard lock(g_neighbours->m_mutex);
    g_neighbours->m_ids.erase(id);
    return 0;
}

uint64_t Neighbours::memoryRegister(void*, const MemRegisterDescriptor* descriptors, uint32_t, void** handles) {
    if (!takeCall("register")) return FAILED;
    const std::lock_guard lock(g_neighbours->m_mutex);
    void* handle = reinterpret_cast<void*>(static_cast<uintptr_t>(number(++g_neighbours->m_lastHandle)));
    if (descriptors->extendedInfo->bufferType == ZANT_SHARED_BUFFER_TENSOR) g_neighbours->m_tensors.insert(handle);
    *handles = handle;
    return 0;
}

uint64_t Neighbours::memoryDeregister(void** handles, uint32_t) {
    if (!takeCall("deregister")) return FAILED;
    const std::lock_guard lock(g_neighbours->m_mutex);
    g_neighbours->m_tensors.erase(*handles);
    return 0;
}

uint64_t Neighbours::getProperty(void*, void** properties) {
    if (!takeCall("property")) return FAILED;
    auto* property = static_cast<ContextNumberProperty*>(static_cast<ZantConfigWrapper*>(properties[0])->customConfig);
    constexpr uint64_t FDS = sizeof(DETACHABLE_FDS) / sizeof(DETACHABLE_FDS[0]);
    if (property->option == ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT) {
        // A count that grows is told again by as many descriptors: a backend may not write beyond what it said.
        property->answer = static_cast<int64_t>(g_neighbours->m_answer == Answer::changing ? FDS : number(FDS));
    } else if (property->option == ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS) {
        const bool hasRoom = g_neighbours->m_answer == Answer::usual || g_neighbours->m_answer == Answer::changing;
        auto* fds = reinterpret_cast<ContextFdsProperty*>(property)->fileDescriptors;
        if (hasRoom) std::memcpy(fds, DETACHABLE_FDS, sizeof(DETACHABLE_FDS));
    } else {
        property->answer = static_cast<int64_t>(number(64U * property->option));
    }
    return 0;
}

}  // namespace zant::test
