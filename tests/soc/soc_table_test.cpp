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
template <auto Field>
constexpr auto dsp = of<&SocFacts::dspInfos, Field>;
template <auto Field>
constexpr auto gpu = of<&SocFacts::gpuInfos, Field>;
template <auto Field>
constexpr auto aux = of<&SocFacts::auxInfos, Field>;
template <auto List>
Numbers size(const SocFacts& facts) {
    return {(facts.*List).size()};
}

template <size_t I>
Numbers auxEntry(const SocFacts& facts) {
    Numbers numbers;
    for (const auto& entry : facts.auxInfos.at(0).entries) numbers.push_back(entry[I]);
    return numbers;
}

// A column takes all of these values and no others; ANY leaves open how often.
constexpr size_t ANY = 0;
const Counts BIT = {{0, ANY}, {1, ANY}};
const Counts SIDE = {{0, 19}, {8192, 2}, {16384, 92}};

struct Column {
    const char* name;
    Numbers (*get)(const SocFacts& facts);
    Counts counts;
};

// clang-format off
const Column COLUMNS[] = {
    {"identifiers", size<&SocFacts::socIds>,
     {{1, 47}, {2, 33}, {3, 12}, {4, 12}, {5, ANY}, {6, ANY}, {7, ANY}, {12, ANY}}},
    {"aliases", size<&SocFacts::aliases>, {{0, 110}, {3, 2}}},
    {"spellings", size<&SocFacts::nameSet>, {{1, 67}, {2, ANY}, {3, ANY}, {4, ANY}, {5, ANY}, {6, ANY}, {7, ANY}}},
    {"name is a spelling", [](const SocFacts& facts) { return Numbers{facts.nameSet.count(facts.name)}; }, {{1, 112}}},
    {"DSPs", size<&SocFacts::dspInfos>, {{1, 111}, {2, 1}}},
    {"arch", dsp<&DspInfo::arch>,
     {{0, 18}, {65, 4}, {66, 23}, {68, 10}, {69, 5}, {73, 26}, {75, 4}, {79, 4}, {81, 16}, {85, 3}}},
    {"cap1", dsp<&DspInfo::cap1>, {{0, ANY}, {2, ANY}, {3, ANY}, {4, ANY}}},
    {"cap2", dsp<&DspInfo::cap2>, {{0, ANY}, {1, ANY}, {2, ANY}}},
    {"cap4", dsp<&DspInfo::cap4>, {{0, 113}}},
    {"cap5", dsp<&DspInfo::cap5>, {{0, 113}}},
    {"cap6", dsp<&DspInfo::cap6>, {{1, 113}}},
    {"cap7", dsp<&DspInfo::cap7>, {{0, ANY}, {2, ANY}, {4, ANY}, {8, ANY}, {12, ANY}, {16, ANY}}},
    {"cap8", dsp<&DspInfo::cap8>, {{0, ANY}, {2, ANY}, {4, ANY}, {6, ANY}, {8, ANY}}},
    {"cap9", dsp<&DspInfo::cap9>, BIT},
    {"cap10", dsp<&DspInfo::cap10>, BIT},
    {"cap11", dsp<&DspInfo::cap11>, BIT},
    {"cap12", dsp<&DspInfo::cap12>, BIT},
    {"cap13", dsp<&DspInfo::cap13>, BIT},
    {"cap14", dsp<&DspInfo::cap14>, {{1, ANY}, {4, ANY}, {12, ANY}, {32, ANY}}},
    {"cap15", dsp<&DspInfo::cap15>, {{0, ANY}, {0x7FFFFFFF, ANY}}},
    {"cap16", dsp<&DspInfo::cap16>, {{0, 106}, {1, ANY}, {2, ANY}, {3, ANY}}},
    {"cap17", dsp<&DspInfo::cap17>, {{0, 113}}},
    {"cap18", dsp<&DspInfo::cap18>, {{0, 108}, {1024, 5}}},
    {"cap19", dsp<&DspInfo::cap19>, {{0, 108}, {7, 5}}},
    {"cap20", dsp<&DspInfo::cap20>, {{0, 108}, {7, 5}}},
    {"cap21", dsp<&DspInfo::cap21>, {{0, 113}}},
    {"cap22", dsp<&DspInfo::cap22>, {{0, 108}, {3584, 5}}},
    {"cap23", dsp<&DspInfo::cap23>, {{0, 108}, {4, ANY}, {8, ANY}}},
    {"cap24", dsp<&DspInfo::cap24>, {{0, 108}, {1, 5}}},
    {"cap25", dsp<&DspInfo::cap25>, {{0, 108}, {6, ANY}, {12, ANY}}},
    {"cap26", dsp<&DspInfo::cap26>, {{0, 113}}},
    {"cap27", dsp<&DspInfo::cap27>, BIT},
    {"cap28", dsp<&DspInfo::cap28>, {{0, 113}}},
    {"cap29", dsp<&DspInfo::cap29>, BIT},
    {"cap30", dsp<&DspInfo::cap30>, BIT},
    {"cap31", dsp<&DspInfo::cap31>, BIT},
    {"cap32", dsp<&DspInfo::cap32>, BIT},
    {"cap33", dsp<&DspInfo::cap33>, BIT},
    {"cap34", dsp<&DspInfo::cap34>, BIT},
    {"cap36", dsp<&DspInfo::cap36>, BIT},
    {"cap37", dsp<&DspInfo::cap37>, BIT},
    {"cap38", dsp<&DspInfo::cap38>, {{0, 1}, {1, 112}}},
    {"cap39", dsp<&DspInfo::cap39>, BIT},
    {"cap40", dsp<&DspInfo::cap40>, BIT},
    {"cap41 is the key or 0", [](const SocFacts& facts) {
         const uint32_t cap41 = facts.dspInfos.at(0).cap41;
         return Numbers{cap41 == 0 || cap41 == facts.socKey ? cap41 != 0 : 2U};
     }, BIT},
    {"cap42", dsp<&DspInfo::cap42>, {{0, 112}, {1, 1}}},
    {"cap43", dsp<&DspInfo::cap43>, {{0, 112}, {1248, 1}}},
    {"cap44", dsp<&DspInfo::cap44>, {{0, 112}, {1171, 1}}},
    {"cap45", dsp<&DspInfo::cap45>, {{0, 112}, {1, 1}}},
    {"cap46", dsp<&DspInfo::cap46>, {{0, 112}, {3, 1}}},
    {"domainNames", dsp<&DspInfo::domainNames>, {{0, 111}, {3, 1}, {4, 1}}},
    {"domainMap", dsp<&DspInfo::domainMap>, {{0, 111}, {3, 1}, {4, 1}}},
    {"cap49", dsp<&DspInfo::cap49>, {{0, 112}, {1, 1}}},
    {"cap50", dsp<&DspInfo::cap50>, {{0, ANY}, {2, ANY}}},
    {"cap51", dsp<&DspInfo::cap51>, {{1, ANY}, {4, ANY}, {8, ANY}, {12, ANY}, {32, ANY}}},
    {"tmxType", of<&SocFacts::cpuInfos, &CpuInfo::tmxType>, {{0, 112}}},
    {"numThreads", of<&SocFacts::cpuInfos, &CpuInfo::numThreads>, {{0, 1}, {6, 111}}},
    {"GPUs", size<&SocFacts::gpuInfos>, {{1, 111}, {2, 1}}},
    {"maxWorkGroupSize", gpu<&GpuInfo::maxWorkGroupSize>, {{0, 19}, {1024, 94}}},
    {"image2DMaxHeight", gpu<&GpuInfo::image2DMaxHeight>, SIDE},
    {"image2DMaxWidth", gpu<&GpuInfo::image2DMaxWidth>, SIDE},
    {"image2DArrayMaxHeight", gpu<&GpuInfo::image2DArrayMaxHeight>, SIDE},
    {"image2DArrayMaxWidth", gpu<&GpuInfo::image2DArrayMaxWidth>, SIDE},
    {"image2DArrayMaxDepth", gpu<&GpuInfo::image2DArrayMaxDepth>, {{0, 19}, {2048, 94}}},
    {"image1DMaxWidth", gpu<&GpuInfo::image1DMaxWidth>, {{0x8000000, 113}}},
    {"baseAddrAlignment", gpu<&GpuInfo::baseAddrAlignment>, {{0, 19}, {1024, 94}}},
    {"maxBufferAllocSize", gpu<&GpuInfo::maxBufferAllocSize>,
     {{0, 19}, {0x10000000, 2}, {807052800, 2}, {0x40000000, 90}}},
    {"pair's first", of<&SocFacts::socPairs, &SocPair::first>, {{0, 103}, {100, 2}, {200, 7}}},
    {"pair's second", of<&SocFacts::socPairs, &SocPair::second>, {{16, 105}, {32, 7}}},
    {"auxiliary number", aux<&AuxInfo::number>, {{0, 94}, {73, ANY}, {79, ANY}, {81, ANY}, {83, ANY}}},
    {"auxiliary present", aux<&AuxInfo::present>, {{0, 95}, {1, 17}}},
    {"auxiliary size", aux<&AuxInfo::size>, {{0, ANY}, {384, ANY}, {768, ANY}, {1024, ANY}}},
    {"auxiliary entries", aux<&AuxInfo::entries>, {{0, 94}, {1, 2}, {2, 16}}},
    {"entry's first", auxEntry<0>, {{20480, ANY}, {20481, ANY}, {24576, ANY}, {28672, ANY}}},
    {"entry's second", auxEntry<1>, {{128, ANY}, {256, ANY}, {512, ANY}, {1024, ANY}}},
    {"entry's third", auxEntry<2>, {{32, ANY}, {48, ANY}, {96, ANY}, {192, ANY}}},
    {"entry's fourth", auxEntry<3>, {{48, ANY}, {96, ANY}}},
    {"entry's fifth", auxEntry<4>, {{32, ANY}, {48, ANY}, {96, ANY}, {192, ANY}}},
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
        for (const auto& [value, count] : expected) {
            if (count == ANY && counts.contains(value)) counts[value] = ANY;
        }
        EXPECT_EQ(counts, expected) << name;
    }
    Values models;
    for (const auto& [key, chip] : chips()) models.merge(Values{static_cast<uint64_t>(chip.facts().gpuInfos[0].type)});
    EXPECT_EQ(models.size(), 1U + 47U);
    EXPECT_TRUE(*std::next(models.begin()) >= 100 && *models.rbegin() <= 999);
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
