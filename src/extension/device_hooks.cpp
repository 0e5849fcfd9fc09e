// Around the creation of the backend's device. Only the first device config counts.
#include <exception>
#include <memory>
#include <utility>

#include "config/perf_numbers.h"
#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

// One row for each option, in the order in which they are handed out.
struct DeviceOptionRow {
    KORDeviceOption option;
    bool (*isWanted)(const KORDeviceConfig& device);
    void (*fill)(const KORDeviceConfig& device, KORDeviceCustomConfig& record);
};

void fillFlag(const KORDeviceConfig& device, KORDeviceCustomConfig& record) {
    record.deviceIdOrSocModel = device.deviceId;
    record.value.flag = 1;
}

void fillArchitecture(const KORDeviceConfig& device, KORDeviceCustomConfig& record) {
    record.deviceIdOrSocModel = device.deviceId;
    record.value.number = device.dspArch;
}

void fillSocModel(const KORDeviceConfig& device, KORDeviceCustomConfig& record) {
    record.deviceIdOrSocModel = device.socModel;
}

constexpr DeviceOptionRow DEVICE_OPTIONS[] = {
    {KOR_DEVICE_OPTION_SIGNED_PD_SESSION, [](const KORDeviceConfig& d) { return d.pdSessionSigned; }, fillFlag},
    {KOR_DEVICE_OPTION_USE_DYNAMIC_PARTITIONING, [](const KORDeviceConfig& d) { return d.useDynamicPartitioning; },
     fillFlag},
    {KOR_DEVICE_OPTION_DSP_ARCH, [](const KORDeviceConfig& d) { return d.dspArch != 0; }, fillArchitecture},
    {KOR_DEVICE_OPTION_SOC_MODEL, [](const KORDeviceConfig& d) { return d.socModel != 0; }, fillSocModel},
    {KOR_DEVICE_OPTION_ASYNC_EXECUTE, [](const KORDeviceConfig& d) { return d.enableAsyncExecute; }, fillFlag},
};

}  // namespace

void KORBackend::clearDeviceLists() {
    m_deviceConfigWrappers.clear();
    m_deviceConfigPtrs.clear();
    m_deviceCustomConfigs.clear();
}

bool KORBackend::beforeDeviceCreate(ZantConfigWrapper*** list, uint32_t* count) {
    return guarded("beforeDeviceCreate", false, [&] {
        if (list == nullptr || count == nullptr) {
            ZANT_LOG_ERROR("Invalid device config args");
            return false;
        }
        if (m_deviceConfigs.empty()) m_deviceConfigs.emplace_back();
        KORDeviceConfig& device = m_deviceConfigs.front();
        if (device.deviceIdSet) {
            ZANT_LOG_INFO("User specified deviceId=%d", static_cast<int>(device.deviceId));
        } else {
            ZANT_LOG_INFO("No deviceId specified by user, defaulting to deviceId=0");
            device.deviceId = 0;
        }
        // A list that no afterDeviceCreate has freed is replaced: its records would be handed out twice.
        clearDeviceLists();
        for (const DeviceOptionRow& row : DEVICE_OPTIONS) {
            if (!row.isWanted(device)) continue;
            KORDeviceCustomConfig& record = m_deviceCustomConfigs.emplace_back();
            record.option = row.option;
            row.fill(device, record);
        }
        // Only now that no record moves any more may a wrapper point at it, and a pointer at a wrapper.
        m_deviceConfigWrappers.resize(m_deviceCustomConfigs.size());
        m_deviceConfigPtrs.reserve(m_deviceCustomConfigs.size());
        for (size_t i = 0; i < m_deviceCustomConfigs.size(); ++i) {
            m_deviceConfigWrappers[i].option = ZANT_CONFIG_OPTION_CUSTOM;
            m_deviceConfigWrappers[i].customConfig = &m_deviceCustomConfigs[i];
            m_deviceConfigPtrs.push_back(&m_deviceConfigWrappers[i]);
        }
        *count = static_cast<uint32_t>(m_deviceConfigPtrs.size());
        *list = m_deviceConfigPtrs.data();
        return true;
    });
}

// A name that several entries carry keeps the profile of the first.
void KORBackend::collectGraphProfiles() {
    for (const KORGraphConfig& graph : m_graphConfigs) {
        if (graph.perfProfile == PERF_PROFILE_NOT_SET) continue;
        for (const std::string& name : graph.graphNames) m_graphPerfProfiles.try_emplace(name, graph.perfProfile);
    }
}

// Goes on after each failed step, so that the host can decide; the driver stays and later hooks vote through it.
bool KORBackend::setUpPerfDriver(KORDeviceConfig& device) {
    bool result = true;
    KORDevicePerfDriver& driver = *m_perfDriver;
    driver.m_asyncVoting = device.asyncVoting;
    if (!driver.initialize(m_interface)) {
        ZANT_LOG_ERROR("KORDevicePerfDriver initialization failed");
        result = false;
    }
    if (device.coreIds.empty()) device.coreIds.push_back(0);
    driver.addDeviceCores(device.deviceId, device.coreIds);
    driver.m_useClientContext = device.useClientContext;
    driver.setPerfConfig(device.core);
    if (!driver.createPowerConfigId()) {
        ZANT_LOG_ERROR("Failed to create PowerConfigId.");
        result = false;
    }
    if (!driver.setMemoryConfig()) {
        ZANT_LOG_ERROR("Failed to set memory config.");
        result = false;
    }
    driver.setRpcAndTimeoutConfig();
    return result;
}

// Null when memory is short: the hook tells so.
std::unique_ptr<KORDevicePerfDriver> KORBackend::makePerfDriver() noexcept {
    try {
        return std::make_unique<KORDevicePerfDriver>();
    } catch (const std::exception&) {
        return nullptr;
    }
}

bool KORBackend::afterDeviceCreate() {
    const bool result = guarded("afterDeviceCreate", false, [&] {
        if (m_perfDriverDisabled) return true;
        if (m_deviceConfigs.empty()) {
            ZANT_LOG_ERROR("No device config after device create: beforeDeviceCreate comes first");
            return false;
        }
        m_perfDriver = makePerfDriver();
        if (m_perfDriver == nullptr) {
            ZANT_LOG_ERROR("PerfDriver creation failed!");
            return false;
        }
        collectGraphProfiles();
        KORDeviceConfig& device = m_deviceConfigs.front();
        if (m_perfProfile != PERF_PROFILE_NOT_SET) device.core.perfProfile = m_perfProfile;
        return setUpPerfDriver(device);
    });
    clearDeviceLists();
    return result;
}

bool KORBackend::beforeDeviceFree() {
    return guarded("beforeDeviceFree", true, [&] {
        // Taken out first: no hook may find a driver that is going down.
        const std::unique_ptr<KORDevicePerfDriver> driver = std::move(m_perfDriver);
        if (driver == nullptr) ZANT_LOG_INFO("PerfDriver not available before free device");
        return true;
    });
}

}  // namespace zant::kor
