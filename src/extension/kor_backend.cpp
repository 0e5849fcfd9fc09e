#include "extension/kor_backend.h"

#include <exception>
#include <new>

#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t APP_TYPE_WITHOUT_PERF_DRIVER = 1;
constexpr uint64_t DEFAULT_TIMEOUT = 6000;

}  // namespace

KORBackend::KORBackend() {
    try {
        m_configParser = std::make_unique<KORConfigParser>();
    } catch (const std::exception& error) {
        ZANT_LOG_ERROR("Could not create instance of KOR Config Parser: %s", error.what());
    }
}

KORBackend::~KORBackend() = default;

void KORBackend::logText(ZantLogLevel level, const char* text) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"  // the texts are this library's own
    ZANT_LOG(level, text);
#pragma GCC diagnostic pop
}

bool KORBackend::hasOutPointers(const char* hook, const void* list, const void* count) {
    if (list != nullptr && count != nullptr) return true;
    ZANT_LOG_ERROR("%s: the list and its count need a place to go, got nullptr", hook);
    return false;
}

void KORBackend::handOver(ConfigList& built, ZantConfigWrapper*** list, uint32_t* count) {
    *count = built.size();
    *list = built.data();
}

bool KORBackend::voteEvent(uint8_t event, bool async, const char* missing, const char* failed) {
    if (m_perfDriver == nullptr) {
        logText(ZANT_LOG_LEVEL_INFO, missing);
        return true;
    }
    if (m_perfDriver->setState(event, async)) return true;
    logText(ZANT_LOG_LEVEL_ERROR, failed);
    return false;
}

bool KORBackend::setPerfProfile(uint32_t profile) {
    return guarded("setPerfProfile", true, [&] {
        m_perfProfile = profile;
        if (m_perfDriver != nullptr) m_perfDriver->setPerfProfile(profile);
        return true;
    });
}

uint32_t KORBackend::getProfilingLevel() {
    return m_deviceConfigs.empty() ? 0 : m_deviceConfigs.front().profilingLevel;
}

bool KORBackend::parseConfigAndSanitize(const std::string& config) {
    if (!m_configParser->parseConfig(config, m_deviceConfigs, m_graphConfigs, m_contextConfigs, m_groupContextConfig,
                                     m_memoryConfig)) {
        return false;
    }
    for (KORGraphConfig& graph : m_graphConfigs) {
        for (std::string& name : graph.graphNames) name = sanitizeName(name);
    }
    return true;
}

bool KORBackend::loadConfig(std::string config) {
    return guarded("loadConfig", false, [&] {
        if (config.empty()) return true;
        if (m_configParser == nullptr) {
            ZANT_LOG_ERROR("Config parser is not initialized and is nullptr");
            return false;
        }
        try {
            return parseConfigAndSanitize(config);
        } catch (const std::exception& error) {
            ZANT_LOG_ERROR("Exception occurred while loading backend extensions config: %s", error.what());
            return false;
        }
    });
}

bool KORBackend::setAppType(uint32_t type) {
    ZANT_LOG_INFO("Setting app type to %d", static_cast<int>(type));
    if (type == APP_TYPE_WITHOUT_PERF_DRIVER) m_perfDriverDisabled = true;
    return true;
}

bool KORBackend::detachableBuffersEnabled() {
    return !m_contextConfigs.empty() && m_contextConfigs.front().detachableBuffersEnabled;
}

bool KORBackend::runExtensionTestClient(uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t, uint64_t,
                                        uint64_t) {
    ZANT_LOG_ERROR("KOR Extension test client is not supported on this platform");
    return true;
}

uint64_t KORBackend::getDefaultTimeout() {
    return DEFAULT_TIMEOUT;
}

uint32_t KORBackend::getCoreId() {
    if (m_deviceConfigs.empty() || m_deviceConfigs.front().coreIds.empty()) return 0;
    return m_deviceConfigs.front().coreIds.front();
}

}  // namespace zant::kor
