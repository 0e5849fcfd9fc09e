// The process's one place that knows all chips and the running one.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/mutex.h"
#include "soc/hybrid_soc_info.h"
#include "soc/soc_table.h"

namespace soc {

class SocInfoRegistry {
public:
    // The registry and a selector that stays 0.
    struct Handle {
        SocInfoRegistry* registry;
        uint32_t selector;
    };

    // Built on the first call, by one thread while others wait; lives until unload.
    static Handle instance();

    SocInfoRegistry() : m_table(makeSocTable()) {}

    // The running chip, never null; the registry owns it. The firmware is asked once for the process.
    SocInfo* getSocInfo() EXCLUDES(m_mutex);
    // Makes the chip of an identifier the running one; later calls give what the first one built. Any thread.
    SocInfo* buildCurrent(uint32_t id) EXCLUDES(m_mutex);

    const SocTable& table() const noexcept { return m_table; }

private:
    const SocTable m_table;
    zant::Mutex m_mutex;
    std::unique_ptr<HybridSocInfo> m_current GUARDED_BY(m_mutex);
    bool m_built GUARDED_BY(m_mutex) = false;
};

// The DSPs of the running chip, never empty.
std::vector<DspInfo> currentDspInfos();

}  // namespace soc
