// External buffers and detaching through the hooks, with a backend that answers and fails as it likes.
#include <gmock/gmock.h>

#include <thread>

#include "extension/context_properties.h"
#include "extension/kor_backend.h"
#include "support/fake_memory.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint32_t SPILL_FILL = ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE;
constexpr uint32_t WEIGHTS = ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE;
constexpr uint32_t BACKUP = ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE;

class BufferHooks : public testing::Test {
protected:
    void SetUp() override {
        static const ZantProviderRecord* list[1];
        list[0] = &memory.provider();
        ASSERT_TRUE(backend.bindInterfaceProviders([](const ZantProviderRecord*** providers, uint32_t* count) {
            *providers = list;
            return *count = 1, uint32_t{0};
        }));
        log.take();
    }

    FakeDarlink& darlink = fakeDarlink();
    FakeMemoryBackend memory;
    LogCapture log{ZANT_LOG_LEVEL_WARN};
    kor::KORBackend backend;
    void* const context = contextHandle(1);
};

// fault: a kind asked for with another's option, a block that goes with its context instead of with the pools.
TEST_F(BufferHooks, PoolsLiveFromTheFirstContextToTheEndOfTheObject) {
    memory.sizes = {{{context, SPILL_FILL}, 10}, {{context, BACKUP}, 7}, {{context, WEIGHTS}, 4}};
    EXPECT_FALSE(backend.allocateExternalBuffers(context, "", "", ""));
    EXPECT_FALSE(backend.allocateExternalBuffers(context, "p:2", "q:1", "p:2"));
    EXPECT_TRUE(backend.allocateExternalBuffers(contextHandle(2), "p:2", "", ""));
    EXPECT_THAT(memory.takeCalls(), ElementsAre("getProperty ctx=1 option=2", "getProperty ctx=1 option=6",
                                                "getProperty ctx=1 option=3", "getProperty ctx=2 option=2"));
    EXPECT_TRUE(backend.finalizeExternalBufferPools());
    EXPECT_TRUE(backend.beforeContextFree({context, contextHandle(2), contextHandle(3)}));
    EXPECT_EQ(darlink.blocks.size(), 3U);
    EXPECT_THAT(log.takeTexts(), IsEmpty());
    backend.~KORBackend();
    EXPECT_THAT(darlink.blocks, IsEmpty());
    new (&backend) kor::KORBackend;
}

TEST_F(BufferHooks, QueriesThatFailCountAsNoNeed) {
    memory.failing = "getProperty";
    EXPECT_TRUE(backend.allocateExternalBuffers(context, "p:1", "", ""));
    EXPECT_EQ(kor::queryBufferSize({}, context, SPILL_FILL), 0U);
    EXPECT_THAT(log.takeTexts(), ElementsAre("1 queryBufferSize: contextGetProperty failed for option 2",
                                             "1 queryBufferSize: contextGetProperty is nullptr"));
    memory.failing.clear();
    EXPECT_FALSE(backend.allocateExternalBuffers(context, "p:99999999999999999999", "", ""));
    memory.sizes[{context, SPILL_FILL}] = uint64_t{1} << 32;
    EXPECT_TRUE(backend.allocateExternalBuffers(context, "big:1", "", ""));
    EXPECT_FALSE(backend.finalizeExternalBufferPools());
}

