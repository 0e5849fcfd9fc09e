// The facts that a capability library answers for, as rows: the capability's number and the field that it fills.
#pragma once

#include <cstdint>
#include <tuple>

#include "soc/dsp_info.h"
#include "soc/info_providers.h"

namespace soc {

template <class Record, class T>
struct Field {
    uint32_t capability;
    T Record::*member;
};
template <class Record, class T>
Field(uint32_t, T Record::*) -> Field<Record, T>;

// A byte that is kept in a wider field: of an answer only the first byte counts.
struct ByteField {
    uint32_t capability;
    uint32_t DspInfo::*member;
};

// A field that is asked for through its provider.
template <class Provider, class Record, class T>
struct ProvidedField {
    uint32_t capability;
    T Record::*member;
};
template <class Provider, class Record, class T, class Key>
constexpr ProvidedField<Provider, Record, T> provided(Key key, T Record::*member) {
    return {static_cast<uint32_t>(key), member};
}

inline constexpr std::tuple DSP_FIELDS{
    Field{1, &DspInfo::cap1},         Field{2, &DspInfo::cap2},       Field{3, &DspInfo::arch},
    Field{4, &DspInfo::cap4},         Field{5, &DspInfo::cap5},       ByteField{6, &DspInfo::cap6},
    Field{7, &DspInfo::cap7},         Field{8, &DspInfo::cap8},       Field{9, &DspInfo::cap9},
    Field{10, &DspInfo::cap10},       Field{11, &DspInfo::cap11},     Field{12, &DspInfo::cap12},
    Field{13, &DspInfo::cap13},       Field{14, &DspInfo::cap14},     Field{15, &DspInfo::cap15},
    Field{16, &DspInfo::cap16},       ByteField{17, &DspInfo::cap17}, Field{18, &DspInfo::cap18},
    Field{19, &DspInfo::cap19},       Field{20, &DspInfo::cap20},     Field{21, &DspInfo::cap21},
    Field{22, &DspInfo::cap22},       Field{23, &DspInfo::cap23},     Field{24, &DspInfo::cap24},
    Field{25, &DspInfo::cap25},       Field{26, &DspInfo::cap26},     Field{27, &DspInfo::cap27},
    Field{28, &DspInfo::cap28},       Field{29, &DspInfo::cap29},     Field{30, &DspInfo::cap30},
    Field{31, &DspInfo::cap31},       Field{32, &DspInfo::cap32},     Field{33, &DspInfo::cap33},
    Field{34, &DspInfo::cap34},       Field{36, &DspInfo::cap36},     Field{37, &DspInfo::cap37},
    Field{38, &DspInfo::cap38},       ByteField{39, &DspInfo::cap39}, Field{40, &DspInfo::cap40},
    Field{41, &DspInfo::cap41},       ByteField{42, &DspInfo::cap42}, Field{43, &DspInfo::cap43},
    Field{44, &DspInfo::cap44},       Field{45, &DspInfo::cap45},     Field{46, &DspInfo::cap46},
    Field{47, &DspInfo::domainNames}, Field{48, &DspInfo::domainMap}, Field{49, &DspInfo::cap49},
    Field{50, &DspInfo::cap50},       Field{51, &DspInfo::cap51}};

// tmxType has a rule of its own.
inline constexpr std::tuple CPU_FIELDS{provided<NumThreadProvider>(CpuKey::numThreads, &CpuInfo::numThreads)};

inline constexpr std::tuple GPU_FIELDS{
    provided<GpuTypeProvider>(GpuKey::type, &GpuInfo::type),
    provided<GpuDescProvider>(GpuKey::description, &GpuInfo::description),
    provided<MaxWorkGroupSizeProvider>(GpuKey::maxWorkGroupSize, &GpuInfo::maxWorkGroupSize),
    provided<Image2DMaxHeightProvider>(GpuKey::image2DMaxHeight, &GpuInfo::image2DMaxHeight),
    provided<Image2DMaxWidthProvider>(GpuKey::image2DMaxWidth, &GpuInfo::image2DMaxWidth),
    provided<MaxBufferAllocSizeProvider>(GpuKey::maxBufferAllocSize, &GpuInfo::maxBufferAllocSize),
    provided<BaseAddrAlignmentProvider>(GpuKey::baseAddrAlignment, &GpuInfo::baseAddrAlignment),
    provided<Image2DArrayMaxHeightProvider>(GpuKey::image2DArrayMaxHeight, &GpuInfo::image2DArrayMaxHeight),
    provided<Image2DArrayMaxWidthProvider>(GpuKey::image2DArrayMaxWidth, &GpuInfo::image2DArrayMaxWidth),
    provided<Image2DArrayMaxDepthProvider>(GpuKey::image2DArrayMaxDepth, &GpuInfo::image2DArrayMaxDepth),
    provided<Image1DMaxWidthProvider>(GpuKey::image1DMaxWidth, &GpuInfo::image1DMaxWidth)};

}  // namespace soc
