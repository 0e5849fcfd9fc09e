// The allocator of tensors: sizes, one block for a list, every failure, and when the block goes.
#include <gmock/gmock.h>

#include "buffers/multi_tensor_shared_buffer.h"
#include "support/fake_memory.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr uint32_t HUGE_SHAPE[] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
constexpr uint32_t EMPTY_SHAPE[] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0};
constexpr uint32_t FOUR_GIB[] = {1U << 31};

ZantTensor tensor(const uint32_t* dimensions, uint32_t rank, uint32_t dataType = 0x0108) {
    ZantTensor result{};
    result.dataType = dataType;
    result.rank = rank;
    result.dimensions = dimensions;
    return result;
}

class TensorBuffer : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(buffer.initialize(contextHandle(9), backend.functions()), 0U); }

    FakeDarlink& darlink = fakeDarlink();
    FakeMemoryBackend backend;
    LogCapture log{ZANT_LOG_LEVEL_WARN};
    kor::MultiTensorSharedBuffer buffer;
    const uint32_t hundred[2] = {4, 25};
    const uint32_t seven[1] = {7};
};

// fault: offsets or sizes that do not follow the array, a descriptor of the tensor instead of the block.
TEST_F(TensorBuffer, OneBlockHoldsAListBackToBackAndGoesWithItsLastTensor) {
    ZantTensor tensors[] = {tensor(hundred, 2), tensor(seven, 1, 0x0232), tensor(nullptr, 0, 0x0226)};
    ASSERT_EQ(buffer.allocate(tensors, 3), 0U);
    EXPECT_THAT(backend.takeCalls(),
                ElementsAre("register ctx=9 type=1 size=130 fd=100 offset=0 rank=2 dims=4x25 dtype=108 kind=2 n=1",
                            "register ctx=9 type=1 size=130 fd=100 offset=100 rank=1 dims=7 dtype=232 kind=2 n=1",
                            "register ctx=9 type=1 size=130 fd=100 offset=128 rank=0 dims=null dtype=226 kind=2 n=1"));
    ASSERT_EQ(darlink.blocks.size(), 1U);
    EXPECT_EQ(darlink.blocks[0].size, 130U);
    auto* start = static_cast<char*>(darlink.blocks[0].address);
    EXPECT_EQ(buffer.getBuffer(&tensors[0]), start);
    EXPECT_EQ(buffer.getBuffer(&tensors[2]), start + 128);
    EXPECT_EQ(tensors[1].memoryType, 1U);
    EXPECT_EQ(tensors[1].memoryHandle, contextHandle(0x1002));

    EXPECT_EQ(buffer.release(&tensors[0]), 0U);
    EXPECT_EQ(buffer.release(&tensors[2]), 0U);
    EXPECT_EQ(darlink.blocks.size(), 1U);
    EXPECT_EQ(buffer.release(&tensors[1]), 0U);
    EXPECT_THAT(darlink.blocks, IsEmpty());
    EXPECT_EQ(backend.takeCalls().back(), "deregister 1002 n=1");
    EXPECT_EQ(buffer.getBuffer(&tensors[1]), nullptr);
    EXPECT_THAT(log.takeTexts(), ElementsAre("2 getBuffer: tensor not found"));
}

