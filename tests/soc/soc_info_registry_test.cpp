#include "soc/soc_info_registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>
#include <utility>

#include "support/twice.h"

namespace soc {
namespace {

using zant::test::twice;

TEST(SocInfoRegistry, IdentifiersLeadToTheirRows) {
    const auto keyOf = [](uint32_t id) { return SocInfoRegistry().buildCurrent(id)->getSocIdentity().number; };
    EXPECT_EQ(std::vector({keyOf(688), keyOf(538), keyOf(662), keyOf(693)}), (std::vector{66, 60, 88, 94}));
    EXPECT_EQ(keyOf(497), keyOf(498));
}

TEST(SocInfoRegistry, AChipWithoutARowKeepsItsIdentifierAndDefaults) {
    for (const uint32_t id : {0U, 799U, 0xFFFFFFFFU}) {
        SocInfoRegistry registry;
        SocInfo* chip = registry.buildCurrent(id);
        EXPECT_EQ(chip->getSocIdentity().name, "UNKNOWN_VRD");
        EXPECT_EQ(chip->getSocIdentity().number, 0);
        EXPECT_EQ(chip->facts().socIds, std::vector<uint32_t>{id});
        EXPECT_EQ(chip->getDspInfosOnce().at(0).arch, 0U);
        EXPECT_EQ(chip->getSocPairs().at(0).second, 16U);
        EXPECT_EQ(chip->getCpuInfos().size() + chip->getGpuInfos().size() + chip->getAuxInfos().size(), 3U);
    }
}

class CountingSocInfo : public HybridSocInfo {
public:
    CountingSocInfo() : HybridSocInfo(0) {}
    std::vector<DspInfo> getDspInfos() override { return std::vector<DspInfo>(2 + calls++); }
    std::atomic<size_t> calls = 0;
};

class ThrowingOnce : public HybridSocInfo {
public:
    ThrowingOnce() : HybridSocInfo(0) {}
    std::vector<DspInfo> getDspInfos() override {
        if (!std::exchange(hasThrown, true)) throw std::bad_alloc();
        return std::vector<DspInfo>(3);
    }
    bool hasThrown = false;
};

// fault: a first call that fails hangs the second, or leaves it the failure's list.
TEST(SocInfoRegistry, AFailedFirstCallIsMadeAgain) {
    ThrowingOnce chip;
    EXPECT_THROW(chip.getDspInfosOnce(), std::bad_alloc);
    EXPECT_EQ(chip.getDspInfosOnce().size(), 3U);
}

TEST(SocInfoRegistry, TwoThreadsShareOneChipAndOneDspList) {
    for (int i = 0; i < 100; ++i) {
        SocInfoRegistry registry;
        SocInfo* chips[2] = {};
        CountingSocInfo counting;
        size_t sizes[2] = {};
        twice([&](uint32_t which) {
            chips[which] = registry.buildCurrent(which == 0 ? 538 : 662);
            sizes[which] = counting.getDspInfosOnce().size();
        });
        ASSERT_EQ(chips[0], chips[1]);
        ASSERT_EQ(registry.buildCurrent(0), chips[0]);
        ASSERT_NE(chips[0]->facts().socKey, 0U);
        ASSERT_EQ(counting.calls, 1U);
        ASSERT_EQ(sizes[0] + sizes[1], 4U);
    }
}

}  // namespace
}  // namespace soc
