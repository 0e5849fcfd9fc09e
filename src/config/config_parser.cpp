#include "config/config_parser.h"

#include <algorithm>

#include "config/option_tables.h"
#include "config/schema.h"
#include "platform/logger.h"

namespace zant::kor {

bool KORConfigParser::parseConfig(const std::string& config, std::vector<KORDeviceConfig>& devices,
                                  std::vector<KORGraphConfig>& graphs, std::vector<KORContextConfig>& contexts,
                                  KORGroupContextConfig& groupContext, KORMemoryConfig& memory) {
    if (config.empty()) return true;
    ConfigDocument document;
    const bool loaded = config.front() == '{' ? loadConfigString(document, config) : loadConfigFile(document, config);
    if (!loaded) {
        ZANT_LOG_ERROR("KOR backend extensions failed to parse config.");
        return false;
    }
    const FlatKeyList keys = collectKeys(document);
    if (!validateDocument(document, configSchemaText)) {
        ZANT_LOG_ERROR("backend config file schema validation failed");
        return false;
    }
    bool result = parseDevices(keys, devices, *this);
    result = parseGraphs(document, keys, graphs) && result;
    result = parseContexts(document, keys, contexts) && result;
    result = parseGroupContext(keys, groupContext) && result;
    result = parseMemory(keys, memory) && result;
    if (devices.empty()) return result;
    return customPerfFitsProfile(devices.front().core) && result;
}

bool KORConfigParser::customPerfFitsProfile(KORCoreConfig& core) {
    flushPendingCustomPerf(core);
    const bool hasCorners =
        std::any_of(core.customPerfStates.begin(), core.customPerfStates.end(),
                    [](const KORCustomPerfState& state) { return state.dcvsControlSet || state.dcvsExpControlSet; });
    const bool wantsCorners = core.perfProfile == PERF_PROFILE_CUSTOM;
    if (wantsCorners && !hasCorners) {
        ZANT_LOG_ERROR("Performance profile CUSTOM requires custom configuration of Core and Bus voltage corners.");
        return false;
    }
    if (!wantsCorners && hasCorners) {
        ZANT_LOG_ERROR(
            "Custom configuration of Bus and Core voltage corners requires perfProfile specification as CUSTOM");
        return false;
    }
    return true;
}

}  // namespace zant::kor