// fault: a block smaller than its tensors, because 32 or 64 bits did not hold their sizes.
TEST_F(TensorBuffer, TensorsThatNoBlockHoldsFailWithoutOne) {
    const std::string noSize = "1 Error in getting the data size for tensor with index = 1";
    const std::pair<ZantTensor, std::vector<std::string>> cases[] = {
        {tensor(FOUR_GIB, 1, 0x0016), {"1 darmem_alloc failure for size: 4294967295 bytes"}},
        {tensor(HUGE_SHAPE, 3), {"1 darmem_alloc failure for size: 4294967295 bytes"}},
        {tensor(nullptr, 2), {"1 MultiTensorSharedBuffer:Input dimensions is nullptr", noSize}},
        {tensor(hundred, 0), {"1 dims.size() is zero", noSize}},
        {tensor(hundred, 2, 0x0109), {"1 Invalid zant data type 265 provided", noSize}},
    };
    for (const auto& [wrong, texts] : cases) {
        ZantTensor tensors[] = {tensor(hundred, 2), wrong};
        EXPECT_EQ(buffer.allocate(tensors, 2), 1U);
        EXPECT_EQ(log.takeTexts(), texts);
    }
    kor::MultiTensorSharedBuffer fresh;
    ZantTensor good = tensor(hundred, 2);
    EXPECT_EQ(fresh.allocate(&good, 1), 1U);
    EXPECT_EQ(buffer.allocate(nullptr, 1), 1U);
    EXPECT_EQ(buffer.allocate(nullptr, 0), 0U);
    EXPECT_EQ(darlink.blocksMade, 0);
    ZantTensor tensors[] = {tensor(EMPTY_SHAPE, 4), tensor(seven, 1)};
    EXPECT_EQ(buffer.allocate(tensors, 2), 0U);
    EXPECT_EQ(darlink.blocks.back().size, 7U);
    for (ZantTensor& each : tensors) EXPECT_EQ(buffer.release(&each), 0U);
}

// fault: a block lost when its descriptor or a registration fails.
TEST_F(TensorBuffer, FailuresOnTheWayLeaveWhatCanBeReleased) {
    ZantTensor tensors[] = {tensor(hundred, 2), tensor(seven, 1)};
    darlink.failToFd = true;
    EXPECT_EQ(buffer.allocate(tensors, 2), 1U);
    EXPECT_THAT(log.takeTexts(),
                ElementsAre(HasSubstr("darmem_to_fd failure for size: 107 bytes and for rpc mem pointer ")));
    EXPECT_THAT(darlink.blocks, IsEmpty());
    darlink.failToFd = false;

    backend.failing = "register";
    backend.failingAfter = 1;
    EXPECT_EQ(buffer.allocate(tensors, 2), 1U);
    EXPECT_THAT(log.takeTexts(), ElementsAre("1 Failure to register ion memory with the backend"));
    EXPECT_EQ(tensors[1].memoryType, 1U);
    EXPECT_EQ(tensors[1].memoryHandle, nullptr);
    EXPECT_EQ(buffer.getBuffer(&tensors[1]), nullptr);
    EXPECT_EQ(darlink.blocks.size(), 1U);
    EXPECT_EQ(buffer.release(&tensors[0]), 0U);
    EXPECT_THAT(darlink.blocks, IsEmpty());
}

TEST_F(TensorBuffer, WrongReleasesAndLookUpsAreTold) {
    ZantTensor stranger = tensor(seven, 1);
    EXPECT_EQ(buffer.getBuffer(nullptr), nullptr);
    EXPECT_EQ(buffer.release(nullptr), 1U);
    EXPECT_EQ(buffer.release(&stranger), 1U);
    EXPECT_THAT(log.takeTexts(), ElementsAre("2 getBuffer: received a null pointer to a tensor",
                                             "1 Received nullptr for tensor", "1 Tensor not found"));
    ASSERT_EQ(buffer.allocate(&stranger, 1), 0U);
    backend.failing = "deregister";
    EXPECT_EQ(buffer.release(&stranger), 1U);
    EXPECT_EQ(darlink.blocks.size(), 1U);
    backend.failing.clear();
    EXPECT_EQ(buffer.release(&stranger), 0U);
}

// fault: a file that is no library, or lacks a function, keeps a reference or is called all the same.
TEST(Darlink, OnlyAWholeLibraryOpens) {
    LogCapture log(ZANT_LOG_LEVEL_WARN);
    kor::DarlinkLibrary library;
    EXPECT_FALSE(library.open("no such library.dll", {"load %s", "symbol %s"}));
    EXPECT_FALSE(library.open(TEST_MODULE_PATH, {"load %s", "symbol %s"}));
    EXPECT_FALSE(library.isOpen());
    EXPECT_THAT(log.takeTexts(), ElementsAre("1 load load library failed", "1 symbol can't resolve symbol"));
}

}  // namespace
}  // namespace zant::test
