// Documents that once made a load slow, large or undefined, and a refusal that runs short of memory.
#include <gtest/gtest.h>

#include "extension/kor_backend.h"
#include "support/allocation.h"
#include "support/loaded_config.h"

namespace zant::test {
namespace {

// Each '#' in the text is the number of the repetition.
std::string repeated(const std::string& text, int count, const char* between = "") {
    const size_t number = text.find('#');
    std::string all;
    for (int i = 0; i < count; ++i) {
        std::string each = text;
        if (number != std::string::npos) each.replace(number, 1, std::to_string(i));
        all += (i == 0 ? "" : between) + each;
    }
    return all;
}

// Each is big enough to be felt if it took more than its size again.
TEST(HostileDocument, LoadsInProportionToItsSize) {
    const std::string members = "\"soc_id\":1}]}";
    const std::pair<std::string, bool> documents[] = {
        {R"({"a":")" + repeated("1234567890+", 300000) + R"("})", true},
        {R"({"context":[)" + repeated(R"({"x":{"lora_preload_buffer_group":{"5000":["a"]}}})", 100, ",") + "]}", true},
        {"{" + repeated(R"("a":0)", 60000, ",") + R"(,"graphs":[)" +
             repeated(R"({"finalize_config":{"a":1}})", 20000, ",") + "]}",
         true},
        {R"({"graphs":[{"O":-9223372036854775808}]})", false},
        {R"({"devices":[{"cores":[)" + repeated(R"({"custom":[]})", 100000, ",") + "]}]}", true},
        {R"({"context":{")" + std::string(200000, 'x') + R"(lora_preload_buffer_group":[)" +
             repeated(R"(["a"])", 50000, ",") + "]}}",
         true},
        {R"({"devices":[{)" + repeated(R"("a#":0,)", 200000) + members, true},
        {R"({"devices":[{)" + repeated(R"("soc_id":#,)", 100000) + members, true},
        {R"({"devices":[{)" + repeated(R"("x/y":0,)", 100000) + members, true},
    };
    for (const auto& [text, isAccepted] : documents) {
        SCOPED_TRACE(text.substr(0, 80));
        // Without a logger: a line for each of so many keys would be most of the work.
        ConfigRecords records;
        EXPECT_EQ(records.load(text), isAccepted);
        size_t groups = 0;
        for (const auto& context : records.contexts) groups += context.loraPreloadBufferGroups.size();
        EXPECT_LE(groups, text.size());
    }
}

// fault: the error's text, the pointers and the validator's state are built with allocators of other roads.
TEST(HostileDocument, AnyAllocationOfARefusalMayFail) {
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
