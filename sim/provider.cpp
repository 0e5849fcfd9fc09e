#include "provider.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <utility>

#include "context_operations.h"
#include "contexts.h"
#include "decode.h"
#include "ledger.h"
#include "power_ids.h"
#include "zant_sim/sim_backend.h"

namespace zant::sim {

namespace {

constexpr size_t PROVIDER_LIMIT = 4;
constexpr uint32_t DECOY_BACKEND_ID = 3;
constexpr ZantVersionTriple CORE_VERSION{2, 20, 0};
constexpr ZantVersionTriple START_VERSION{5, 51, 0};

struct State {
    std::mutex mutex;
    ZantVersionTriple version = START_VERSION;
    std::array<ZantProviderRecord, PROVIDER_LIMIT> records{};
    std::array<const ZantProviderRecord*, PROVIDER_LIMIT> list{};
    uint32_t count = 0;
    size_t ours = 0;  // position of the first record with our id
};

State& state();

std::string prefix(size_t position) {
    State& current = state();
    const std::lock_guard<std::mutex> lock(current.mutex);
    return position == current.ours ? std::string() : "provider " + std::to_string(position) + ": ";
}

std::string versionText(const ZantVersionTriple& version) {
    return std::to_string(version.major) + "." + std::to_string(version.minor) + "." + std::to_string(version.patch);
}

// The operations are one set for each position of the list, so that the ledger tells whose record was called.
template <size_t Position>
struct Operations {
    static uint64_t getApiVersion(ZantApiVersion* version) {
        ZantVersionTriple backend{};
        {
            const std::lock_guard<std::mutex> lock(state().mutex);
            backend = state().version;
        }
        const uint64_t status = ledger().call("getApiVersion", "backend " + versionText(backend), prefix(Position));
        if (status == 0 && version != nullptr) *version = ZantApiVersion{CORE_VERSION, backend};
        return status;
    }

    static uint64_t contextSetConfig(void* context, const ZantConfigWrapper** configs) {
        return sim::contextSetConfig(prefix(Position), context, configs);
    }

    static uint64_t memoryRegister(void* context, const MemRegisterDescriptor* descriptors, uint32_t count,
                                   void** handles) {
        return sim::memoryRegister(prefix(Position), context, descriptors, count, handles);
    }

    static uint64_t memoryDeregister(void** handles, uint32_t count) {
        return sim::memoryDeregister(prefix(Position), handles, count);
    }

    static uint64_t deviceGetInfrastructure(const ZantPerfInfrastructure** infrastructure) {
        const uint64_t status = ledger().call("deviceGetInfrastructure", "", prefix(Position));
        if (status == 0 && infrastructure != nullptr) *infrastructure = perfInfrastructure();
        return status;
    }

    static uint64_t deviceSetConfig(void* device, const ZantConfigWrapper** configs) {
        return ledger().call("deviceSetConfig", describeHandle(device) + ", " + describeDeviceSettings(configs),
                             prefix(Position));
    }

    static uint64_t contextGetProperty(void* context, void** properties) {
        return sim::contextGetProperty(prefix(Position), context, properties);
    }

    static uint64_t contextFinalize(void* context, void* reserved) {
        return sim::contextFinalize(prefix(Position), context, reserved);
    }

    static void fill(ZantProviderRecord& record) {
        record.getApiVersion = getApiVersion;
        record.contextSetConfig = contextSetConfig;
        record.memoryRegister = memoryRegister;
        record.memoryDeregister = memoryDeregister;
        record.deviceGetInfrastructure = deviceGetInfrastructure;
        record.deviceSetConfig = deviceSetConfig;
        record.contextGetProperty = contextGetProperty;
        record.contextFinalize = contextFinalize;
    }
};

template <size_t... Positions>
void fillOperations(State& state, std::index_sequence<Positions...>) {
    (Operations<Positions>::fill(state.records[Positions]), ...);
}

void setProviders(State& state, const uint32_t* backendIds, size_t count) {
    state.count = static_cast<uint32_t>(std::min(count, PROVIDER_LIMIT));
    for (size_t i = 0; i < state.count; ++i) state.records[i].backendId = backendIds[i];
    const auto end = state.records.begin() + state.count;
    const auto ours = std::find_if(state.records.begin(), end,
                                   [](const auto& record) { return record.backendId == ZANT_BACKEND_ID_KOR; });
    state.ours = static_cast<size_t>(ours - state.records.begin());
}

void setStartProviders(State& state) {
    constexpr std::array<uint32_t, 2> ids{DECOY_BACKEND_ID, ZANT_BACKEND_ID_KOR};
    setProviders(state, ids.data(), ids.size());
}

State& state() {
    static State instance;
    static const bool filled = [] {
        fillOperations(instance, std::make_index_sequence<PROVIDER_LIMIT>());
        for (size_t i = 0; i < PROVIDER_LIMIT; ++i) instance.list[i] = &instance.records[i];
        setStartProviders(instance);
        return true;
    }();
    static_cast<void>(filled);
    return instance;
}

}  // namespace

}  // namespace zant::sim

extern "C" __attribute__((visibility("default"))) uint32_t ZantInterface_getProviders(
    const ZantProviderRecord*** providers, uint32_t* count) {
    using namespace zant::sim;
    const uint64_t status = ledger().call("getProviders", "");
    if (providers == nullptr || count == nullptr) return 1;
    *providers = nullptr;
    *count = 0;
    if (status != 0) return static_cast<uint32_t>(status);
    State& current = state();
    const std::lock_guard<std::mutex> lock(current.mutex);
    *providers = current.list.data();
    *count = current.count;
    return 0;
}

void ZantSim_setApiVersion(uint32_t major, uint32_t minor, uint32_t patch) {
    using namespace zant::sim;
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().version = ZantVersionTriple{major, minor, patch};
}

void ZantSim_setProviders(const uint32_t* backendIds, size_t count) {
    using namespace zant::sim;
    const std::lock_guard<std::mutex> lock(state().mutex);
    setProviders(state(), backendIds, backendIds == nullptr ? 0 : count);
}

void ZantSim_clear() {
    using namespace zant::sim;
    ledger().clear();
    powerIds().clearTimeLine();
    contexts().setNext({});
    contexts().setDetachableAnswer(std::nullopt);
    const std::lock_guard<std::mutex> lock(state().mutex);
    state().version = START_VERSION;
    setStartProviders(state());
}
