// The one file of the host that is made with the library's own headers.
#include "zelmar_kor_inspection/chip_inspection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <exception>
#include <string>
#include <tuple>

#include "soc/capability_fields.h"
#include "soc/capability_merge.h"
#include "soc/firmware_identifier.h"
#include "soc/soc_info_registry.h"

namespace {

struct NumberedName {
    uint32_t capability;
    const char* name;
};

constexpr NumberedName DSP_NAMES[] = {{3, "arch"}, {47, "domainNames"}, {48, "domainMap"}};
constexpr NumberedName CPU_NAMES[] = {{1, "tmxType"}, {2, "numThreads"}};
constexpr NumberedName GPU_NAMES[] = {{1, "type"},
                                      {4, "description"},
                                      {5, "maxWorkGroupSize"},
                                      {6, "image2DMaxHeight"},
                                      {7, "image2DMaxWidth"},
                                      {8, "maxBufferAllocSize"},
                                      {9, "baseAddrAlignment"},
                                      {10, "image2DArrayMaxHeight"},
                                      {11, "image2DArrayMaxWidth"},
                                      {12, "image2DArrayMaxDepth"},
                                      {13, "image1DMaxWidth"}};

template <size_t N>
std::string nameOf(const NumberedName (&names)[N], uint32_t capability) {
    for (const NumberedName& row : names) {
        if (row.capability == capability) return row.name;
    }
    return fmt::format("cap{}", capability);
}

template <class T>
std::string textOf(const T& value) {
    if constexpr (std::is_enum_v<T>) {
        return fmt::format("{}", static_cast<uint32_t>(value));
    } else {
        return fmt::format("{}", value);
    }
}

class Inspection {
public:
    Inspection(runhost::TellChipFact listener, void* context)
        : m_listener(listener),
          m_context(context),
          m_chip(*soc::SocInfoRegistry::instance().registry->getSocInfo()),
          m_hasRow(m_chip.facts().socKey != 0),
          m_library(soc::CapabilityLibrary::FOR_CHIP) {}

    void tellAll() {
        tellChip();
        if (m_library.isAnswering()) {
            tellMerged();
        } else {
            tellRow();
        }
        tellRest();
    }

private:
    void tell(const char* list, size_t record, const std::string& name, const std::string& value, const char* origin) {
        const runhost::ChipFact fact{list, static_cast<uint32_t>(record), name.c_str(), value.c_str(), origin};
        m_listener(m_context, &fact);
    }

    const char* rowOrDefault() const { return m_hasRow ? "row" : "default"; }

    void tellChip() {
        const soc::SocFacts& facts = m_chip.facts();
        const soc::SocIdentity identity = m_chip.getSocIdentity();
        const bool isAnswering = m_library.isAnswering();
        tell("chip", 0, "identifier", textOf(soc::getSocModelFromFirmware()), "firmware");
        tell("chip", 0, "row", m_hasRow ? fmt::format("{} ({})", facts.socKey, facts.name) : "none", rowOrDefault());
        tell("chip", 0, "number", textOf(identity.number), isAnswering ? "library" : rowOrDefault());
        tell("chip", 0, "name", identity.name, isAnswering ? "library" : rowOrDefault());
        tell("chip", 0, "capability library", libraryText(), isAnswering ? "library" : "default");
    }

    std::string libraryText() const {
        if (m_library.handle() == nullptr) return "none";
        if (!m_library.isAnswering()) return m_library.loadedName() + ", which does not answer for a chip";
        const auto [major, minor] = soc::getVersion(m_library);
        return major < 0 ? m_library.loadedName() : fmt::format("{} {}.{}", m_library.loadedName(), major, minor);
    }

