#include "soc/soc_info.h"

namespace soc {

namespace {

template <class Record>
void keepOne(std::vector<Record>& records) {
    if (records.empty()) records.emplace_back();
}

}  // namespace

SocInfo::SocInfo(SocFacts facts) : m_facts(std::move(facts)) {
    keepOne(m_facts.dspInfos);
    keepOne(m_facts.cpuInfos);
    keepOne(m_facts.gpuInfos);
    keepOne(m_facts.socPairs);
    keepOne(m_facts.auxInfos);
}

SocIdentity SocInfo::getSocIdentity() {
    return {static_cast<int32_t>(m_facts.socKey), m_facts.name};
}

std::vector<CpuInfo> SocInfo::getCpuInfos() {
    return m_facts.cpuInfos;
}

std::vector<GpuInfo> SocInfo::getGpuInfos() {
    return m_facts.gpuInfos;
}

std::vector<DspInfo> SocInfo::getDspInfos() {
    return m_facts.dspInfos;
}

std::vector<SocPair> SocInfo::getSocPairs() {
    return m_facts.socPairs;
}

std::vector<AuxInfo> SocInfo::getAuxInfos() {
    return m_facts.auxInfos;
}

const std::vector<DspInfo>& SocInfo::getDspInfosOnce() {
    if (const auto& flag = m_onceFlags[DSP_INFOS_FLAG]) {
        zant::MutexLock lock(flag->mutex);
        if (!flag->isDone) m_facts.dspInfos = getDspInfos();
        flag->isDone = true;
    }
    return m_facts.dspInfos;
}

void SocInfo::makeOnceFlags() {
    for (auto& flag : m_onceFlags) flag = std::make_shared<OnceFlag>();
}

}  // namespace soc
