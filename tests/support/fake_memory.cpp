#include "support/fake_memory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

#include "buffers/darlink_library.h"
#include "platform/driver_directory.h"
#include "platform/dynamic_loader.h"
#include "support/environment.h"

namespace zant::test {
namespace {

FakeMemoryBackend* g_backend = nullptr;

// The driver directory is found once in a process: before any test.
class DriverDirectory : public testing::Environment {
public:
    void SetUp() override {
        const ScopedVariable root("ZELMAR_PLATFORM_ROOT", TEST_MACHINE);
        const ScopedVariable windows("windir", TEST_MACHINE "/windows");
        system::getDriverDirectory();
    }
};

[[maybe_unused]] const testing::Environment* const g_driverDirectory =
    testing::AddGlobalTestEnvironment(new DriverDirectory);

template <class... Parts>
std::string join(const Parts&... parts) {
    std::ostringstream text;
    (text << ... << parts);
    return text.str();
}

uintptr_t number(const void* handle) {
    return reinterpret_cast<uintptr_t>(handle);
}

}  // namespace

FakeDarlink& fakeDarlink() {
    const std::string path = kor::DarlinkLibrary::defaultPath();
    static void* const library = loader::dlOpen(path.c_str(), loader::DL_NOW | loader::DL_LOCAL);
    static const auto state = reinterpret_cast<decltype(&fakeDarlinkState)>(loader::dlSym(library, "fakeDarlinkState"));
    if (state == nullptr) std::abort();
    state()->failAlloc = state()->failToFd = false;
    state()->blocksMade = 0;
    state()->blocks.reserve(4096);  // so that it takes no part in allocations that fail
    return *state();
}

FakeMemoryBackend::FakeMemoryBackend() {
    g_backend = this;
    m_provider.backendId = ZANT_BACKEND_ID_KOR;
    m_provider.getApiVersion = [](ZantApiVersion* version) -> uint64_t {
        return *version = {{2, 0, 0}, {5, 51, 0}}, 0;
    };
    m_provider.memoryRegister = memoryRegister;
    m_provider.memoryDeregister = memoryDeregister;
    m_provider.contextGetProperty = getProperty;
    m_provider.contextSetConfig = setConfig;
    m_provider.contextFinalize = finalize;
}

std::vector<std::string> FakeMemoryBackend::takeCalls() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_calls, {});
}

uint64_t FakeMemoryBackend::record(const char* operation, std::string call) {
    m_calls.push_back(std::move(call));
    return failing == operation && failingAfter-- <= 0 ? 7 : 0;
}

uint64_t FakeMemoryBackend::memoryRegister(void* context, const MemRegisterDescriptor* descriptors, uint32_t count,
                                           void** handles) {
    const std::lock_guard lock(g_backend->m_mutex);
    const SharedBufferInfo& region = *descriptors->extendedInfo;
    std::string dimensions = descriptors->dimensions == nullptr ? "null" : "";
    for (uint32_t i = 0; i < descriptors->rank; ++i) dimensions += join(i == 0 ? "" : "x", descriptors->dimensions[i]);
    const uint64_t status = g_backend->record(
        "register",
        join("register ctx=", number(context), " type=", region.bufferType, " size=", region.size,
             " fd=", region.fileDescriptor, " offset=", region.offset, " rank=", descriptors->rank,
             " dims=", dimensions, " dtype=", std::hex, descriptors->dataType, " kind=", descriptors->memoryKind,
             " n=", count, descriptors->shapeConfig == nullptr ? "" : " shape config"));
    if (status == 0) *handles = contextHandle(++g_backend->m_lastHandle);
    return status;
}

uint64_t FakeMemoryBackend::memoryDeregister(void** handles, uint32_t count) {
    const std::lock_guard lock(g_backend->m_mutex);
    return g_backend->record("deregister", join("deregister ", std::hex, number(*handles), " n=", count));
}

uint64_t FakeMemoryBackend::getProperty(void* context, void** properties) {
    const std::lock_guard lock(g_backend->m_mutex);
    auto* property = static_cast<ContextNumberProperty*>(static_cast<ZantConfigWrapper*>(properties[0])->customConfig);
    const uint32_t option = property->option;
    const uint64_t status = g_backend->record(
        option == ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS ? "getFds" : "getProperty",
        join("getProperty ctx=", number(context), " option=", option, properties[1] == nullptr ? "" : " no end"));
    if (status != 0) return status;
    const std::vector<int32_t>& fds = g_backend->detachableFds;
    if (option == ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT) {
        const int64_t count = g_backend->detachableCount;
        property->answer = count == -2 ? static_cast<int64_t>(fds.size()) : count;
    } else if (option == ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS) {
        int32_t* out = reinterpret_cast<ContextFdsProperty*>(property)->fileDescriptors;
        for (const int32_t fd : fds) *out++ = fd;
    } else {
        property->answer = static_cast<int64_t>(g_backend->sizes[{context, option}]);
    }
    return 0;
}

uint64_t FakeMemoryBackend::setConfig(void* context, const ZantConfigWrapper** configs) {
    const std::lock_guard lock(g_backend->m_mutex);
    std::string call = join("setConfig ctx=", number(context));
    for (; *configs != nullptr; ++configs) {
        const auto& record = *static_cast<const ContextBufferStateRecord*>((*configs)->customConfig);
        call += join(" ", (*configs)->option, ":", record.option, ":", record.fileDescriptor, ":", record.wantedState);
    }
    return g_backend->record("setConfig", call);
}

uint64_t FakeMemoryBackend::finalize(void* context, void* reserved) {
    const std::lock_guard lock(g_backend->m_mutex);
    return g_backend->record("finalize",
                             join("finalize ctx=", number(context), reserved == nullptr ? "" : " reserved"));
}

}  // namespace zant::test
