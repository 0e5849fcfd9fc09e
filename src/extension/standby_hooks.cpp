// Hooks of contexts and buffers while no records are built for them: they vote, and lists stay untouched.
#include "config/perf_numbers.h"
#include "extension/hook_guard.h"
#include "extension/kor_backend.h"
#include "platform/logger.h"

namespace zant::kor {

bool KORBackend::beforeContextCreate(ZantConfigWrapper*** list, uint32_t* count) {
    return hasOutPointers("beforeContextCreate", list, count);
}

bool KORBackend::afterContextCreate() {
    return true;
}

bool KORBackend::beforeContextFree(std::vector<void*> contexts) {
    return guarded("beforeContextFree", false, [&] {
        // A graph's own profile outlives its runs: the teardown goes by the device's again.
        if (m_perfDriver != nullptr && !m_graphPerfProfiles.empty()) {
            m_perfDriver->setPerfProfile(m_deviceConfigs.empty() ? PERF_PROFILE_NOT_SET
                                                                 : m_deviceConfigs.front().core.perfProfile);
        }
        const bool result = voteEvent(GRAPH_DEINIT_START, false, "PerfDriver not available before context free",
                                      "PerfDriver setState GRAPH_DEINIT_START failed before context free");
        for (const void* context : contexts) {
            if (context == nullptr) {
                ZANT_LOG_ERROR("Input context handles to beforeContextFree is NULL");
                return false;
            }
        }
        return result;
    });
}

bool KORBackend::afterContextFree() {
    return guarded("afterContextFree", false, [&] {
        return voteEvent(GRAPH_DEINIT_DONE, false, "PerfDriver not available after context free",
                         "PerfDriver setState GRAPH_DEINIT_DONE failed after context free.");
    });
}

bool KORBackend::beforeContextCreateFromBinary(ZantConfigWrapper*** list, uint32_t* count) {
    return guarded("beforeContextCreateFromBinary", false, [&] {
        return hasOutPointers("beforeContextCreateFromBinary", list, count) &&
               voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before create from binary",
                         "PerfDriver setState GRAPH_INIT_START failed before create from binary");
    });
}

bool KORBackend::afterContextCreateFromBinary() {
    return guarded("afterContextCreateFromBinary", false, [&] {
        return voteEvent(GRAPH_INIT_DONE, false, "PerfDriver not available after create from binary",
                         "PerfDriver setState GRAPH_INIT_DONE failed after create from binary");
    });
}

bool KORBackend::beforeContextCreateFromBinaryList(
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext, ZantConfigWrapper*** list,
    uint32_t* count) {
    return guarded("beforeContextCreateFromBinaryList", false, [&] {
        if (!hasOutPointers("beforeContextCreateFromBinaryList", perContext == nullptr ? nullptr : list, count)) {
            return false;
        }
        *list = nullptr;
        *count = 0;
        return voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before creating contexts from binary list",
                         "PerfDriver setState GRAPH_INIT_START failed before creating contexts from binary list");
    });
}

bool KORBackend::afterContextCreateFromBinaryList() {
    return guarded("afterContextCreateFromBinaryList", false, [&] {
        return voteEvent(GRAPH_INIT_DONE, false, "PerfDriver not available after creating contexts from binary list",
                         "PerfDriver setState GRAPH_INIT_DONE failed after creating contexts from binary list");
    });
}

bool KORBackend::beforeContextApplyBinarySection() {
    return guarded("beforeContextApplyBinarySection", false, [&] {
        return voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before context apply binary section",
                         "PerfDriver unable to setState GRAPH_INIT_START before context apply binary section");
    });
}

bool KORBackend::afterContextApplyBinarySection() {
    return guarded("afterContextApplyBinarySection", false, [&] {
        return voteEvent(GRAPH_INIT_DONE, false, "PerfDriver not available after context apply binary section",
                         "PerfDriver setState GRAPH_INIT_DONE failed after context apply binary section");
    });
}

bool KORBackend::allocateExternalBuffers(void*, std::string spillFillPoolId, std::string spadBackupPoolId,
                                         std::string weightsPoolId) {
    if (!spillFillPoolId.empty() || !spadBackupPoolId.empty() || !weightsPoolId.empty()) {
        ZANT_LOG_ERROR("External buffers are not available");
    }
    return false;
}

bool KORBackend::detachBuffers(void*) {
    ZANT_LOG_ERROR("Detaching buffers is not available");
    return false;
}

bool KORBackend::attachBuffers(void*) {
    ZANT_LOG_WARN("Buffers already in the desired state %s", "attached.");
    return true;
}

}  // namespace zant::kor
