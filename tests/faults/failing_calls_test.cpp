// Every call that the library makes of its neighbours fails once, on every road: no crash, no leak, no exception, no
// standing id, and the same object then runs clean.
#include <gtest/gtest.h>

#include "life/model_life.h"
#include "support/fake_memory.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

class FailingCalls : public testing::TestWithParam<Road> {
protected:
    void SetUp() override {
        if (!HAS_MEMORY_FOR_ALL_LIVES) GTEST_SKIP() << "too many threads for the thread sanitizer";
    }

    size_t callsOfACleanLife(bool isShort) {
        ModelLife life(linkedFactory(), config.c_str(), "p");
        neighbours.fail({});
        life.run(GetParam(), isShort);
        EXPECT_EQ(life.failedHooks(), 0U) << life.firstFailed();
        life.destroy();
        return neighbours.calls();
    }
    // What a failed life may leave: a tensor or a block whose release failed.
    void checkLife(ModelLife& life, const std::string& what) {
        EXPECT_EQ(life.silentFailures(), 0U) << what << ", first " << life.firstFailed();
        life.forgetFailures();
        neighbours.fail({});
        life.run(GetParam());
        EXPECT_EQ(life.failedHooks(), 0U) << what << ", then " << life.firstFailed();
        life.destroy();
    }

    const ScratchFolder folder;
    Neighbours neighbours{fakeDarlink()};
    const std::string config = everyOption(folder.path("patch"), false);
};

TEST_P(FailingCalls, OneAtATime) {
    const size_t descriptors = openDescriptors();
    const size_t calls = callsOfACleanLife(false);
    for (size_t call = 0; call < calls; ++call) {
        const std::string what = "call " + std::to_string(call);
        ModelLife life(linkedFactory(), config.c_str(), "p");
        neighbours.fail({call});
        life.run(GetParam());
        const bool lostIds = neighbours.lostIds();
        checkLife(life, what);
        EXPECT_TRUE(lostIds || neighbours.liveIds() == 0) << what;
        EXPECT_LE(neighbours.liveTensors(), 1U) << what;
        EXPECT_LE(neighbours.liveBlocks(), 1U) << what;
        EXPECT_EQ(openDescriptors(), descriptors) << what;
        neighbours.forget();
    }
    RecordProperty("calls", static_cast<int>(calls));
    std::printf("%zu calls failed\n", calls);
    EXPECT_GT(calls, 40U);
}

// The short road: without pools, detaching and tensors.
TEST_P(FailingCalls, EveryPairOfAShortLife) {
    size_t pairs = 0;
    const size_t calls = callsOfACleanLife(true);
    for (size_t first = 0; first < calls; ++first) {
        for (size_t second = first + 1; second < calls; ++second) {
            ModelLife life(linkedFactory(), config.c_str(), "p");
            neighbours.fail({first, second});
            life.run(GetParam(), true);
            EXPECT_EQ(life.silentFailures(), 0U) << first << " and " << second << ", first " << life.firstFailed();
            const bool lostIds = neighbours.lostIds();
            life.destroy();
            EXPECT_TRUE(lostIds || neighbours.liveIds() == 0) << first << " and " << second;
            neighbours.forget();
            ++pairs;
        }
    }
    std::printf("%zu pairs of calls failed\n", pairs);
    EXPECT_GT(pairs, 100U);
}

// Out-values of calls that say success: no crash, and no memory for a number that nobody means.
TEST_P(FailingCalls, AnswersThatNobodyMeans) {
    for (const Answer answer : {Answer::minusOne, Answer::zero, Answer::largest, Answer::changing}) {
        ModelLife life(linkedFactory(), config.c_str(), "p");
        neighbours.fail({});
        neighbours.answer(answer);
        life.run(GetParam());
        EXPECT_EQ(life.silentFailures(), 0U) << static_cast<int>(answer) << ", first " << life.firstFailed();
        neighbours.answer(Answer::usual);
        life.destroy();
        neighbours.forget();
    }
}

INSTANTIATE_TEST_SUITE_P(Roads, FailingCalls, testing::ValuesIn(ROADS), roadName<testing::TestParamInfo<Road>>);

}  // namespace
}  // namespace zant::test
