// Documents that once made a load slow, large or undefined, and loads that run short of memory.
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
        {R"({"context":[)" + repeated(R"({"x":{"lora_preload_buffer_group":{"119900":["a"]}}})", 2000, ",") + "]}",
         true},
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

// fault: the schema validator is not made for allocators that throw (a crash), nor is a pointer's text (a leak).
TEST(HostileDocument, AnyAllocationOfALoadMayFail) {
    const std::pair<std::string, bool> documents[] = {
        {R"({"devices":[{"core_id":[3],"cores":[{"custom":[{"graphState":["init_start"]}]}]}],"graphs":[{)"
         R"("graph_names":["a name that fits no short string"],"finalize_config":{"x":[1.5,"y"]}}],"context":[{)"
         R"("contextKey":"a key that does not fit a short string","lora_preload_buffer_group":[["a"],["b"]]}]})",
         true},
        {R"({"devices":[{"device_id":"a text where a number belongs"}]})", false},
    };
    LogCapture log(ZANT_LOG_LEVEL_ERROR);
    for (const auto& [document, isAccepted] : documents) {
        int failAt = 0;
        for (bool failed = true; failed; ++failAt) {
            kor::KORBackend backend;
            std::string config = document;
            log.take();
            failAllocation(failAt);
            const bool result = backend.loadConfig(std::move(config));
            failed = !failAllocation(-1);
            // A preload group that cannot grow costs its line only.
            const std::vector<std::string> texts = log.texts();
            ASSERT_EQ(texts.empty(), !failed && isAccepted) << failAt;
            EXPECT_EQ(result, isAccepted && (!failed || texts[0].find("preload_buffer") != std::string::npos));
            EXPECT_EQ(backend.loadConfig(document), isAccepted) << failAt;
        }
        EXPECT_GT(failAt, 50);
    }
}

}  // namespace
}  // namespace zant::test
