// External buffers: one block with many contexts, and the pools that decide who shares which.
#include <gmock/gmock.h>

#include "buffers/shared_buffer_pool.h"
#include "support/allocation.h"
#include "support/fake_memory.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using kor::ExternalBufferManager;
using kor::SharedBufferPool;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ExternalBuffers : public testing::Test {
protected:
    bool add(const SharedBufferPool::Ids& ids, uintptr_t context, const SharedBufferPool::Sizes& sizes) {
        return pools.registerContext(ids, contextHandle(context), sizes, backend.functions());
    }
    std::vector<std::string> blocks() const {
        std::vector<std::string> texts;
        for (const auto& block : darlink.blocks) texts.push_back(std::to_string(block.size));
        return texts;
    }

    FakeDarlink& darlink = fakeDarlink();
    FakeMemoryBackend backend;
    LogCapture log{ZANT_LOG_LEVEL_WARN};
    SharedBufferPool pools;
};

// fault: a check out of its order, a second block in the place of the first, a block that outlives its manager.
TEST_F(ExternalBuffers, AManagerRefusesEachWrongStep) {
    ExternalBufferManager manager;
    EXPECT_FALSE(manager.initialize(nullptr));
    EXPECT_FALSE(manager.allocate(0));
    EXPECT_FALSE(manager.allocate(5));
    EXPECT_FALSE(manager.registerWithContext(contextHandle(1), 3));
    EXPECT_TRUE(manager.initialize(backend.functions()));
    EXPECT_FALSE(manager.allocate(uint64_t{1} << 32));
    darlink.failToFd = true;
    EXPECT_FALSE(manager.allocate(5));
    darlink.failToFd = false;
    EXPECT_THAT(blocks(), IsEmpty());
    EXPECT_TRUE(manager.allocate(5));
    EXPECT_FALSE(manager.allocate(6));
    EXPECT_TRUE(manager.registerWithContext(contextHandle(1), 3));
    EXPECT_FALSE(manager.registerWithContext(contextHandle(1), 1));
    EXPECT_FALSE(manager.registerWithContext(contextHandle(2), 1));
    backend.failing = "register";
    EXPECT_FALSE(manager.registerWithContext(contextHandle(2), 2));
    backend.failing.clear();
    EXPECT_TRUE(manager.registerWithContext(contextHandle(2), 2));
    const std::string allocate = "1 ExternalBufferManager::allocate: ";
    const std::string reg = "1 ExternalBufferManager::registerWithContext: ";
    EXPECT_THAT(log.takeTexts(), ElementsAre("1 ExternalBufferManager::initialize: zantInterface is nullptr",
                                             allocate + "sizeBytes is 0", allocate + "darmem not initialized",
                                             reg + "buffer not allocated", allocate + "darmem_alloc(4294967296) failed",
                                             testing::StartsWith(allocate + "darmem_to_fd failed for "),
                                             allocate + "already allocated", reg + "context already registered",
                                             reg + "unsupported bufferType 1", reg + "memRegister failed, err=7"));
    manager.free();
    EXPECT_THAT(blocks(), IsEmpty());
    EXPECT_FALSE(manager.registerWithContext(contextHandle(3), 3));
}

TEST_F(ExternalBuffers, PoolIdsAreANameAndACount) {
    std::string name;
    uint32_t count = 0;
    EXPECT_TRUE(SharedBufferPool::parsePoolId("a:b:003", name, count));
    EXPECT_EQ(name, "a:b");
    EXPECT_EQ(count, 3U);
    EXPECT_TRUE(SharedBufferPool::parsePoolId("p:4294967295", name, count));
    const std::pair<std::string, std::string> refused[] = {
        {":3", "invalid format \":3\", expected \"name:N\""},
        {"abc:-1", "non-numeric count in \"abc:-1\""},
        {"abc:0", "count must be > 0 in \"abc:0\""},
        {"abc:4294967296", "count out of range in \"abc:4294967296\", expected at most 4294967295"},
    };
    for (const auto& [id, text] : refused) {
        EXPECT_FALSE(SharedBufferPool::parsePoolId(id, name, count)) << id;
        EXPECT_THAT(log.takeTexts(), ElementsAre("1 SharedBufferPool::parsePoolId: " + text));
    }
}

// fault: kinds that share an id are registered twice, or a kind's size goes to another pool.
TEST_F(ExternalBuffers, APoolIsSizedForItsNeediestContextAndWeightsStayApart) {
    EXPECT_FALSE(add({"p:2", "p:2", "p:2"}, 1, {10, 7, 0}));
    EXPECT_TRUE(add({"p:2", "p:2", "p:2"}, 2, {30, 5, 4}));
    EXPECT_TRUE(pools.finalizeAllPools());
    EXPECT_THAT(blocks(), ElementsAre("30", "7", "4"));
    const std::vector<std::string> calls = backend.takeCalls();
    ASSERT_THAT(calls, SizeIs(5));
    EXPECT_EQ(calls[1], "register ctx=2 type=3 size=30 fd=100 offset=0 rank=1 dims=1 dtype=108 kind=2 n=1");
    EXPECT_EQ(calls[2], "register ctx=1 type=4 size=7 fd=101 offset=0 rank=1 dims=1 dtype=108 kind=2 n=1");
    EXPECT_EQ(calls[4], "register ctx=2 type=2 size=4 fd=102 offset=0 rank=1 dims=1 dtype=108 kind=2 n=1");
    const auto buffers = pools.buffersOfContexts();
    ASSERT_THAT(buffers, SizeIs(2));
    EXPECT_EQ(buffers[0].spillFill, buffers[1].spillFill);
    EXPECT_EQ(buffers[0].spadBackup, buffers[1].spadBackup);
    EXPECT_EQ(buffers[0].weights, nullptr);
    EXPECT_NE(buffers[1].weights, nullptr);

    // A context that joins later shares what there is.
    EXPECT_TRUE(add({"p:2", "", ""}, 3, {99, 0, 0}));
    EXPECT_TRUE(pools.finalizeAllPools());
    EXPECT_THAT(backend.takeCalls(), IsEmpty());
    EXPECT_EQ(pools.buffersOfContexts()[2].spillFill, buffers[0].spillFill);
}

