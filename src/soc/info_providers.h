// Single facts of the running chip's CPU and GPU, one provider each: from a smaller table of chips, and from a
// capability library on all others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "soc/capability_library.h"
#include "soc/soc_info.h"

namespace soc {

enum class CpuKey : uint32_t { tmxType = 1, numThreads = 2 };

enum class GpuKey : uint32_t {
    type = 1,
    description = 4,
    maxWorkGroupSize = 5,
    image2DMaxHeight = 6,
    image2DMaxWidth = 7,
    maxBufferAllocSize = 8,
    baseAddrAlignment = 9,
    image2DArrayMaxHeight = 10,
    image2DArrayMaxWidth = 11,
    image2DArrayMaxDepth = 12,
    image1DMaxWidth = 13,
};

constexpr uint32_t FACT_FOUND = 0;
constexpr uint32_t FACT_NOT_ANSWERED = 4;

template <class Key, Key K, class T>
class ISystemInfo {
public:
    virtual ~ISystemInfo() = default;
    virtual bool isAvailable() = 0;
    // FACT_FOUND with out set, or FACT_NOT_ANSWERED with out as it was. available is what isAvailable gave; not looked
    // at.
    virtual uint32_t getValue(T& out, bool available) = 0;
};

// Of a chip outside that table only a capability library can tell; it is loaded for the one question.
template <class T>
uint32_t askCapabilityLibrary(CpuKey key, T& out) {
    const CapabilityLibrary library(CapabilityLibrary::FOR_PROVIDERS);
    return getAnswer(library, CPU_CATEGORY, static_cast<uint32_t>(key), out) ? FACT_FOUND : FACT_NOT_ANSWERED;
}
template <class T>
uint32_t askCapabilityLibrary(GpuKey key, T& out) {
    const CapabilityLibrary library(CapabilityLibrary::FOR_PROVIDERS);
    return getAnswer(library, GPU_CATEGORY, static_cast<uint32_t>(key), out) ? FACT_FOUND : FACT_NOT_ANSWERED;
}

// The running chip's row in the table of those that answer without a capability library, else the default row.
const SocFacts& providerFacts();

template <class Key, Key K, class T, auto Records, auto Field>
class FactProvider : public ISystemInfo<Key, K, T> {
public:
    // index: the record that is read.
    explicit FactProvider(uint32_t index = 0) : m_index(index) {}

    bool isAvailable() override { return true; }
    uint32_t getValue(T& out, bool /*available*/) override {
        const SocFacts& facts = providerFacts();
        if (facts.socKey == 0) return askCapabilityLibrary(K, out);
        if (m_index >= (facts.*Records).size()) return FACT_NOT_ANSWERED;
        out = (facts.*Records)[m_index].*Field;
        return FACT_FOUND;
    }

private:
    uint32_t m_index;
};

template <CpuKey K, class T, auto Field>
using CpuProvider = FactProvider<CpuKey, K, T, &SocFacts::cpuInfos, Field>;
template <GpuKey K, class T, auto Field>
using GpuProvider = FactProvider<GpuKey, K, T, &SocFacts::gpuInfos, Field>;

using TmxTypeProvider = CpuProvider<CpuKey::tmxType, TmxType, &CpuInfo::tmxType>;
using NumThreadProvider = CpuProvider<CpuKey::numThreads, uint64_t, &CpuInfo::numThreads>;
using GpuTypeProvider = GpuProvider<GpuKey::type, GpuType, &GpuInfo::type>;
using GpuDescProvider = GpuProvider<GpuKey::description, std::string, &GpuInfo::description>;
using MaxWorkGroupSizeProvider = GpuProvider<GpuKey::maxWorkGroupSize, uint64_t, &GpuInfo::maxWorkGroupSize>;
using Image2DMaxHeightProvider = GpuProvider<GpuKey::image2DMaxHeight, uint64_t, &GpuInfo::image2DMaxHeight>;
using Image2DMaxWidthProvider = GpuProvider<GpuKey::image2DMaxWidth, uint64_t, &GpuInfo::image2DMaxWidth>;
using MaxBufferAllocSizeProvider = GpuProvider<GpuKey::maxBufferAllocSize, uint64_t, &GpuInfo::maxBufferAllocSize>;
using BaseAddrAlignmentProvider = GpuProvider<GpuKey::baseAddrAlignment, uint32_t, &GpuInfo::baseAddrAlignment>;
using Image2DArrayMaxHeightProvider =
    GpuProvider<GpuKey::image2DArrayMaxHeight, uint64_t, &GpuInfo::image2DArrayMaxHeight>;
using Image2DArrayMaxWidthProvider =
    GpuProvider<GpuKey::image2DArrayMaxWidth, uint64_t, &GpuInfo::image2DArrayMaxWidth>;
using Image2DArrayMaxDepthProvider =
    GpuProvider<GpuKey::image2DArrayMaxDepth, uint64_t, &GpuInfo::image2DArrayMaxDepth>;
using Image1DMaxWidthProvider = GpuProvider<GpuKey::image1DMaxWidth, uint64_t, &GpuInfo::image1DMaxWidth>;

}  // namespace soc
