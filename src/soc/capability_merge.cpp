#include "soc/capability_merge.h"

#include <tuple>

#include "soc/capability_fields.h"
#include "soc/capability_records.h"

namespace soc {

namespace {

// What a field's row asks; false when nobody answers.
template <class Record, class T>
bool ask(const CapabilityLibrary& library, const Field<Record, T>& field, T& out) {
    return getAnswer(library, DSP_CATEGORY, field.capability, out);
}

bool ask(const CapabilityLibrary& library, const ByteField& field, uint32_t& out) {
    uint8_t byte = 0;
    if (!getAnswer(library, DSP_CATEGORY, field.capability, byte)) return false;
    out = byte;
    return true;
}

// A provider opens the library that it needs.
template <class Provider, class Record, class T>
bool ask(const CapabilityLibrary& /*library*/, const ProvidedField<Provider, Record, T>& /*field*/, T& out) {
    Provider provider;
    return provider.getValue(out, provider.isAvailable()) == FACT_FOUND;
}

void note(Origins* origins, uint32_t capability, Origin origin) {
    if (origins != nullptr) origins->insert_or_assign(capability, origin);
}

template <class Record, class Row>
void mergeField(const CapabilitySource& source, const Row& row, const Record& fromRow, const Record& standard,
                Record& merged, Origins* origins) {
    auto answer = standard.*row.member;
    const bool isAnswered = ask(source.library, row, answer);
    note(origins, row.capability,
         mergeCapability(source, isAnswered ? &answer : nullptr, fromRow.*row.member, standard.*row.member,
                         merged.*row.member));
}

template <class Record, class Rows>
Record mergeFields(const CapabilitySource& source, const Rows& rows, const Record& fromRow, Origins* origins) {
    const Record standard;
    Record merged;
    std::apply([&](const auto&... row) { (mergeField(source, row, fromRow, standard, merged, origins), ...); }, rows);
    return merged;
}

}  // namespace

bool isKnownChip(const SocFacts& facts) {
    return !facts.socIds.empty() && facts.socIds.front() >= 1;
}

DspInfo mergeDspInfo(const CapabilitySource& source, const DspInfo& fromRow, Origins* origins) {
    return mergeFields(source, DSP_FIELDS, fromRow, origins);
}

CpuInfo mergeCpuInfo(const CapabilitySource& source, const CpuInfo& fromRow, Origins* origins) {
    CpuInfo merged = mergeFields(source, CPU_FIELDS, fromRow, origins);
    // The same rule for both libraries.
    Origin origin = Origin::library;
    TmxTypeProvider provider;
    if (provider.getValue(merged.tmxType, provider.isAvailable()) != FACT_FOUND) {
        origin = source.isKnownChip ? Origin::row : Origin::standard;
        merged.tmxType = source.isKnownChip ? fromRow.tmxType : TmxType::none;
    }
    note(origins, static_cast<uint32_t>(CpuKey::tmxType), origin);
    return merged;
}

GpuInfo mergeGpuInfo(const CapabilitySource& source, const GpuInfo& fromRow, Origins* origins) {
    return mergeFields(source, GPU_FIELDS, fromRow, origins);
}

}  // namespace soc
