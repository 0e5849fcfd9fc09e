// Around the life of contexts, on each of the three roads on which they come.
#include <optional>
#include <utility>

#include "config/perf_numbers.h"
#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

void KORBackend::warnOfGraphSettings() const {
    for (const KORGraphConfig& graph : m_graphConfigs) {
        if (!hasComposeSetting(graph)) continue;
        ZANT_LOG_WARN("Graph settings specified by user cannot be applied to an already composed graph.");
    }
}

bool KORBackend::beforeContextCreate(ZantConfigWrapper*** list, uint32_t* count) {
    return guarded("beforeContextCreate", false, [&] {
        if (!hasOutPointers("beforeContextCreate", list, count)) return false;
        if (m_contextConfigs.empty()) return true;
        const auto built = m_contextRecords.build(ContextRoad::compose, m_contextConfigs.front());
        handOver(m_contextRecords.list(), list, count);
        return built == ContextRecords::Result::ok;
    });
}

bool KORBackend::afterContextCreate() {
    m_contextRecords.clear();
    return true;
}

bool KORBackend::beforeContextCreateFromBinary(ZantConfigWrapper*** list, uint32_t* count) {
    return guarded("beforeContextCreateFromBinary", false, [&] {
        if (!hasOutPointers("beforeContextCreateFromBinary", list, count)) return false;
        const bool voted = voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before create from binary",
                                     "PerfDriver setState GRAPH_INIT_START failed before create from binary");
        warnOfGraphSettings();
        if (m_contextConfigs.empty()) return voted;
        const auto built = m_contextRecords.build(ContextRoad::binary, m_contextConfigs.front());
        if (built == ContextRecords::Result::noPatchFile) {
            m_contextRecords.dropGroups();
            return false;
        }
        handOver(m_contextRecords.list(), list, count);
        return voted && built == ContextRecords::Result::ok;
    });
}

bool KORBackend::afterContextCreateFromBinary() {
    return guarded("afterContextCreateFromBinary", false, [&] {
        m_contextRecords.clear();
        return voteEvent(GRAPH_INIT_DONE, false, "PerfDriver not available after create from binary",
                         "PerfDriver setState GRAPH_INIT_DONE failed after create from binary");
    });
}

bool KORBackend::beforeContextCreateFromBinaryList(
    std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>* perContext, ZantConfigWrapper*** list,
    uint32_t* count) {
    return guarded("beforeContextCreateFromBinaryList", false, [&] {
        const bool hasPlaces =
            hasOutPointers("beforeContextCreateFromBinaryList", perContext == nullptr ? nullptr : list, count);
        if (!hasPlaces || perContext == nullptr) return false;
        const bool voted =
            voteEvent(GRAPH_INIT_START, false, "PerfDriver not available before creating contexts from binary list",
                      "PerfDriver setState GRAPH_INIT_START failed before creating contexts from binary list");
        warnOfGraphSettings();
        const bool built = m_contextRecords.buildCommon(m_groupContextConfig);
        handOver(m_contextRecords.commonList(), list, count);
        return buildListedContexts(*perContext) && built && voted;
    });
}

bool KORBackend::buildListedContexts(std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>& perContext) {
    const size_t firstPatch = m_contextRecords.patchFiles().count();
    bool result = true;
    for (const KORContextConfig& context : m_contextConfigs) {
        if (context.contextKey.empty()) {
            ZANT_LOG_INFO("Context Key is mandatory to specify context options");
            continue;
        }
        const auto built = m_contextRecords.build(ContextRoad::binaryList, context);
        if (built == ContextRecords::Result::noPatchFile) {
            m_contextRecords.dropRecords(firstPatch);
            return false;
        }
        result = result && built == ContextRecords::Result::ok;
        const bool isListed = tellingShortage(ContextRecords::ALLOCATION_FAILED, [&] {
            ConfigList& contextList = m_contextRecords.list();
            perContext.emplace(context.contextKey, std::make_pair(contextList.size(), contextList.data()));
            return true;
        });
        result = isListed && result;
    }
    return result;
}

bool KORBackend::afterContextCreateFromBinaryList() {
    return guarded("afterContextCreateFromBinaryList", false, [&] {
        m_contextRecords.clearCommonList();
        m_contextRecords.clear();
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

bool KORBackend::setContextName(void* context, std::string name) {
    return guarded("setContextName", true, [&] {
        m_contextEntries.setName(context, std::move(name));
        return true;
    });
}

bool KORBackend::beforeContextFree(std::vector<void*> contexts) {
    return guarded("beforeContextFree", false, [&] {
        const bool closed = m_contextRecords.patchFiles().closeFrom(0);
        // A graph's own profile outlives its runs: the teardown goes by the device's again.
        if (m_perfDriver != nullptr && !m_graphPerfProfiles.empty()) {
            m_perfDriver->setPerfProfile(m_deviceConfigs.empty() ? PERF_PROFILE_NOT_SET
                                                                 : m_deviceConfigs.front().core.perfProfile);
        }
        const bool voted = voteEvent(GRAPH_DEINIT_START, false, "PerfDriver not available before context free",
                                     "PerfDriver setState GRAPH_DEINIT_START failed before context free");
        for (void* context : contexts) {
            if (!dropContext(context)) return false;
        }
        return closed && voted;
    });
}

bool KORBackend::dropContext(void* context) {
    if (context == nullptr) {
        ZANT_LOG_ERROR("Input context handles to beforeContextFree is NULL");
        return false;
    }
    const std::optional<KORBufferState> state = m_contextEntries.find(context);
    if (!state) return true;
    const ExternalBuffers buffers = m_contextEntries.takeBuffers(context);  // they end with this call
    if (*state == KOR_BUFFER_DETACHED) {
        ZANT_LOG_DEBUG("Attaching the buffers before freeing the context");
        attachBuffers(context);  // the entry goes either way
    }
    if (m_contextEntries.erase(context)) return true;
    ZANT_LOG_ERROR("Unable to remove one of the context handles from the map");
    return false;
}

bool KORBackend::afterContextFree() {
    return guarded("afterContextFree", false, [&] {
        return voteEvent(GRAPH_DEINIT_DONE, false, "PerfDriver not available after context free",
                         "PerfDriver setState GRAPH_DEINIT_DONE failed after context free.");
    });
}

}  // namespace zant::kor
