// The running chip: its row's facts, and the place where a capability library's answers are laid over them.
#pragma once

#include <cstdint>
#include <vector>

#include "soc/soc_info.h"

namespace soc {

// Each of the four getters loads the capability library anew, asks it, and unloads it. Where none answers for the chip
// they give what the row says; else one record, or a name that belongs to no row.
class HybridSocInfo : public SocInfo {
public:
    // A chip that no row lists: the identifier (0 when nobody could tell) and default records.
    explicit HybridSocInfo(uint32_t id);

    // Becomes the row's chip. Not to be called once another thread may know the object.
    void adoptRow(const SocInfo& row) { setFacts(row.facts()); }

    SocIdentity getSocIdentity() override;
    std::vector<CpuInfo> getCpuInfos() override;
    std::vector<GpuInfo> getGpuInfos() override;
    std::vector<DspInfo> getDspInfos() override;
};

}  // namespace soc
