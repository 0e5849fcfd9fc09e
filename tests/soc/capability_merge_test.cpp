// A library's answers over a chip's row.
#include "soc/capability_merge.h"

#include "platform/dynamic_loader.h"
#include "soc/capability_fixture.h"
#include "soc/hybrid_soc_info.h"

namespace soc {
namespace {

// Values of one field of each kind that is compared in its own way.
constexpr const char* AGREEING = R"("3":81,"7":16,"43":1248.0,"16":[4],"46":[[0,3]],"47":["cdsp"],"48":[[0,"cdsp",3]])";
constexpr const char* DISAGREEING =
    R"("3":85,"7":8,"43":1.5,"16":[4,4],"46":[[0,4]],"47":["Cdsp"],"48":[[0,"cdsp",4]])";

DspInfo rowRecord() {
    DspInfo row;
    row.arch = 81;
    row.cap7 = 16;
    row.cap43 = 1248.0F;
    row.cap16 = {4};
    row.cap46 = {{0, 3}};
    row.domainNames = {"cdsp"};
    row.domainMap = {{0, {"cdsp", 3}}};
    row.cap51 = 12;
    return row;
}

class CapabilityMerge : public CapabilityTest {
protected:
    // Where the seven fields come from, by their capability; "" when they do not agree.
    static std::string origin(const CapabilityLibrary& library, bool isKnown) {
        Origins origins;
        const DspInfo row = rowRecord();
        const DspInfo merged = mergeDspInfo({library, isKnown}, row, &origins);
        const bool isRow = merged.arch == 81 && merged.cap7 == 16 && merged.cap43 == 1248.0F &&
                           merged.cap16 == row.cap16 && merged.cap46 == row.cap46 &&
                           merged.domainNames == row.domainNames && merged.domainMap == row.domainMap;
        const bool isOther = merged.arch == 85 && merged.cap7 == 8 && merged.cap43 == 1.5F &&
                             merged.cap16.size() == 2 && merged.cap46.count({0, 4}) == 1 &&
                             merged.domainNames[0] == "Cdsp" && merged.domainMap.at(0).second == 4;
        const bool isStandard = merged.arch == 0 && merged.cap7 == 0 && merged.cap43 == 0 && merged.cap16.empty() &&
                                merged.cap46.empty() && merged.domainNames.empty() && merged.domainMap.empty();
        for (const uint32_t capability : {7U, 43U, 16U, 46U, 47U, 48U}) {
            if (origins.at(capability) != origins.at(3)) return "";
        }
        constexpr const char* names[] = {"row", "library", "standard"};
        return std::string(names[static_cast<size_t>(origins.at(3))]) + (isRow        ? "'s row"
                                                                         : isOther    ? "'s other"
                                                                         : isStandard ? "'s standard"
                                                                                      : "");
    }
};

TEST_F(CapabilityMerge, ZantSystemInfoFillsInAndConfirms) {
    const CapabilityLibrary library = zant();
    answer(DISAGREEING);
    EXPECT_EQ(origin(library, true), "standard's standard");
    EXPECT_EQ(origin(library, false), "library's other");
    answer(AGREEING);
    EXPECT_EQ(origin(library, true), "library's row");
    answer("");
    EXPECT_EQ(origin(library, true), "standard's standard");
    EXPECT_EQ(origin(library, false), "standard's standard");
    EXPECT_EQ(mergeDspInfo({library, true}, rowRecord()).cap51, 1U) << "its own standard value";
}

TEST_F(CapabilityMerge, ServiceUtilsReplaceWhatTheyAnswer) {
    const CapabilityLibrary library = corvane();
    answer(R"("3":85,"17":257)");
    Origins origins;
    const DspInfo known = mergeDspInfo({library, true}, rowRecord(), &origins);
    EXPECT_EQ(origins.size(), 50U);
    EXPECT_EQ(known.arch, 85U);
    EXPECT_EQ(known.cap17, 1U) << "a byte";
    EXPECT_EQ(known.cap7, 16U);
    EXPECT_EQ(known.cap51, 12U);
    EXPECT_EQ(known.domainMap, rowRecord().domainMap) << "serialized answers are not asked for";
    EXPECT_EQ(origins.at(48), Origin::row);
    const DspInfo unknown = mergeDspInfo({library, false}, rowRecord());
    EXPECT_EQ(unknown.arch, 85U);
    EXPECT_EQ(unknown.cap7, 0U);
    EXPECT_EQ(unknown.cap51, 1U);
}

// A library that is in the process already is found by its bare name.
TEST_F(CapabilityMerge, TheRunningChipAsksEachTime) {
    namespace loader = zant::loader;
    HybridSocInfo chip(0);
    SocFacts two;
    two.socIds = {799};
    two.name = "row";
    two.dspInfos = {rowRecord(), rowRecord()};
    chip.adoptRow(SocInfo(two));
    answer(R"("3":85,"7":3)");
    EXPECT_EQ(chip.getSocIdentity().name, "row");
    EXPECT_EQ(chip.getDspInfos().size(), 2U);

    const std::string path = simFolder() + CORVANE_SERVICE_UTILS;
    void* module = loader::dlOpen(path.c_str(), loader::DL_NOW);
    ASSERT_NE(module, nullptr);
    EXPECT_EQ(chip.getSocIdentity().name, "Dynamic VRD");
    EXPECT_EQ(chip.getSocIdentity().number, 0x7FFFFFFF);
    const std::vector<DspInfo> dsps = chip.getDspInfos();
    EXPECT_EQ(dsps.size(), 1U);
    EXPECT_EQ(dsps.front().arch, 85U);
    EXPECT_EQ(dsps.front().cap43, 1248.0F);
    EXPECT_EQ(HybridSocInfo(0).getDspInfos().front().cap43, 0.0F);
    answer(R"("7":3)");
    EXPECT_EQ(chip.getDspInfos().size(), 2U) << "without the architecture it does not count";
    loader::dlClose(module);
    answer(R"("3":85)");
    EXPECT_EQ(chip.getDspInfosOnce().front().arch, 81U) << "unloaded again after each question";
}

// In a process of its own: providers ask the firmware once.
[[noreturn]] void askProviders(const std::string& library) {
    zant::loader::dlOpen(library.c_str(), zant::loader::DL_NOW);
    HybridSocInfo chip(799);
    const GpuInfo gpu = chip.getGpuInfos().at(0);
    const CpuInfo cpu = chip.getCpuInfos().at(0);
    if (gpu.type != GpuType{840} || gpu.description != "GPU 840" || gpu.image2DMaxWidth != 16384) std::exit(1);
    if (gpu.image1DMaxWidth != 0x8000000 || gpu.maxWorkGroupSize != 0) std::exit(2);
    if (cpu.numThreads != 12 || cpu.tmxType != TmxType{7}) std::exit(3);
    std::exit(0);
}

TEST_F(CapabilityMerge, ProvidersAskOfAChipOutsideTheirTable) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const zant::test::ScopedVariable nowhere("ZELMAR_PLATFORM_ROOT", m_folder.path("").c_str());
    answer(R"("3":85)", R"(,"gpu":{"1":840,"4":"GPU 840","7":16384,"13":{"status":1}},"cpu":{"1":7,"2":12})");
    EXPECT_EXIT(askProviders(simFolder() + CORVANE_SERVICE_UTILS), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace soc
