// Every single allocation of a load fails once: no crash, no leak, no exception out of the hook.
#include <gmock/gmock.h>

#include "extension/kor_backend.h"
#include "support/allocation.h"
#include "support/log_capture.h"

namespace zant::test {
namespace {

const char* const DOCUMENT =
    R"({"devices":[{"core_id":[3,1],"dsp_arch":"v73","cores":[{"custom":[{"graphState":["init_start","init_done"]}]}]}],)"
    R"("graphs":[{"graph_names":["a graph of a name that fits no short string","b"],"dynamic_partitioning":[1,2],)"
    R"("finalize_config":{"x":[1.5,"y"]},"perf_profile":"burst","num_cores":1}],)"
    R"("context":[{"contextKey":"a key that does not fit a short string","lora_preload_buffer_group":[["a"],["b"]]}],)"
    R"("groupContext":{"share_resources":true},"memory":{"mem_type":"shared_buffer"}})";

// fault: the schema validator is not made for allocators that throw (a crash), nor is a pointer's text (a leak).
TEST(AllocationFailure, AnyAllocationOfALoadMayFail) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    bool result = false;
    int failAt = 0;
    for (bool failed = true; failed; ++failAt) {
        kor::KORBackend backend;
        std::string config = DOCUMENT;
        log.take();
        failAllocation(failAt);
        result = backend.loadConfig(std::move(config));
        failed = !failAllocation(-1);
        if (failed) {
            const std::vector<std::string> texts = log.texts();
            ASSERT_FALSE(texts.empty()) << failAt;
            // A preload group that cannot grow costs its line only.
            EXPECT_TRUE(!result || texts[0].find("lora_preload_buffer_group") != std::string::npos) << failAt;
            EXPECT_TRUE(backend.loadConfig(DOCUMENT)) << failAt;
            EXPECT_EQ(backend.getCoreId(), 3U);
        }
    }
    EXPECT_TRUE(result);
    EXPECT_GT(failAt, 50);
}

// fault: the error's text, the pointers and the validator's state are built with allocators of other roads.
TEST(AllocationFailure, AnyAllocationOfARefusalMayFail) {
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    int failAt = 0;
    for (bool failed = true; failed; ++failAt) {
        kor::KORBackend backend;
        std::string config = R"({"devices":[{"device_id":"a text where a number belongs"}]})";
        log.take();
        failAllocation(failAt);
        const bool result = backend.loadConfig(std::move(config));
        failed = !failAllocation(-1);
        EXPECT_FALSE(result) << failAt;
        EXPECT_FALSE(log.texts().empty()) << failAt;
    }
    EXPECT_GT(failAt, 50);
}

}  // namespace
}  // namespace zant::test
