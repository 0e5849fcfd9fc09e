#include "soc/soc_table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

namespace soc {
namespace {

using Numbers = std::vector<uint64_t>;
using Values = std::set<uint64_t>;
using Counts = std::map<uint64_t, size_t>;

const SocTable& chips() {
    static const SocTable table = makeSocTable();
    return table;
}

const SocFacts& row(uint32_t key) {
    return chips().at(key).facts();
}

// A field of each record of a list, its size for a container.
template <auto List, auto Field>
Numbers of(const SocFacts& facts) {
    Numbers numbers;
    for (const auto& record : facts.*List) {
        if constexpr (requires { (record.*Field).size(); }) {
            numbers.push_back((record.*Field).size());
        } else {
            numbers.push_back(static_cast<uint64_t>(record.*Field));
        }
    }
    return numbers;
}

struct Column {
    const char* name;
    Numbers (*get)(const SocFacts& facts);
    Counts counts;  // how often each value stands in the column
};

// clang-format off
const Column COLUMNS[] = {
    {"aliases", [](const SocFacts& facts) { return Numbers{facts.aliases.size()}; }, {{0, 110}, {3, 2}}},
    {"name is a spelling", [](const SocFacts& facts) { return Numbers{facts.nameSet.count(facts.name)}; }, {{1, 112}}},
    {"cap22", of<&SocFacts::dspInfos, &DspInfo::cap22>, {{0, 108}, {3584, 5}}},
    {"cap38", of<&SocFacts::dspInfos, &DspInfo::cap38>, {{0, 1}, {1, 112}}},
    {"numThreads", of<&SocFacts::cpuInfos, &CpuInfo::numThreads>, {{0, 1}, {6, 111}}},
    {"image2DMaxHeight", of<&SocFacts::gpuInfos, &GpuInfo::image2DMaxHeight>, {{0, 19}, {8192, 2}, {16384, 92}}},
    {"maxBufferAllocSize", of<&SocFacts::gpuInfos, &GpuInfo::maxBufferAllocSize>,
     {{0, 19}, {0x10000000, 2}, {807052800, 2}, {0x40000000, 90}}},
    {"pair's first", of<&SocFacts::socPairs, &SocPair::first>, {{0, 103}, {100, 2}, {200, 7}}},
    {"auxiliary entries", of<&SocFacts::auxInfos, &AuxInfo::entries>, {{0, 94}, {1, 2}, {2, 16}}},
};

struct Spread {
    uint32_t arch;
    uint32_t cap1;
    Values cap2;
    Values cap7;
    Values cap8;
    size_t rows;
};

const Spread SPREADS[] = {
    {0, 0, {0}, {0}, {0}, 18},
    {65, 3, {2}, {0}, {0}, 4},
    {66, 3, {1, 2}, {0}, {0}, 22},
    {66, 2, {2}, {0}, {0}, 1},
    {68, 4, {2}, {2, 4, 8}, {2, 4}, 10},
    {69, 4, {2}, {2, 4, 8}, {2, 4}, 5},
    {73, 4, {2}, {2, 4, 8}, {2, 4}, 26},
    {75, 4, {2}, {8}, {4}, 4},
    {79, 4, {2}, {8}, {6}, 4},
    {81, 4, {2}, {2, 4, 8, 16}, {2, 4, 6, 8}, 15},
    {85, 4, {2}, {8, 12}, {2, 6}, 3},
};
// clang-format on

TEST(SocTable, ColumnsHoldTheirValuesAsOftenAsTheyShould) {
    for (const auto& [name, get, expected] : COLUMNS) {
        Counts counts;
        for (const auto& [key, chip] : chips()) {
            for (const uint64_t value : get(chip.facts())) ++counts[value];
        }
        EXPECT_EQ(counts, expected) << name;
    }
}

TEST(SocTable, ChipsSpreadOverTheMainColumns) {
    for (const Spread& expected : SPREADS) {
        Spread found{expected.arch, expected.cap1, {}, {}, {}, 0};
        for (const auto& [key, chip] : chips()) {
            const DspInfo& info = chip.facts().dspInfos.at(0);
            if (info.arch != expected.arch || info.cap1 != expected.cap1) continue;
            found.cap2.insert(info.cap2);
            found.cap7.insert(info.cap7);
            found.cap8.insert(info.cap8);
            ++found.rows;
        }
        EXPECT_EQ(std::tie(found.cap2, found.cap7, found.cap8, found.rows),
                  std::tie(expected.cap2, expected.cap7, expected.cap8, expected.rows))
            << expected.arch;
    }
}

TEST(SocTable, KeysAndIdentifiersStandOnceButForOne) {
    Values unused;
    std::map<uint32_t, std::vector<uint32_t>> rowsOfId;
    for (uint32_t key = 0; key <= 123; ++key) {
        if (!chips().contains(key)) unused.insert(key);
    }
    for (const auto& [key, chip] : chips()) {
        EXPECT_EQ(chip.facts().socKey, key);
        for (const uint32_t id : chip.facts().socIds) rowsOfId[id].push_back(key);
    }
    EXPECT_EQ(unused, (Values{2, 3, 4, 7, 8, 9, 14, 22, 44, 108, 114, 122}));
    EXPECT_EQ(rowsOfId.at(688), (std::vector<uint32_t>{66, 89}));
    EXPECT_EQ(rowsOfId.size(), 247U) << "of 248";
    EXPECT_EQ(rowsOfId.rbegin()->first, 798U);
    EXPECT_EQ(row(0).socIds, std::vector<uint32_t>{0});
    EXPECT_EQ(row(0).name, "UNKNOWN_VRD");
    EXPECT_EQ(row(88).dspInfos[0].cap49, 1U);
}

TEST(SocTable, FiguresOfAChipGoTogether) {
    for (const auto& [key, chip] : chips()) {
        const GpuInfo& gpu = chip.facts().gpuInfos.at(0);
        const Values sides = {gpu.image2DMaxWidth, gpu.image2DMaxHeight, gpu.image2DArrayMaxWidth,
                              gpu.image2DArrayMaxHeight};
        EXPECT_EQ(sides.size(), 1U) << key;
        const uint32_t unit = *sides.begin() == 0 ? 0 : 1024;
        EXPECT_EQ(std::tie(gpu.maxWorkGroupSize, gpu.baseAddrAlignment), std::tie(unit, unit));
        EXPECT_EQ(gpu.image2DArrayMaxDepth, 2 * unit);
        const DspInfo& dsp = chip.facts().dspInfos.at(0);
        EXPECT_EQ(dsp.cap41, dsp.arch == 0 ? 0 : key);
        if (dsp.cap22 == 0) continue;
        EXPECT_EQ(std::tie(dsp.cap18, dsp.cap19, dsp.cap20, dsp.cap24), std::make_tuple(1024U, 7U, 7U, 1U));
        EXPECT_TRUE(dsp.cap23 == 4 || dsp.cap23 == 8);
        EXPECT_TRUE(dsp.cap25 == 6 || dsp.cap25 == 12);
    }
}

TEST(SocTable, RowSeventyTwoHasTwoDsps) {
    using DomainMap = decltype(DspInfo::domainMap);
    const DspInfo& first = row(72).dspInfos.at(0);
    const DspInfo& second = row(72).dspInfos.at(1);
    EXPECT_EQ(std::tie(first.arch, first.cap7, first.cap8, first.cap14), std::make_tuple(81U, 16U, 8U, 32U));
    EXPECT_EQ(std::tie(first.cap42, first.cap43, first.cap44), std::make_tuple(1U, 1248.0F, 1171.2F));
    EXPECT_THAT(first.cap16, testing::ElementsAre(4));
    EXPECT_THAT(first.domainNames, testing::ElementsAre("cdsp", "cdsp1", "cdsp2", "cdsp3"));
    EXPECT_EQ(first.domainMap, (DomainMap{{0, {"cdsp", 3}}, {1, {"cdsp1", 4}}, {2, {"cdsp2", 7}}, {3, {"cdsp3", 8}}}));
    EXPECT_EQ(std::tie(second.arch, second.cap7, second.cap8, second.cap45), std::make_tuple(81U, 2U, 4U, 1U));
    EXPECT_THAT(second.cap16, testing::ElementsAre(1, 1, 1));
    EXPECT_EQ(second.cap46, (decltype(DspInfo::cap46){{0, 3}, {1, 3}, {2, 3}}));
    EXPECT_THAT(second.domainNames, testing::ElementsAre("adsp", "adsp1", "adsp2"));
    EXPECT_EQ(second.domainMap, (DomainMap{{0, {"adsp", 0}}, {1, {"adsp1", 5}}, {2, {"adsp2", 6}}}));
    EXPECT_EQ(row(72).gpuInfos.size(), 2U);
    EXPECT_EQ(first.cap45 + second.cap42, 0U);
}

}  // namespace
}  // namespace soc