    // The records as the chip's getters merge them.
    void tellMerged() {
        const soc::SocFacts& facts = m_chip.facts();
        const soc::CapabilitySource source{m_library, soc::isKnownChip(facts)};
        const bool providersHaveRow = soc::providerFacts().socKey != 0;
        soc::Origins origins;
        const soc::DspInfo dsp = soc::mergeDspInfo(source, facts.dspInfos.front(), &origins);
        tellDsp(0, dsp, [&](uint32_t capability) { return originText(origins.at(capability), false); });
        origins.clear();
        const soc::CpuInfo cpu = soc::mergeCpuInfo(source, facts.cpuInfos.front(), &origins);
        tellCpu(0, cpu, [&](uint32_t capability) { return originText(origins.at(capability), providersHaveRow); });
        origins.clear();
        const soc::GpuInfo gpu = soc::mergeGpuInfo(source, facts.gpuInfos.front(), &origins);
        tellGpu(0, gpu, [&](uint32_t capability) { return originText(origins.at(capability), providersHaveRow); });
    }

    // What a provider gave may be of its own table.
    const char* originText(soc::Origin origin, bool isOfProviderRow) const {
        if (origin == soc::Origin::library) return isOfProviderRow ? "provider row" : "library";
        return origin == soc::Origin::row ? rowOrDefault() : "default";
    }

    void tellRow() {
        const soc::SocFacts& facts = m_chip.facts();
        const auto origin = [this](uint32_t) { return rowOrDefault(); };
        for (size_t i = 0; i < facts.dspInfos.size(); ++i) tellDsp(i, facts.dspInfos[i], origin);
        for (size_t i = 0; i < facts.cpuInfos.size(); ++i) tellCpu(i, facts.cpuInfos[i], origin);
        for (size_t i = 0; i < facts.gpuInfos.size(); ++i) tellGpu(i, facts.gpuInfos[i], origin);
    }

    template <class Rows, size_t N, class Record, class OriginOf>
    void tellFields(const char* list, size_t record, const Rows& rows, const NumberedName (&names)[N],
                    const Record& values, OriginOf&& originOf) {
        const auto tellField = [&](const auto& row) {
            const std::string name = nameOf(names, row.capability);
            tell(list, record, name, textOf(values.*row.member), originOf(row.capability));
        };
        std::apply([&](const auto&... row) { (tellField(row), ...); }, rows);
    }

    template <class OriginOf>
    void tellDsp(size_t record, const soc::DspInfo& dsp, OriginOf&& originOf) {
        tellFields("dsp", record, soc::DSP_FIELDS, DSP_NAMES, dsp, originOf);
    }
    template <class OriginOf>
    void tellCpu(size_t record, const soc::CpuInfo& cpu, OriginOf&& originOf) {
        constexpr auto tmxType = static_cast<uint32_t>(soc::CpuKey::tmxType);
        tell("cpu", record, nameOf(CPU_NAMES, tmxType), textOf(cpu.tmxType), originOf(tmxType));
        tellFields("cpu", record, soc::CPU_FIELDS, CPU_NAMES, cpu, originOf);
    }
    template <class OriginOf>
    void tellGpu(size_t record, const soc::GpuInfo& gpu, OriginOf&& originOf) {
        tellFields("gpu", record, soc::GPU_FIELDS, GPU_NAMES, gpu, originOf);
    }

    // What no capability library is asked for.
    void tellRest() {
        const soc::SocFacts& facts = m_chip.facts();
        for (size_t i = 0; i < facts.socPairs.size(); ++i) {
            tell("pair", i, "first", textOf(facts.socPairs[i].first), rowOrDefault());
            tell("pair", i, "second", textOf(facts.socPairs[i].second), rowOrDefault());
        }
        for (size_t i = 0; i < facts.auxInfos.size(); ++i) {
            const soc::AuxInfo& aux = facts.auxInfos[i];
            tell("aux", i, "number", textOf(aux.number), rowOrDefault());
            tell("aux", i, "present", textOf(aux.present), rowOrDefault());
            tell("aux", i, "size", textOf(aux.size), rowOrDefault());
            tell("aux", i, "entries", textOf(aux.entries), rowOrDefault());
        }
    }

    runhost::TellChipFact m_listener;
    void* m_context;
    soc::SocInfo& m_chip;
    bool m_hasRow;
    soc::CapabilityLibrary m_library;
};

}  // namespace

bool zelmar_kor_inspectChip(runhost::TellChipFact tell, void* context) {
    try {
        Inspection(tell, context).tellAll();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}
