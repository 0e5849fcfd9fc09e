// setGraphOptions: values of one graph that the host passes beside the document.
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "extension/hook_guard.h"
#include "extension/kor_backend.h"
#include "platform/logger.h"

namespace zant::kor {

namespace {

constexpr uint32_t NOT_GIVEN = 0xFFFFFFFFU;

struct ArchitectureName {
    std::string_view name;
    uint32_t number;
};

constexpr ArchitectureName ARCHITECTURES[] = {{"V68", 68}, {"V69", 69}, {"V73", 73}, {"V81", 81}};

// The entry at index; a default one is appended when index is the first that is not there yet. An index further out
// is the caller's error.
template <class Entry>
Entry& entryAt(std::vector<Entry>& entries, int32_t index) {
    if (index < 0 || static_cast<size_t>(index) > entries.size()) {
        throw std::out_of_range("index " + std::to_string(index) + " is beyond the " + std::to_string(entries.size()) +
                                " configs there are");
    }
    if (static_cast<size_t>(index) == entries.size()) entries.emplace_back();
    return entries[static_cast<size_t>(index)];
}

}  // namespace

KORGraphConfig& KORBackend::graphConfigAt(int32_t index, std::string graphName) {
    const size_t before = m_graphConfigs.size();
    KORGraphConfig& graph = entryAt(m_graphConfigs, index);
    if (m_graphConfigs.size() > before) graph.graphNames.push_back(std::move(graphName));
    return graph;
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

void KORBackend::setDeviceArchitecture(int32_t index, const std::string& dspArch) {
    KORDeviceConfig& device = entryAt(m_deviceConfigs, index);
    for (const ArchitectureName& architecture : ARCHITECTURES) {
        if (architecture.name == dspArch) device.dspArch = architecture.number;
    }
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
        setDeviceArchitecture(index, dspArch);
        return true;
    });
}

}  // namespace zant::kor
