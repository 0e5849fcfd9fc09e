// Memory of the simulated machine: what the RPC client library gives is what the backend reaches by descriptor.
#include <gmock/gmock.h>

#include <cstring>

#include "support/darlink.h"
#include "support/system.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

TEST(SimDarlink, TellsItsBlocksUntilTheyAreFreed) {
    const Darlink darlink;
    void* first = darlink.make(100);
    void* second = darlink.make(8192);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    static_cast<char*>(first)[4095] = 1;  // to the end of its page
    const std::vector<ZantSimBlock> blocks = darlink.blocks();
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].address, first);
    EXPECT_EQ(blocks[0].size, 100U);
    EXPECT_EQ(blocks[0].fileDescriptor, darlink.toFd(first));
    EXPECT_NE(blocks[0].fileDescriptor, blocks[1].fileDescriptor);
    darlink.free(first);
    ASSERT_EQ(darlink.blocks().size(), 1U);
    EXPECT_EQ(darlink.blocks()[0].address, second);
    darlink.free(second);
    EXPECT_THAT(darlink.blocks(), IsEmpty());
}

TEST(SimDarlink, FailsTheNthCallAndWritesMisuseDown) {
    const Darlink darlink;
    darlink.failNthCall("darmem_alloc", 1, 1);
    EXPECT_EQ(darlink.make(16), nullptr);
    void* block = darlink.make(16);
    darlink.failNthCall("darmem_to_fd", 1, 1);
    EXPECT_EQ(darlink.toFd(block), -1);
    EXPECT_NE(darlink.toFd(block), -1);
    EXPECT_EQ(darlink.toFd(static_cast<char*>(block) + 1), -1);
    EXPECT_THAT(darlink.ledger().back(), StartsWith("misuse: darmem_to_fd"));
    darlink.free(block);
    darlink.free(block);
    EXPECT_THAT(darlink.ledger().back(), StartsWith("misuse: darmem_free"));
    EXPECT_EQ(darlink.alloc(24, DARMEM_FLAG_DEFAULT, 16), nullptr);
    EXPECT_THAT(darlink.ledger().back(), StartsWith("misuse: darmem_alloc"));
}

// A context without a binary, one block of 4096 bytes, and a graph.
class SimMemory : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(m_block, nullptr);
        ASSERT_EQ(m_sim.find<ZantSimCreateContextFn>("ZantSim_createContext")(nullptr, nullptr, 0, &m_context), 0U);
        ASSERT_EQ(m_sim.find<ZantSimCreateGraphFn>("ZantSim_createGraph")(m_context, "g", nullptr, &m_graph), 0U);
    }
    void TearDown() override {
        if (m_block != nullptr) m_darlink.free(m_block);
    }

    uint64_t reg(const SharedBufferInfo& info, void*& handle) {
        const uint32_t dimensions[] = {4, 8};
        const MemRegisterDescriptor descriptor{2,    0, dimensions, nullptr, 0x0232, ZANT_MEMORY_KIND_SHARED_BUFFER,
                                               &info};
        return ourProvider(m_sim).memoryRegister(m_context, &descriptor, 1, &handle);
    }
    SharedBufferInfo tensorAt(uint64_t offset) const {
        return {ZANT_SHARED_BUFFER_TENSOR, 0, 4096, m_darlink.toFd(m_block), 0, offset};
    }
    uint64_t execute() { return m_sim.find<ZantSimExecuteGraphFn>("ZantSim_executeGraph")(m_graph, nullptr, 0); }
    uint64_t freeContext() { return m_sim.find<ZantSimFreeContextFn>("ZantSim_freeContext")(m_context); }
    void expectMisuse(const char* reason) {
        EXPECT_THAT(m_sim.ledger().back(), testing::AllOf(StartsWith("misuse: "), HasSubstr(reason)));
    }

    const Sim m_sim;
    const Darlink m_darlink;
    void* m_block = m_darlink.make(4096);
    void* m_context = nullptr;
    void* m_graph = nullptr;
};

TEST_F(SimMemory, TheDeviceSeesWhatTheHostWritesAndBack) {
    void* handle = nullptr;
    ASSERT_EQ(reg(tensorAt(256), handle), 0U);
    char* data = static_cast<char*>(m_block) + 256;
    std::memcpy(data, "from the host", 14);
    char seen[14] = {};
    EXPECT_EQ(m_sim.find<ZantSimReadRegionFn>("ZantSim_readRegion")(handle, seen, sizeof(seen)), 0U);
    EXPECT_STREQ(seen, "from the host");
    EXPECT_EQ(m_sim.find<ZantSimWriteRegionFn>("ZantSim_writeRegion")(handle, "from the device", 16), 0U);
    EXPECT_STREQ(data, "from the device");
    EXPECT_NE(m_sim.find<ZantSimReadRegionFn>("ZantSim_readRegion")(handle, data, 129), 0U) << "4 times 8 of 4 bytes";
}

TEST_F(SimMemory, RefusesARegionThatDoesNotFit) {
    void* handle = nullptr;
    SharedBufferInfo wrong = tensorAt(4096 - 127);
    EXPECT_NE(reg(wrong, handle), 0U);
    expectMisuse("128 bytes at 3969 lie not within 4096");
    wrong = tensorAt(0);
    wrong.size = 4097;
    EXPECT_NE(reg(wrong, handle), 0U);
    expectMisuse("names 4096 bytes, not 4097");
    wrong = tensorAt(0);
    wrong.fileDescriptor = -1;
    EXPECT_NE(reg(wrong, handle), 0U);
    expectMisuse("descriptor -1 names no memory");
    wrong = tensorAt(0);
    wrong.bufferType = 5;
    EXPECT_NE(reg(wrong, handle), 0U);
    expectMisuse("unknown buffer type 5");
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(freeContext(), 0U);
    EXPECT_NE(reg(tensorAt(0), handle), 0U);
    expectMisuse("was never made or is freed");
}

TEST_F(SimMemory, KnowsHandlesOnceAndMissesMemoryThatIsGone) {
    const ZantProviderRecord& provider = ourProvider(m_sim);
    void* first = nullptr;
    void* second = nullptr;
    ASSERT_EQ(reg(tensorAt(0), first), 0U);
    ASSERT_EQ(reg(tensorAt(128), second), 0U);
    EXPECT_EQ(execute(), 0U);
    EXPECT_EQ(provider.memoryDeregister(&first, 1), 0U);
    EXPECT_NE(provider.memoryDeregister(&first, 1), 0U);
    expectMisuse("is deregistered");
    m_darlink.free(m_block);
    EXPECT_NE(execute(), 0U);
    expectMisuse("(tensor) is gone");
    m_block = m_darlink.make(4096);
    EXPECT_EQ(execute() != 0, seesMemoryReplaced());
    EXPECT_EQ(freeContext(), 0U);
    EXPECT_THAT(m_sim.ledger().back(), EndsWith("was freed with 1 registered tensors"));
    EXPECT_NE(provider.memoryDeregister(&second, 1), 0U);
}

}  // namespace