// fault: the state follows the wish instead of the backend.
TEST_F(BufferHooks, AContextIsDetachedOnceTheBackendTookBothCalls) {
    memory.detachableFds = {5, 6};
    EXPECT_TRUE(backend.attachBuffers(context));
    EXPECT_THAT(log.takeTexts(), ElementsAre("2 Buffers already in the desired state attached."));
    EXPECT_THAT(memory.takeCalls(), IsEmpty());

    const std::pair<const char*, const char*> cases[] = {
        {"getProperty", "1 Unable to get the property of number of detachable buffers count from backend"},
        {"getFds", "1 Unable to get the property of detachable buffers fds from backend"},
        {"setConfig", "1 Unable to set context config to detach the buffers"},
        {"finalize",
         "1 Error in Finalizing the KOR backend context after modifying the detaching/attaching the buffers"},
    };
    for (const auto& [failing, line] : cases) {
        memory.failing = failing;
        EXPECT_FALSE(backend.detachBuffers(context));
        EXPECT_THAT(log.takeTexts(), ElementsAre(line));
    }
    memory.failing.clear();
    memory.takeCalls();
    EXPECT_TRUE(backend.detachBuffers(context));
    EXPECT_THAT(memory.takeCalls(), ElementsAre("getProperty ctx=1 option=4", "getProperty ctx=1 option=5",
                                                "setConfig ctx=1 0:15:5:1 0:15:6:1", "finalize ctx=1"));
    EXPECT_TRUE(backend.detachBuffers(context));
    EXPECT_THAT(log.takeTexts(), ElementsAre("2 Buffers already in the desired state detached."));

    // Its entry goes also where its buffers cannot be attached.
    memory.detachableFds = {8};
    memory.failing = "setConfig";
    EXPECT_TRUE(backend.beforeContextFree({context}));
    EXPECT_EQ(memory.takeCalls()[2], "setConfig ctx=1 0:15:8:0");
    log.take();
    EXPECT_TRUE(backend.attachBuffers(context));
    EXPECT_FALSE(backend.beforeContextFree({nullptr, context}));
    EXPECT_THAT(log.takeTexts(), ElementsAre("2 Buffers already in the desired state attached.",
                                             "1 Input context handles to beforeContextFree is NULL"));
}

// fault: memory for a count that no backend means.
TEST_F(BufferHooks, AbsurdCountsAreFailedQueries) {
    for (const int64_t count : {int64_t{-1}, int64_t{65537}}) {
        memory.detachableCount = count;
        EXPECT_FALSE(backend.detachBuffers(context));
        EXPECT_THAT(memory.takeCalls(), ElementsAre("getProperty ctx=1 option=4"));
    }
    memory.detachableCount = 0;
    EXPECT_TRUE(backend.detachBuffers(context));
    EXPECT_THAT(memory.takeCalls(), ElementsAre("getProperty ctx=1 option=4", "getProperty ctx=1 option=5"));
}

// fault: a race between pools that fill, pools that are read and entries that come; for the thread sanitizer.
TEST_F(BufferHooks, PoolsAndDetachingOverlapOnEightThreads) {
    constexpr uintptr_t THREADS = 8;
    constexpr uintptr_t CONTEXTS = 20;
    memory.detachableFds = {5};
    for (uintptr_t i = 0; i < THREADS * CONTEXTS; ++i) memory.sizes[{contextHandle(i + 1), SPILL_FILL}] = i;
    std::vector<std::thread> threads;
    for (uintptr_t t = 0; t < THREADS; ++t) {
        threads.emplace_back([this, t] {
            const std::string pool = "p" + std::to_string(t % 4) + ":" + std::to_string(2 * CONTEXTS);
            for (uintptr_t c = 1; c <= CONTEXTS; ++c) {
                void* const own = contextHandle(t * CONTEXTS + c);
                backend.allocateExternalBuffers(own, pool, "", "");
                EXPECT_TRUE(backend.finalizeExternalBufferPools());
                EXPECT_TRUE(backend.detachBuffers(own));
                EXPECT_TRUE(backend.attachBuffers(own));
                EXPECT_TRUE(backend.detachBuffers(contextHandle(1)));
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    std::vector<void*> contexts;
    for (uintptr_t i = 0; i < THREADS * CONTEXTS; ++i) contexts.push_back(contextHandle(i + 1));
    EXPECT_TRUE(backend.beforeContextFree(contexts));
}

}  // namespace
}  // namespace zant::test
