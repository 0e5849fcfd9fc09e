// From the document's contexts to the lists of each road, and what the end of a context takes down.
#include <gmock/gmock.h>

#include <filesystem>
#include <optional>
#include <sstream>

#include "extension/kor_backend.h"
#include "life/model_life.h"
#include "support/allocation.h"
#include "support/log_capture.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using PerContext = std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>;

std::string documentWithPatch(const std::string& path) {
    return R"({"context":[{"contextKey":"k","init_acceleration":true,"concurrent_deserialization_patch":")" + path +
           "\"}]}";
}

// Every record of a list as its option and its values: "2:0:5".
std::string textOf(ZantConfigWrapper** list, uint32_t count) {
    std::ostringstream text;
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(list[i]->option, ZANT_CONFIG_OPTION_CUSTOM);
        void* const config = list[i]->customConfig;
        const uint32_t option = *static_cast<uint32_t*>(config);
        const auto& record = *static_cast<KORContextCustomConfig*>(config);
        text << (i == 0 ? "" : " ") << option << ":";
        if (option == KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS) {
            text << uint32_t{static_cast<KORContextDetachableConfig*>(config)->enabled};
        } else if (option == KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS) {
            for (uint32_t g = 0; g < record.first.groups->groupCount; ++g) {
                const KORLoraGroup& group = record.first.groups->groups[g];
                for (uint32_t n = 0; n < group.nameCount; ++n) text << group.names[n];
                text << ";";
            }
        } else if (option == KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH) {
            text << (record.first.fileDescriptor > 0 ? "fd" : "none");
        } else {
            text << record.first.number64 << (record.second == 0 ? "" : ":" + std::to_string(record.second));
        }
    }
    return text.str();
}

class ContextHooks : public testing::Test {
protected:
    void load(const std::string& document) {
        m_backend.emplace();
        EXPECT_TRUE(m_backend->loadConfig(document));
        m_log.take();
        m_list = nullptr;
        m_count = 77;
        m_perContext.clear();
    }
    bool compose() { return m_backend->beforeContextCreate(&m_list, &m_count); }
    bool fromBinary() { return m_backend->beforeContextCreateFromBinary(&m_list, &m_count); }
    bool fromList() { return m_backend->beforeContextCreateFromBinaryList(&m_perContext, &m_list, &m_count); }
    std::string common() { return textOf(m_list, m_count); }
    std::string listOf(const char* key) { return textOf(m_perContext.at(key).second, m_perContext.at(key).first); }

    LogCapture m_log{ZANT_LOG_LEVEL_WARN};
    std::optional<kor::KORBackend> m_backend;
    ZantConfigWrapper** m_list = nullptr;
    uint32_t m_count = 77;
    PerContext m_perContext;
};

// fault: an option on the wrong road or in the wrong place, a value at the wrong offset.
TEST_F(ContextHooks, EachRoadTakesItsOptionsInOrder) {
    const ScratchFolder folder;
    load(everyOption(folder.path("patch"), false));
    EXPECT_TRUE(compose());
    EXPECT_EQ(common(), "1:1 7:1 11:0 13:1 18:1 22:1 26:4294967295");
    EXPECT_TRUE(m_backend->afterContextCreate() && fromBinary());
    EXPECT_EQ(common(), "2:0:5 12:7:6 3:0 4:1 6:1 8:1 9:1 11:0 14:1 16:1 23:ab;c; 22:1 26:4294967295 17:9 21:fd");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinary() && fromList());
    EXPECT_EQ(listOf("a key that fits no short string"),
              "2:0:5 12:7:6 3:0 4:1 6:1 8:1 21:fd 9:1 11:0 14:1 16:1 23:ab;c;");
    EXPECT_EQ(listOf("second"), "23:d;");
    EXPECT_EQ(common(), "5:1 10:2 17:4");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinaryList() && m_backend->beforeContextFree({}));
}

// fault: records of an earlier pair of hooks that stay.
TEST_F(ContextHooks, PairsOfHooksLeaveNothingBehind) {
    load(everyOption("", false));
    GraphConfigInfo_t** infos = nullptr;
    const auto live = [&] {
        EXPECT_TRUE(compose() && m_backend->afterContextCreate());
        EXPECT_TRUE(fromBinary() && m_backend->afterContextCreateFromBinary());
        EXPECT_TRUE(fromList() && m_backend->afterContextCreateFromBinaryList());
        EXPECT_EQ(m_count, 3U);
        EXPECT_TRUE(m_backend->beforeGraphsCompose(&infos, &m_count) && m_backend->afterGraphsCompose());
        EXPECT_TRUE(m_backend->beforeGraphExecute("decoder", &m_list, &m_count) && m_backend->afterGraphExecute());
        m_perContext.clear();
        m_log.take();
        return liveAllocations();
    };
    live();
    const size_t before = live();
    EXPECT_EQ(live(), before);
}

