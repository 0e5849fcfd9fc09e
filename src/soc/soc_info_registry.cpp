#include "soc/soc_info_registry.h"

#include "soc/firmware_identifier.h"

namespace soc {

SocInfoRegistry::Handle SocInfoRegistry::instance() {
    static SocInfoRegistry registry;
    return {&registry, 0};
}

SocInfo* SocInfoRegistry::getSocInfo() {
    static const uint32_t id = getSocModelFromFirmware();
    return buildCurrent(id);
}

SocInfo* SocInfoRegistry::buildCurrent(uint32_t id) {
    zant::MutexLock lock(m_mutex);
    if (m_built) return m_current.get();
    m_current = std::make_unique<HybridSocInfo>(id);
    if (id >= 1) {
        if (const SocInfo* row = findById(m_table, id)) m_current->adoptRow(*row);
    }
    m_built = true;
    return m_current.get();
}

std::vector<DspInfo> currentDspInfos() {
    return SocInfoRegistry::instance().registry->getSocInfo()->getDspInfosOnce();
}

}  // namespace soc
