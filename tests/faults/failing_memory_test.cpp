// The k-th allocation fails, once or from then on, for every k of a model's life on every road; and every thread start.
#include <gtest/gtest.h>

#include "life/model_life.h"
#include "support/allocation.h"
#include "support/failing_thread.h"
#include "support/fake_memory.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

class FailingMemory : public testing::TestWithParam<Road> {
protected:
    void SetUp() override {
        if (!HAS_MEMORY_FOR_ALL_LIVES) GTEST_SKIP() << "too many threads for the thread sanitizer";
    }

    // Fails allocations at every position until a life needs none of them.
    void failEach(bool fromThenOn) {
        const size_t descriptors = openDescriptors();
        {
            ModelLife warmUp(linkedFactory(), config.c_str(), "p");
            warmUp.run(GetParam());
        }  // what is made once in a process
        int failAt = 0;
        for (bool failed = true; failed; ++failAt) {
            const size_t before = liveAllocations();
            neighbours.fail({});
            {
                ModelLife life(linkedFactory(), config.c_str(), "p");
                failAllocation(failAt, fromThenOn);
                life.run(GetParam());
                failed = !failAllocation(-1);
                ASSERT_EQ(life.silentFailures(), 0U) << failAt << ", first " << life.firstFailed();
                ASSERT_TRUE(failed || life.failedHooks() == 0) << failAt << ", first " << life.firstFailed();
                if (!life.isLoaded()) life.destroy();  // what a failed load has filled stays in the object
                life.forgetFailures();
                life.run(GetParam());
                ASSERT_EQ(life.failedHooks(), 0U) << failAt << ", then " << life.firstFailed();
            }
            ASSERT_EQ(liveAllocations(), before) << failAt;
            ASSERT_EQ(neighbours.liveIds(), 0U) << failAt;
            ASSERT_EQ(neighbours.liveTensors(), 0U) << failAt;
            ASSERT_EQ(neighbours.liveBlocks(), 0U) << failAt;
            ASSERT_EQ(openDescriptors(), descriptors) << failAt;
            neighbours.forget();
        }
        std::printf("%d allocations failed\n", failAt - 1);
        EXPECT_GT(failAt, 200);
    }

    const ScratchFolder folder;
    Neighbours neighbours{fakeDarlink()};
    const std::string config = everyOption(folder.path("patch"), false);
};

TEST_P(FailingMemory, Once) {
    failEach(false);
}

TEST_P(FailingMemory, FromThenOn) {
    failEach(true);
}

// The timer's thread and the voting thread.
TEST_P(FailingMemory, ThreadsThatDoNotStart) {
    const std::string async = everyOption("", true);
    for (int start = 0; start < 2; ++start) {
        ModelLife life(linkedFactory(), async.c_str(), "p");
        neighbours.fail({});
        {
            const FailingThread failing(start);
            life.run(GetParam());
        }
        EXPECT_EQ(life.silentFailures(), 0U);
        EXPECT_STREQ(life.firstFailed(), "afterDeviceCreate");
        life.forgetFailures();
        life.run(GetParam());
        EXPECT_EQ(life.failedHooks(), 0U) << life.firstFailed();
        life.destroy();
        EXPECT_EQ(neighbours.liveIds(), 0U);
        neighbours.forget();
    }
}

INSTANTIATE_TEST_SUITE_P(Roads, FailingMemory, testing::ValuesIn(ROADS), roadName<testing::TestParamInfo<Road>>);

}  // namespace
}  // namespace zant::test
