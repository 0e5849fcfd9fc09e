// From one config text to the records of its five sections.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "config/config_document.h"
#include "config/context_config.h"
#include "config/device_config.h"
#include "config/flat_keys.h"
#include "config/graph_config.h"

namespace zant::kor {

// Keeps nothing between loads but the state of the custom perf walk.
class KORConfigParser {
public:
    // config: the JSON text itself when its first character is '{', else the path of a file; an empty one succeeds
    // with nothing done. A load fills the records from the first on, index by index. For each index that it meets
    // it appends one, even where earlier loads left one: those stay unused behind the others. After a failure, logged
    // at level 1, the records stay as far as they were filled. Throws std::out_of_range for an index without a record,
    // and std::bad_alloc.
    bool parseConfig(const std::string& config, std::vector<KORDeviceConfig>& devices,
                     std::vector<KORGraphConfig>& graphs, std::vector<KORContextConfig>& contexts,
                     KORGroupContextConfig& groupContext, KORMemoryConfig& memory);

    // One key of the array form of "custom". False ends the section.
    bool parseCustomPerfItem(const FlatKey& key, KORCoreConfig& core);
    // Copies the pending array item to the graph states that it named, and starts anew.
    void flushPendingCustomPerf(KORCoreConfig& core);

private:
    bool customPerfFitsProfile(KORCoreConfig& core);
    bool applyCustomPerfKey(const FlatKey& key, KORCoreConfig& core);

    int32_t lastCustomPerfIndex = -1;
    std::vector<uint32_t> pendingGraphStates;
    KORCustomPerfState pendingCustomPerf;
    bool pendingCustomPerfValid = false;
};

// The sections. Each walks all flat keys; false after a failure that it logged, or one that ends it without a line.
bool parseDevices(const FlatKeyList& keys, std::vector<KORDeviceConfig>& devices, KORConfigParser& parser);
bool parseGraphs(const ConfigDocument& document, const FlatKeyList& keys, std::vector<KORGraphConfig>& graphs);
bool parseContexts(const ConfigDocument& document, const FlatKeyList& keys, std::vector<KORContextConfig>& contexts);
bool parseGroupContext(const FlatKeyList& keys, KORGroupContextConfig& groupContext);
bool parseMemory(const FlatKeyList& keys, KORMemoryConfig& memory);

// One key of the object form of "custom", or of a core's "druControl". False ends the section on the custom road.
bool parseLegacyCustomPerf(const FlatKey& key, KORCoreConfig& core);

// Setters for what the host passes besides the document. False, with a level 1 line and nothing stored, for a value
// that does not fit.
bool setSpadSize(uint32_t& spadSize, uint32_t megabytes);
bool setOptimizationLevel(uint32_t& optimizationLevel, uint32_t value);
bool setDlbc(uint32_t& dlbc, uint32_t value);
bool setSluThreads(uint32_t& sluThreads, uint32_t value);
bool setReferenceWeightSharing(bool& referenceWeightSharingEnabled, uint32_t value);

}  // namespace zant::kor
