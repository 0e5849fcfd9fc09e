#include "soc/hybrid_soc_info.h"

#include "soc/soc_table.h"

namespace soc {

namespace {

SocFacts unknownChip(uint32_t id) {
    SocFacts facts;
    facts.socIds = {id};
    facts.name = UNKNOWN_CHIP_NAME;
    facts.nameSet = {facts.name};
    return facts;
}

}  // namespace

HybridSocInfo::HybridSocInfo(uint32_t id) : SocInfo(unknownChip(id)) {
    makeOnceFlags();
}

// The place of the merge: a capability library's answers are to be laid over what the row says here.

SocIdentity HybridSocInfo::getSocIdentity() {
    return SocInfo::getSocIdentity();
}

std::vector<CpuInfo> HybridSocInfo::getCpuInfos() {
    return SocInfo::getCpuInfos();
}

std::vector<GpuInfo> HybridSocInfo::getGpuInfos() {
    return SocInfo::getGpuInfos();
}

std::vector<DspInfo> HybridSocInfo::getDspInfos() {
    return SocInfo::getDspInfos();
}

}  // namespace soc
