#include "soc/hybrid_soc_info.h"

#include "soc/capability_library.h"
#include "soc/capability_merge.h"
#include "soc/soc_table.h"

namespace soc {

namespace {

constexpr int32_t ANSWERED_CHIP_NUMBER = 0x7FFFFFFF;
constexpr const char* ANSWERED_CHIP_NAME = "Dynamic VRD";

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

SocIdentity HybridSocInfo::getSocIdentity() {
    const CapabilityLibrary library(CapabilityLibrary::FOR_CHIP);
    if (!library.isAnswering()) return SocInfo::getSocIdentity();
    return {ANSWERED_CHIP_NUMBER, ANSWERED_CHIP_NAME};
}

std::vector<CpuInfo> HybridSocInfo::getCpuInfos() {
    const CapabilityLibrary library(CapabilityLibrary::FOR_CHIP);
    if (!library.isAnswering()) return SocInfo::getCpuInfos();
    return {mergeCpuInfo({library, isKnownChip(facts())}, facts().cpuInfos.front())};
}

std::vector<GpuInfo> HybridSocInfo::getGpuInfos() {
    const CapabilityLibrary library(CapabilityLibrary::FOR_CHIP);
    if (!library.isAnswering()) return SocInfo::getGpuInfos();
    return {mergeGpuInfo({library, isKnownChip(facts())}, facts().gpuInfos.front())};
}

std::vector<DspInfo> HybridSocInfo::getDspInfos() {
    const CapabilityLibrary library(CapabilityLibrary::FOR_CHIP);
    if (!library.isAnswering()) return SocInfo::getDspInfos();
    return {mergeDspInfo({library, isKnownChip(facts())}, facts().dspInfos.front())};
}

}  // namespace soc