// Two ids are alike or not in five ways; each kind's size goes to the pool that its id names.
TEST_F(ExternalBuffers, EachIdGetsItsOwnSizes) {
    const std::pair<SharedBufferPool::Ids, std::vector<std::string>> cases[] = {
        {{"a:1", "b:1", "c:1"}, {"1", "2", "4"}},
        {{"b:1", "b:1", "a:1"}, {"4", "1", "2"}},
        {{"b:1", "a:1", "b:1"}, {"2", "1", "4"}},
        {{"b:1", "a:1", "a:1"}, {"2", "4", "1"}},
        {{"", "a:1", ""}, {"2"}},
    };
    for (const auto& [ids, expected] : cases) {
        SharedBufferPool fresh;
        EXPECT_TRUE(fresh.registerContext(ids, contextHandle(1), {1, 2, 4}, backend.functions()));
        EXPECT_TRUE(fresh.finalizeAllPools());
        EXPECT_EQ(blocks(), expected);
    }
    EXPECT_THAT(blocks(), IsEmpty());
}

TEST_F(ExternalBuffers, PoolsWaitForEachOtherAndRefuseAnotherCount) {
    EXPECT_FALSE(add({"p:2", "q:1", ""}, 1, {1, 1, 0}));
    EXPECT_FALSE(add({"q:1", "", ""}, 2, {}));  // p waits
    EXPECT_THAT(log.takeTexts(), IsEmpty());
    EXPECT_FALSE(add({"r:1", "p:3", ""}, 2, {}));
    EXPECT_FALSE(add({"", "", ""}, 2, {}));
    SharedBufferPool whole;
    EXPECT_TRUE(whole.registerContext({"p:1", "", ""}, contextHandle(1), {}, backend.functions()));
    EXPECT_FALSE(whole.registerContext({"p:2", "", ""}, contextHandle(2), {}, backend.functions()));
    EXPECT_THAT(log.takeTexts(),
                ElementsAre("1 SharedBufferPool::registerContext: pool \"p\" expected count mismatch (2 vs 3)",
                            "1 SharedBufferPool::registerContext: all pool IDs are empty",
                            "1 SharedBufferPool::registerContext: pool \"p\" expected count mismatch (1 vs 2)"));
    EXPECT_THAT(pools.buffersOfContexts(), SizeIs(4));  // in p, in q twice, and in r before the failure
}

// fault: a failed pool is taken for done, or a second try doubles what an earlier pool has.
TEST_F(ExternalBuffers, AFailedPoolBeginsAnewAndOthersStayDone) {
    EXPECT_TRUE(add({"a:1", "", ""}, 1, {8, 0, 0}));
    EXPECT_FALSE(add({"b:2", "b:2", "b:2"}, 1, {16, 4, 2}));
    EXPECT_TRUE(add({"b:2", "b:2", "b:2"}, 2, {16, 4, 2}));
    const char* const kinds[] = {"spillFill", "spillFill", "spadBackup", "spadBackup", "weights", "weights"};
    backend.failing = "register";
    int first = 1;  // pool a's registration comes before the first failure only
    for (int position = 0; position < 6; ++position) {
        backend.failingAfter = position + std::exchange(first, 0);
        EXPECT_FALSE(pools.finalizeAllPools());
        EXPECT_THAT(log.takeTexts().back(),
                    testing::HasSubstr(kinds[position] + std::string(" registerWithContext failed for pool \"b\"")));
    }
    backend.failing.clear();
    darlink.failAlloc = true;
    EXPECT_FALSE(pools.finalizeAllPools());
    EXPECT_EQ(log.takeTexts().back(), "1 SharedBufferPool::finalizePool: spillFill allocate(16) failed for pool \"b\"");
    darlink.failAlloc = false;
    EXPECT_TRUE(pools.finalizeAllPools());
    EXPECT_THAT(blocks(), testing::UnorderedElementsAre("8", "16", "4", "2", "2"));
}

// fault: a pool that was left without a context counts as done for the one that comes again.
TEST_F(ExternalBuffers, AContextThatFoundNoMemoryMayComeAgain) {
    const SharedBufferPool::Ids ids{"p:1", "", ""};
    int failures = 0;
    for (bool failed = true; failed; failures += failed ? 1 : 0) {
        SharedBufferPool pool;
        const auto enter = [&] { return pool.registerContext(ids, contextHandle(1), {8, 0, 0}, backend.functions()); };
        failAllocation(failures);
        try {
            enter();
            failed = false;
        } catch (const std::bad_alloc&) {
        }
        failAllocation(-1);
        EXPECT_TRUE(pool.finalizeAllPools());
        EXPECT_TRUE(!failed || (enter() && pool.finalizeAllPools())) << failures;
        EXPECT_THAT(blocks(), ElementsAre("8"));
    }
    EXPECT_GT(failures, 1);
}

}  // namespace
}  // namespace zant::test
