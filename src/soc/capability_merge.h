// What the chip's row says and what a capability library answers, made one.
#pragma once

#include <cstdint>
#include <map>

#include "soc/capability_library.h"
#include "soc/soc_info.h"

namespace soc {

// Where a merged fact comes from.
enum class Origin : uint8_t { row, library, standard };
using Origins = std::map<uint32_t, Origin>;  // by the capability's number

// Whose answers are laid over a row.
struct CapabilitySource {
    const CapabilityLibrary& library;
    bool isKnownChip;
};

// A chip counts as known when the firmware named it, whether or not a row stands behind the name.
bool isKnownChip(const SocFacts& facts);

// The rule of every field but tmxType. answer: null when the library did not answer. ZANT_SYSTEM_INFO fills in where
// no row was found; on a known chip it can only confirm, and an answer that disagrees gives the standard value.
template <class T>
Origin mergeCapability(const CapabilitySource& source, const T* answer, const T& fromRow, const T& standard, T& out) {
    Origin origin = answer != nullptr ? Origin::library : Origin::standard;
    if (source.library.isZantSystemInfo()) {
        if (answer != nullptr && source.isKnownChip && !(*answer == fromRow)) origin = Origin::standard;
    } else if (answer == nullptr && source.isKnownChip) {
        origin = Origin::row;
    }
    out = origin == Origin::library ? *answer : origin == Origin::row ? fromRow : standard;
    return origin;
}

// The record of the one DSP, CPU or GPU that a library answers for, over the first record of the chip's row. Origins
// are written where the caller asks for them.
DspInfo mergeDspInfo(const CapabilitySource& source, const DspInfo& fromRow, Origins* origins = nullptr);
CpuInfo mergeCpuInfo(const CapabilitySource& source, const CpuInfo& fromRow, Origins* origins = nullptr);
GpuInfo mergeGpuInfo(const CapabilitySource& source, const GpuInfo& fromRow, Origins* origins = nullptr);

}  // namespace soc
