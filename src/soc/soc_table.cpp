#include "soc/soc_table.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string>
#include <utility>

#include "soc/soc_rows.h"

namespace soc {

namespace {

constexpr uint64_t MAX_BUFFER = 0x40000000;
constexpr uint64_t SMALL_BUFFER = 0x10000000;
constexpr uint64_t ODD_BUFFER = 807052800;
constexpr uint64_t IMAGE_SIDE = 16384;
constexpr uint64_t SMALL_IMAGE_SIDE = 8192;
constexpr uint64_t NUM_THREADS = 6;

template <size_t N>
bool isIn(const std::array<uint32_t, N>& keys, uint32_t key) {
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// Fields of one bit each, in the order of a row's flags.
constexpr auto BYTE_FLAGS = std::to_array<uint8_t DspInfo::*>(
    {&DspInfo::cap9, &DspInfo::cap10, &DspInfo::cap11, &DspInfo::cap12, &DspInfo::cap13, &DspInfo::cap27,
     &DspInfo::cap29, &DspInfo::cap30, &DspInfo::cap31, &DspInfo::cap32, &DspInfo::cap33, &DspInfo::cap34,
     &DspInfo::cap36, &DspInfo::cap37});
constexpr auto WORD_FLAGS = std::to_array<uint32_t DspInfo::*>({&DspInfo::cap39, &DspInfo::cap40});

// Names of a chip are one of these and its key; the first is the name.
constexpr const char* SPELLINGS[] = {"Chip ", "chip ", "CHIP ", "Chip_", "chip_", "Chip-", "chip-"};
constexpr const char* ALIASES[] = {"First alias of chip ", "Second alias of chip ", "Third alias of chip "};

void addFlags(DspInfo& dsp, uint32_t flags) {
    for (const auto field : BYTE_FLAGS) {
        dsp.*field = static_cast<uint8_t>(flags & 1U);
        flags >>= 1U;
    }
    for (const auto field : WORD_FLAGS) {
        dsp.*field = flags & 1U;
        flags >>= 1U;
    }
}

void addFigures(DspInfo& dsp, uint32_t key) {
    for (const FiguresRow& row : FIGURES_ROWS) {
        if (row.key != key) continue;
        dsp.cap18 = 1024;
        dsp.cap19 = 7;
        dsp.cap20 = 7;
        dsp.cap22 = 3584;
        dsp.cap23 = row.cap23;
        dsp.cap24 = 1;
        dsp.cap25 = row.cap25;
    }
}

DspInfo makeDsp(const SocRow& row) {
    DspInfo dsp;
    const DspRow& from = row.dsp;
    dsp.cap1 = from.cap1;
    dsp.cap2 = from.cap2;
    dsp.arch = from.arch;
    dsp.cap7 = from.cap7;
    dsp.cap8 = from.cap8;
    dsp.cap14 = from.cap14;
    if (isIn(ZERO_CAP15_ROWS, row.key)) dsp.cap15 = 0;
    dsp.cap38 = row.key == ROW_WITHOUT_CAP38 ? 0 : 1;
    dsp.cap41 = from.arch == 0 ? 0 : row.key;
    dsp.cap49 = row.key == ROW_WITH_CAP49 ? 1 : 0;
    dsp.cap50 = from.cap50;
    dsp.cap51 = from.cap51;
    addFlags(dsp, from.flags);
    addFigures(dsp, row.key);
    for (const ListRow& list : LIST_ROWS) {
        if (list.key == row.key) dsp.cap16.assign(list.values.begin(), list.values.begin() + list.count);
    }
    return dsp;
}

void addDomains(DspInfo& dsp, std::initializer_list<std::pair<const char*, uint32_t>> domains) {
    uint32_t key = 0;
    for (const auto& [name, number] : domains) {
        dsp.domainNames.emplace_back(name);
        dsp.domainMap.emplace(key++, std::pair<std::string, uint32_t>(name, number));
    }
}

// The one chip with a second DSP, and with domains.
std::vector<DspInfo> makeDualDsp(DspInfo first) {
    DspInfo second = first;
    first.cap7 = 16;
    first.cap8 = 8;
    first.cap14 = 32;
    first.cap16 = {4};
    first.cap42 = 1;
    first.cap43 = 1248.0F;
    first.cap44 = 1171.2F;
    addDomains(first, {{"cdsp", 3}, {"cdsp1", 4}, {"cdsp2", 7}, {"cdsp3", 8}});
    second.cap7 = 2;
    second.cap8 = 4;
    second.cap14 = 1;
    second.cap16 = {1, 1, 1};
    second.cap45 = 1;
    second.cap46 = {{0, 3}, {1, 3}, {2, 3}};
    addDomains(second, {{"adsp", 0}, {"adsp1", 5}, {"adsp2", 6}});
    return {first, second};
}

GpuInfo makeGpu(const SocRow& row) {
    GpuInfo gpu;
    if (row.gpuModel == 0) return gpu;
    const uint64_t side = isIn(SMALL_IMAGE_ROWS, row.key) ? SMALL_IMAGE_SIDE : IMAGE_SIDE;
    gpu.type = static_cast<GpuType>(row.gpuModel);
    gpu.description = "GPU " + std::to_string(row.gpuModel);
    gpu.maxWorkGroupSize = 1024;
    gpu.image2DMaxHeight = side;
    gpu.image2DMaxWidth = side;
    gpu.maxBufferAllocSize = isIn(SMALL_BUFFER_ROWS, row.key) ? SMALL_BUFFER
                             : isIn(ODD_BUFFER_ROWS, row.key) ? ODD_BUFFER
                                                              : MAX_BUFFER;
    gpu.baseAddrAlignment = 1024;
    gpu.image2DArrayMaxHeight = side;
    gpu.image2DArrayMaxWidth = side;
    gpu.image2DArrayMaxDepth = 2048;
    return gpu;
}

AuxInfo makeAux(const SocRow& row) {
    AuxInfo aux;
    if (row.aux == 0) return aux;
    const AuxRow& from = AUX_ROWS[row.aux - 1U];
    aux.number = from.number;
    aux.present = from.present;
    aux.size = from.size;
    aux.entries.assign(from.entries.begin(), from.entries.begin() + from.entryCount);
    return aux;
}

SocPair makePair(PairKind kind) {
    switch (kind) {
        case PAIR_100:
            return {100, 16};
        case PAIR_200:
            return {200, 32};
        case PAIR_PLAIN:
            break;
    }
    return {};
}

void nameChip(SocFacts& facts, const SocRow& row) {
    const std::string key = std::to_string(row.key);
    facts.name = row.key == 0 ? UNKNOWN_CHIP_NAME : SPELLINGS[0] + key;
    facts.nameSet.insert(facts.name);
    for (size_t i = 1; i <= row.spellings; ++i) facts.nameSet.insert(SPELLINGS[i] + key);
    if (!isIn(ALIAS_ROWS, row.key)) return;
    for (const char* alias : ALIASES) facts.aliases.push_back(alias + key);
}

// What the provider table has of a row.
SocFacts makeProviderFacts(const SocRow& row) {
    SocFacts facts;
    facts.socKey = row.key;
    facts.socIds.assign(row.ids.ids.begin(), row.ids.ids.begin() + row.ids.count);
    nameChip(facts, row);
    facts.cpuInfos = {CpuInfo{TmxType::none, row.key == 0 ? 0 : NUM_THREADS}};
    facts.gpuInfos = {makeGpu(row)};
    return facts;
}

SocFacts makeFacts(const SocRow& row) {
    SocFacts facts = makeProviderFacts(row);
    facts.dspInfos = {makeDsp(row)};
    if (row.key == DUAL_DSP_ROW) {
        facts.dspInfos = makeDualDsp(std::move(facts.dspInfos.front()));
        facts.gpuInfos = {facts.gpuInfos.front(), facts.gpuInfos.front()};
    }
    facts.socPairs = {makePair(row.pair)};
    facts.auxInfos = {makeAux(row)};
    return facts;
}

}  // namespace

SocTable makeSocTable() {
    SocTable table;
    for (const SocRow& row : SOC_ROWS) table.emplace_hint(table.end(), row.key, makeFacts(row));
    return table;
}

SocTable makeProviderTable() {
    SocTable table;
    for (const SocRow& row : SOC_ROWS) {
        if (isIn(PROVIDER_ROWS, row.key)) table.emplace_hint(table.end(), row.key, makeProviderFacts(row));
    }
    return table;
}

const SocInfo* findById(const SocTable& table, uint32_t id) {
    for (const auto& [key, row] : table) {
        const std::vector<uint32_t>& ids = row.facts().socIds;
        if (std::find(ids.begin(), ids.end(), id) != ids.end()) return &row;
    }
    return nullptr;
}

}  // namespace soc