TEST_F(ContextHooks, WithoutSettingsThereAreNoRecords) {
    load("{}");
    EXPECT_TRUE(compose() && fromBinary());
    EXPECT_EQ(m_count, 77U);
    load(R"({"context":[{"contextKey":"k"},{"prepare_only":true},{"contextKey":"k","init_acceleration":true},)"
         R"({"contextKey":"l","init_acceleration":true}]})");
    EXPECT_TRUE(compose());
    EXPECT_EQ(m_count, 0U);
    EXPECT_TRUE(fromList());
    EXPECT_EQ(common(), "10:0");
    EXPECT_EQ(m_perContext.size(), 2U);
    EXPECT_EQ(listOf("k"), "") << "a key's first list stays";
    EXPECT_EQ(listOf("l"), "8:1");
}

TEST_F(ContextHooks, SettingsOfGraphsAreWarnedOfWhereGraphsAreComposedAlready) {
    load(R"({"graphs":[{"graph_names":["a"],"slu_threads":1},{"graph_names":["b"],"spad_mb":1}]})");
    EXPECT_TRUE(compose());
    EXPECT_THAT(m_log.takeTexts(), IsEmpty());
    EXPECT_TRUE(fromBinary() && fromList());
    const std::string warning = "2 Graph settings specified by user cannot be applied to an already composed graph.";
    EXPECT_THAT(m_log.takeTexts(), ElementsAre(warning, warning));
}

// fault: a descriptor that stays open, or is closed while its context lives.
TEST_F(ContextHooks, PatchFilesStayOpenUntilContextsGo) {
    const ScratchFolder folder;
    const std::string path = folder.path("patch");
    load(documentWithPatch(path));
    const size_t before = openDescriptors();
    EXPECT_TRUE(fromBinary() && m_backend->afterContextCreateFromBinary());
    EXPECT_TRUE(fromList() && m_backend->afterContextCreateFromBinaryList());
    EXPECT_EQ(openDescriptors(), before + 2);
#if !defined(_WIN32)  // which keeps no such bits
    EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0644));
#endif
    EXPECT_TRUE(m_backend->beforeContextFree({}) && m_backend->beforeContextFree({}));
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_TRUE(fromBinary());
    m_backend.reset();  // a host that never frees its contexts
    EXPECT_EQ(openDescriptors(), before);
    EXPECT_THAT(m_log.takeTexts(), IsEmpty());
}

TEST_F(ContextHooks, APatchFileThatCannotBeOpenedEndsTheHook) {
    const ScratchFolder folder;
    const size_t before = openDescriptors();
    for (const std::string& bad : {folder.path("no folder/patch"), folder.pipe("pipe")}) {
        load(documentWithPatch(bad));
        EXPECT_FALSE(fromBinary());
        EXPECT_EQ(m_count, 77U);
        EXPECT_THAT(m_log.takeTexts(), ElementsAre(HasSubstr("1 Failed to open file: " + bad + ", error: ")));

        load(R"({"context":[{"contextKey":"a","concurrent_deserialization_patch":")" + folder.path("good") +
             R"("},{"contextKey":"b","concurrent_deserialization_patch":")" + bad + R"("},{"contextKey":"c"}]})");
        EXPECT_FALSE(fromList());
        EXPECT_EQ(openDescriptors(), before);
        EXPECT_EQ(m_perContext.size(), 1U);
        EXPECT_EQ(m_perContext.at("a").second[0]->customConfig, nullptr);  // leads nowhere, instead of to freed memory
        EXPECT_TRUE(m_backend->afterContextCreateFromBinaryList());
    }
}

// fault: a hook that says true with a record missing.
TEST(HooksShortage, AnyAllocationMayFail) {
    const ScratchFolder folder;
    ZantConfigWrapper** list = nullptr;
    GraphConfigInfo_t** infos = nullptr;
    uint32_t count = 0;
    for (const bool isGraphs : {false, true}) {
        bool failed = true;
        for (int failAt = 0; failed; ++failAt) {
            kor::KORBackend backend;
            PerContext perContext;
            ASSERT_TRUE(backend.loadConfig(everyOption(folder.path("patch"), false)));
            failAllocation(failAt);
            const bool result = isGraphs ? backend.beforeGraphsCompose(&infos, &count)
                                         : backend.beforeContextCreateFromBinaryList(&perContext, &list, &count);
            failed = !failAllocation(-1);
            EXPECT_EQ(result, !failed) << failAt;
        }
    }
}

}  // namespace
}  // namespace zant::test
