#include "perf/power_infrastructure.h"

#include "platform/logger.h"

namespace zant::kor {

Mutex g_infraMutex;

const ZantPerfInfrastructure* fetchInfrastructure(const ZantProviderRecord& backendInterface) {
    const ZantPerfInfrastructure* infrastructure = nullptr;
    // A backend without the entry is one that refuses.
    if (backendInterface.deviceGetInfrastructure == nullptr ||
        backendInterface.deviceGetInfrastructure(&infrastructure) != 0) {
        ZANT_LOG_ERROR("deviceInfra is nullptr");
        return nullptr;
    }
    if (infrastructure == nullptr) {
        ZANT_LOG_ERROR("ZantDevice_getInfrastructure returned nullptr\n");
        return nullptr;
    }
    ZANT_LOG_INFO("ZantDevice_getInfrastructure passed\n");
    return infrastructure;
}

}  // namespace zant::kor
