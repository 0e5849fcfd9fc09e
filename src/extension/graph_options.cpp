// setGraphOptions: values of one graph that the host passes beside the document.
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "extension/kor_backend.h"
#include "platform/exception_guard.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t NOT_GIVEN = 0xFFFFFFFFU;

struct ArchitectureName {
    std::string_view name;
    uint32_t number;
};

constexpr ArchitectureName ARCHITECTURES[] = {{"V68", 68}, {"V69", 69}, {"V73", 73}, {"V81", 81}};

}  // namespace

// The entry at index; a default one with this name is appended when index is the first that is not there yet. An
// index further out is the caller's error.
KORGraphConfig& KORBackend::graphConfigAt(int32_t index, std::string graphName) {
    const size_t count = m_graphConfigs.size();
    if (index < 0 || static_cast<size_t>(index) > count) {
        throw std::out_of_range("index " + std::to_string(index) + " is beyond the " + std::to_string(count) +
                                " graph configs there are");
    }
    if (static_cast<size_t>(index) == count) {
        KORGraphConfig graph;
        graph.graphNames.push_back(std::move(graphName));
        m_graphConfigs.push_back(std::move(graph));
    }
    return m_graphConfigs[static_cast<size_t>(index)];
}

bool KORBackend::applyGraphOptions(KORGraphConfig& graph, uint32_t spadMb, uint32_t optimizationLevel, uint32_t dlbc) {
    if (spadMb != NOT_GIVEN && !setSpadSize(graph.spadSize, spadMb)) return false;
    if (optimizationLevel != NOT_GIVEN && !setOptimizationLevel(graph.optimizationLevel, optimizationLevel)) {
        return false;
    }
    return dlbc == NOT_GIVEN || setDlbc(graph.dlbc, dlbc);
}

bool KORBackend::applyReferenceWeightSharing(uint32_t value) {
    if (value == NOT_GIVEN) return true;
    if (m_contextConfigs.empty()) m_contextConfigs.emplace_back();
    return setReferenceWeightSharing(m_contextConfigs.front().referenceWeightSharingEnabled, value);
}

// One default device config is made for an index that is not there yet. Where the index is still out of reach, only a
// known architecture has anything to lose by it.
bool KORBackend::setDeviceArchitecture(int32_t index, const std::string& dspArch) {
    const auto position = static_cast<size_t>(index);
    if (position >= m_deviceConfigs.size()) m_deviceConfigs.emplace_back();
    for (const ArchitectureName& architecture : ARCHITECTURES) {
        if (architecture.name != dspArch) continue;
        if (position >= m_deviceConfigs.size()) {
            ZANT_LOG_ERROR("dsp_arch %s has no device config at index %d", dspArch.c_str(), static_cast<int>(index));
            return false;
        }
        m_deviceConfigs[position].dspArch = architecture.number;
    }
    return true;
}

bool KORBackend::setGraphOptions(int32_t index, std::string dspArch, uint32_t spadMb, std::string graphName,
                                 uint32_t optimizationLevel, uint32_t dlbc, uint32_t referenceWeightSharing,
                                 uint32_t sluThreads) {
    return guarded("setGraphOptions", false, [&] {
        KORGraphConfig& graph = graphConfigAt(index, std::move(graphName));
        if (m_configParser == nullptr) {
            ZANT_LOG_ERROR("Config parser is not initialized and is nullptr");
            return false;
        }
        if (!applyGraphOptions(graph, spadMb, optimizationLevel, dlbc)) return false;
        if (!applyReferenceWeightSharing(referenceWeightSharing)) return false;
        if (sluThreads != NOT_GIVEN && !setSluThreads(graph.sluThreads, sluThreads)) return false;
        return setDeviceArchitecture(index, dspArch);
    });
}

}  // namespace zant::kor
