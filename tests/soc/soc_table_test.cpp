#include "soc/soc_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace soc {
namespace {

using Values = std::set<uint64_t>;
using Counts = std::map<uint64_t, size_t>;

const SocTable& chips() {
    static const SocTable table = makeSocTable();
    return table;
}

const SocFacts& row(uint32_t key) {
    return chips().at(key).facts();
}

// How often each value of a field stands in all records of a list.
template <class Record, class Get>
Counts countsOf(std::vector<Record> SocFacts::*list, Get get) {
    Counts counts;
    for (const auto& [key, chip] : chips()) {
        for (const Record& record : chip.facts().*list) ++counts[static_cast<uint64_t>(get(record))];
    }
    return counts;
}

template <class Get>
Counts countsOfRows(Get get) {
    Counts counts;
    for (const auto& [key, chip] : chips()) ++counts[static_cast<uint64_t>(get(chip.facts()))];
    return counts;
}

Values valuesOf(const Counts& counts) {
    Values values;
    for (const auto& [value, count] : counts) values.insert(value);
    return values;
}

TEST(SocTable, KeysIdentifiersAndNamesSpreadAsTheyShould) {
    Values unused;
    for (uint32_t key = 0; key <= 123; ++key) {
        if (!chips().contains(key)) unused.insert(key);
    }
    EXPECT_EQ(chips().size(), 112U);
    EXPECT_EQ(unused, (Values{2, 3, 4, 7, 8, 9, 14, 22, 44, 108, 114, 122}));
    EXPECT_EQ(countsOfRows([](const SocFacts& facts) { return facts.nameSet.count(facts.name); }), (Counts{{1, 112}}));

    Counts rowsOfId;
    Counts sizes;
    size_t total = 0;
    for (const auto& [key, chip] : chips()) {
        EXPECT_EQ(chip.facts().socKey, key);
        for (const uint32_t id : chip.facts().socIds) ++rowsOfId[id];
        total += chip.facts().socIds.size();
        ++sizes[chip.facts().socIds.size()];
    }
    EXPECT_EQ(total, 248U);
    EXPECT_EQ(rowsOfId.size(), 247U);
    EXPECT_EQ(rowsOfId.at(688), 2U);
    EXPECT_THAT(row(66).socIds, testing::Contains(688));
    EXPECT_THAT(row(89).socIds, testing::Contains(688));
    EXPECT_EQ(rowsOfId.begin()->first, 0U);
    EXPECT_EQ(rowsOfId.rbegin()->first, 798U);
    EXPECT_EQ(std::tie(sizes[1], sizes[2], sizes[3], sizes[4]), std::make_tuple(47U, 33U, 12U, 12U));
    EXPECT_EQ(sizes.rbegin()->first, 12U);

    const Counts aliases = countsOfRows([](const SocFacts& facts) { return facts.aliases.size(); });
    EXPECT_EQ(aliases, (Counts{{0, 110}, {3, 2}}));
    const Counts spellings = countsOfRows([](const SocFacts& facts) { return facts.nameSet.size(); });
    EXPECT_EQ(valuesOf(spellings), (Values{1, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(spellings.at(1), 67U);
}

struct DspColumn {
    const char* name;
    uint64_t (*get)(const DspInfo& dsp);
    Values values;
};

template <auto Field>
uint64_t field(const DspInfo& dsp) {
    return static_cast<uint64_t>(dsp.*Field);
}
template <auto Field>
uint64_t sizeOf(const DspInfo& dsp) {
    return (dsp.*Field).size();
}

// Columns whose values elsewhere than in row 72 are these.
const DspColumn DSP_COLUMNS[] = {
    {"cap1", field<&DspInfo::cap1>, {0, 2, 3, 4}},
    {"cap2", field<&DspInfo::cap2>, {0, 1, 2}},
    {"cap4", field<&DspInfo::cap4>, {0}},
    {"cap5", field<&DspInfo::cap5>, {0}},
    {"cap6", field<&DspInfo::cap6>, {1}},
    {"cap7", field<&DspInfo::cap7>, {0, 2, 4, 8, 12, 16}},
    {"cap8", field<&DspInfo::cap8>, {0, 2, 4, 6, 8}},
    {"cap9", field<&DspInfo::cap9>, {0, 1}},
    {"cap10", field<&DspInfo::cap10>, {0, 1}},
    {"cap11", field<&DspInfo::cap11>, {0, 1}},
    {"cap12", field<&DspInfo::cap12>, {0, 1}},
    {"cap13", field<&DspInfo::cap13>, {0, 1}},
    {"cap14", field<&DspInfo::cap14>, {1, 4, 12, 32}},
    {"cap15", field<&DspInfo::cap15>, {0, 0x7FFFFFFF}},
    {"cap16", sizeOf<&DspInfo::cap16>, {0, 1, 2, 3}},
    {"cap17", field<&DspInfo::cap17>, {0}},
    {"cap18", field<&DspInfo::cap18>, {0, 1024}},
    {"cap19", field<&DspInfo::cap19>, {0, 7}},
    {"cap20", field<&DspInfo::cap20>, {0, 7}},
    {"cap21", field<&DspInfo::cap21>, {0}},
    {"cap22", field<&DspInfo::cap22>, {0, 3584}},
    {"cap23", field<&DspInfo::cap23>, {0, 4, 8}},
    {"cap24", field<&DspInfo::cap24>, {0, 1}},
    {"cap25", field<&DspInfo::cap25>, {0, 6, 12}},
    {"cap26", field<&DspInfo::cap26>, {0}},
    {"cap27", field<&DspInfo::cap27>, {0, 1}},
    {"cap28", field<&DspInfo::cap28>, {0}},
    {"cap29", field<&DspInfo::cap29>, {0, 1}},
    {"cap30", field<&DspInfo::cap30>, {0, 1}},
    {"cap31", field<&DspInfo::cap31>, {0, 1}},
    {"cap32", field<&DspInfo::cap32>, {0, 1}},
    {"cap33", field<&DspInfo::cap33>, {0, 1}},
    {"cap34", field<&DspInfo::cap34>, {0, 1}},
    {"cap36", field<&DspInfo::cap36>, {0, 1}},
    {"cap37", field<&DspInfo::cap37>, {0, 1}},
    {"cap38", field<&DspInfo::cap38>, {0, 1}},
    {"cap39", field<&DspInfo::cap39>, {0, 1}},
    {"cap40", field<&DspInfo::cap40>, {0, 1}},
    {"cap49", field<&DspInfo::cap49>, {0, 1}},
    {"cap50", field<&DspInfo::cap50>, {0, 2}},
    {"cap51", field<&DspInfo::cap51>, {1, 4, 8, 12, 32}},
    // Row 72 alone has others than 0 here.
    {"cap42", field<&DspInfo::cap42>, {0, 1}},
    {"cap43", field<&DspInfo::cap43>, {0, 1248}},
    {"cap44", field<&DspInfo::cap44>, {0, 1171}},
    {"cap45", field<&DspInfo::cap45>, {0, 1}},
    {"cap46", sizeOf<&DspInfo::cap46>, {0, 3}},
    {"domainNames", sizeOf<&DspInfo::domainNames>, {0, 3, 4}},
    {"domainMap", sizeOf<&DspInfo::domainMap>, {0, 3, 4}},
};
constexpr size_t COLUMNS_OF_ROW_72 = 7;

struct Spread {
    uint32_t arch;
    uint32_t cap1;
    Values cap2;
    Values cap7;
    Values cap8;
    size_t rows;
};

const std::vector<Spread> SPREAD = {
    {0, 0, {0}, {0}, {0}, 18},           {65, 3, {2}, {0}, {0}, 4},
    {66, 2, {2}, {0}, {0}, 1},           {66, 3, {1, 2}, {0}, {0}, 22},
    {68, 4, {2}, {2, 4, 8}, {2, 4}, 10}, {69, 4, {2}, {2, 4, 8}, {2, 4}, 5},
    {73, 4, {2}, {2, 4, 8}, {2, 4}, 26}, {75, 4, {2}, {8}, {4}, 4},
    {79, 4, {2}, {8}, {6}, 4},           {81, 4, {2}, {2, 4, 8, 16}, {2, 4, 6, 8}, 15},
    {85, 4, {2}, {8, 12}, {2, 6}, 3},
};

TEST(SocTable, TheDspColumnsHoldTheirValuesAndNoOthers) {
    for (const auto& [name, get, values] : DSP_COLUMNS) {
        EXPECT_EQ(valuesOf(countsOf(&SocFacts::dspInfos, get)), values) << name;
    }
    for (const DspColumn* column = std::end(DSP_COLUMNS) - COLUMNS_OF_ROW_72; column != std::end(DSP_COLUMNS);
         ++column) {
        for (const auto& [key, chip] : chips()) {
            if (key == 72) continue;
            EXPECT_EQ(column->get(chip.facts().dspInfos.front()), 0U) << column->name << " of " << key;
        }
    }
    EXPECT_EQ(countsOf(&SocFacts::dspInfos, field<&DspInfo::arch>),
              (Counts{{0, 18}, {65, 4}, {66, 23}, {68, 10}, {69, 5}, {73, 26}, {75, 4}, {79, 4}, {81, 16}, {85, 3}}));
    EXPECT_EQ(countsOf(&SocFacts::dspInfos, sizeOf<&DspInfo::cap16>).at(0), 106U);
    EXPECT_EQ(countsOf(&SocFacts::dspInfos, field<&DspInfo::cap38>).at(0), 1U);
    EXPECT_EQ(countsOf(&SocFacts::dspInfos, field<&DspInfo::cap49>).at(1), 1U);
    EXPECT_EQ(row(88).dspInfos[0].cap49, 1U);
    const auto figures = [](const DspInfo& d) {
        return (d.cap18 != 0) + (d.cap19 != 0) + (d.cap20 != 0) + (d.cap22 != 0) + (d.cap23 != 0) + (d.cap24 != 0) +
               (d.cap25 != 0);
    };
    EXPECT_EQ(countsOf(&SocFacts::dspInfos, figures), (Counts{{0, 108}, {7, 5}}));
    EXPECT_EQ(countsOfRows([](const SocFacts& facts) { return facts.dspInfos.size(); }), (Counts{{1, 111}, {2, 1}}));
    for (const auto& [key, chip] : chips()) {
        for (const DspInfo& dsp : chip.facts().dspInfos) EXPECT_THAT(dsp.cap41, testing::AnyOf(0U, key));
    }
}

TEST(SocTable, ChipsSpreadOverTheMainColumns) {
    std::map<std::pair<uint32_t, uint32_t>, Spread> found;
    for (const auto& [key, chip] : chips()) {
        const DspInfo& dsp = chip.facts().dspInfos.front();
        Spread& spread =
            found.try_emplace({dsp.arch, dsp.cap1}, Spread{dsp.arch, dsp.cap1, {}, {}, {}, 0}).first->second;
        spread.cap2.insert(dsp.cap2);
        spread.cap7.insert(dsp.cap7);
        spread.cap8.insert(dsp.cap8);
        ++spread.rows;
    }
    ASSERT_EQ(found.size(), SPREAD.size());
    auto expected = SPREAD.begin();
    for (const auto& [archAndCap1, spread] : found) {
        SCOPED_TRACE(spread.arch);
        EXPECT_EQ(
            std::tie(spread.arch, spread.cap1, spread.cap2, spread.cap7, spread.cap8, spread.rows),
            std::tie(expected->arch, expected->cap1, expected->cap2, expected->cap7, expected->cap8, expected->rows));
        ++expected;
    }
}

TEST(SocTable, RowSeventyTwoHasTwoDsps) {
    using DomainMap = decltype(DspInfo::domainMap);
    const std::vector<DspInfo>& dsps = row(72).dspInfos;
    ASSERT_EQ(dsps.size(), 2U);
    EXPECT_EQ(std::tie(dsps[0].arch, dsps[0].cap7, dsps[0].cap8, dsps[0].cap14), std::make_tuple(81U, 16U, 8U, 32U));
    EXPECT_EQ(dsps[0].cap16, (std::vector<uint32_t>{4}));
    EXPECT_EQ(std::tie(dsps[0].cap42, dsps[0].cap43, dsps[0].cap44), std::make_tuple(1U, 1248.0F, 1171.2F));
    EXPECT_EQ(dsps[0].domainNames, (std::vector<std::string>{"cdsp", "cdsp1", "cdsp2", "cdsp3"}));
    EXPECT_EQ(dsps[0].domainMap,
              (DomainMap{{0, {"cdsp", 3}}, {1, {"cdsp1", 4}}, {2, {"cdsp2", 7}}, {3, {"cdsp3", 8}}}));
    EXPECT_EQ(std::tie(dsps[1].arch, dsps[1].cap7, dsps[1].cap8), std::make_tuple(81U, 2U, 4U));
    EXPECT_EQ(dsps[1].cap16, (std::vector<uint32_t>{1, 1, 1}));
    EXPECT_EQ(dsps[1].cap45, 1U);
    EXPECT_EQ(dsps[1].cap46, (decltype(DspInfo::cap46){{0, 3}, {1, 3}, {2, 3}}));
    EXPECT_EQ(dsps[1].domainNames, (std::vector<std::string>{"adsp", "adsp1", "adsp2"}));
    EXPECT_EQ(dsps[1].domainMap, (DomainMap{{0, {"adsp", 0}}, {1, {"adsp1", 5}}, {2, {"adsp2", 6}}}));
    EXPECT_EQ(dsps[0].cap45 + dsps[1].cap42, 0U);
}

struct GpuColumn {
    uint64_t (*get)(const GpuInfo& gpu);
    Counts counts;
};

// A default record's 0 stands 19 times.
const GpuColumn GPU_COLUMNS[] = {
    {[](const GpuInfo& gpu) { return gpu.maxWorkGroupSize; }, {{0, 19}, {1024, 94}}},
    {[](const GpuInfo& gpu) { return gpu.image2DMaxHeight; }, {{0, 19}, {8192, 2}, {16384, 92}}},
    {[](const GpuInfo& gpu) { return gpu.image2DMaxWidth; }, {{0, 19}, {8192, 2}, {16384, 92}}},
    {[](const GpuInfo& gpu) { return gpu.image2DArrayMaxHeight; }, {{0, 19}, {8192, 2}, {16384, 92}}},
    {[](const GpuInfo& gpu) { return gpu.image2DArrayMaxWidth; }, {{0, 19}, {8192, 2}, {16384, 92}}},
    {[](const GpuInfo& gpu) { return gpu.image2DArrayMaxDepth; }, {{0, 19}, {2048, 94}}},
    {[](const GpuInfo& gpu) { return gpu.maxBufferAllocSize; },
     {{0, 19}, {0x10000000, 2}, {807052800, 2}, {0x40000000, 90}}},
    {[](const GpuInfo& gpu) { return uint64_t{gpu.baseAddrAlignment}; }, {{0, 19}, {1024, 94}}},
    {[](const GpuInfo& gpu) { return gpu.image1DMaxWidth; }, {{0x8000000, 113}}},
    {[](const GpuInfo& gpu) { return uint64_t{gpu.description == "Unknown"}; }, {{0, 94}, {1, 19}}},
};

TEST(SocTable, CpuGpuPairAndAuxiliaryRecordsHoldTheirValues) {
    for (const auto& [get, counts] : GPU_COLUMNS) EXPECT_EQ(countsOf(&SocFacts::gpuInfos, get), counts);
    Counts models = countsOf(&SocFacts::gpuInfos, [](const GpuInfo& gpu) { return gpu.type; });
    EXPECT_EQ(models.extract(0).mapped(), 19U);
    EXPECT_EQ(models.size(), 47U);
    EXPECT_TRUE(models.begin()->first >= 100 && models.rbegin()->first <= 999);
    EXPECT_EQ(row(72).gpuInfos.size(), 2U);

    EXPECT_EQ(countsOf(&SocFacts::cpuInfos, [](const CpuInfo& cpu) { return cpu.numThreads; }),
              (Counts{{0, 1}, {6, 111}}));
    EXPECT_EQ(row(0).cpuInfos[0].numThreads, 0U);
    EXPECT_EQ(countsOf(&SocFacts::socPairs, [](const SocPair& pair) { return pair.first * 1000 + pair.second; }),
              (Counts{{16, 103}, {100016, 2}, {200032, 7}}));

    const auto aux = [](auto get) { return countsOf(&SocFacts::auxInfos, get); };
    const Counts numbers = aux([](const AuxInfo& info) { return info.number; });
    EXPECT_EQ(valuesOf(numbers), (Values{0, 73, 79, 81, 83}));
    EXPECT_EQ(numbers.at(0), 94U);
    EXPECT_EQ(aux([](const AuxInfo& info) { return info.present; }), (Counts{{0, 95}, {1, 17}}));
    EXPECT_EQ(aux([](const AuxInfo& info) { return info.entries.size(); }), (Counts{{0, 94}, {1, 2}, {2, 16}}));
    EXPECT_EQ(valuesOf(aux([](const AuxInfo& info) { return info.size; })), (Values{0, 384, 768, 1024}));
    std::array<Values, 5> entries;
    for (const auto& [key, chip] : chips()) {
        for (const auto& entry : chip.facts().auxInfos.front().entries) {
            for (size_t i = 0; i < entry.size(); ++i) entries[i].insert(entry[i]);
        }
    }
    EXPECT_THAT(entries, testing::ElementsAre(Values{20480, 20481, 24576, 28672}, Values{128, 256, 512, 1024},
                                              Values{32, 48, 96, 192}, Values{48, 96}, Values{32, 48, 96, 192}));
}

TEST(SocTable, TheProviderTableRepeatsFourRows) {
    const SocTable providers = makeProviderTable();
    ASSERT_EQ(providers.size(), 4U);
    for (const auto& [key, id] : Counts{{0, 0}, {60, 538}, {88, 662}, {94, 693}}) {
        const SocFacts& facts = providers.at(static_cast<uint32_t>(key)).facts();
        EXPECT_THAT(facts.socIds, testing::Contains(id));
        EXPECT_EQ(facts.socKey, key);
        EXPECT_EQ(facts.gpuInfos[0].type, row(facts.socKey).gpuInfos[0].type);
        EXPECT_EQ(facts.cpuInfos[0].numThreads, row(facts.socKey).cpuInfos[0].numThreads);
    }
}

}  // namespace
}  // namespace soc
