// From the document's contexts to the lists of each road, and what the end of a context takes down.
#include <gmock/gmock.h>

#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>

#include "extension/kor_backend.h"
#include "support/allocation.h"
#include "support/log_capture.h"
#include "support/scratch_folder.h"

namespace zant::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using PerContext = std::map<std::string, std::pair<uint32_t, ZantConfigWrapper**>>;

const std::string EVERY_MEMBER =
    R"("weight_sharing_enabled":true,"group_id":0,"max_spill_fill_buffer_for_group":5,)"
    R"("file_read_memory_budget_in_mb":0,"dsp_memory_profiling_enabled":true,"io_memory_estimation":true,)"
    R"("prepare_only":true,"init_acceleration":true,"skip_validation_on_binary_section":true,"extended_udma":false,)"
    R"("concurrent_group_registration":{"group_id":4294967295,"max_spill_fill_buffer_for_group":6},)"
    R"("lora_weight_sharing":true,"detachable_buffers_enabled":true,"hard_detach_enabled":true,)"
    R"("lora_weight_sharing_ram_preload":true,"lora_preload_buffer_group":[["a","b"],["c"]],)"
    R"("reference_weight_sharing_enabled":true,"reused_io_limit_mb":9,)"
    R"("graph_splitting_configs":{"graph_splitting_enabled":true,"num_prepare_threads":"auto"})";

std::string contextDocument(const std::string& members) {
    return R"({"context":[{"contextKey":"k",)" + members + "}]}";
}

// Every record of a list as its option and its two values: "2:0:5". Option 14 has one byte behind its option.
std::string textOf(ZantConfigWrapper** list, uint32_t count) {
    std::ostringstream text;
    for (uint32_t i = 0; i < count; ++i) {
        EXPECT_EQ(list[i]->option, ZANT_CONFIG_OPTION_CUSTOM);
        uint32_t option = 0;
        std::memcpy(&option, list[i]->customConfig, sizeof(option));
        text << (i == 0 ? "" : " ") << option;
        if (option == 14) {
            std::array<uint32_t, 3> words{};
            std::memcpy(words.data(), list[i]->customConfig, sizeof(words));
            text << ":" << words[1] << ":" << words[2];
            continue;
        }
        const auto& record = *static_cast<KORContextCustomConfig*>(list[i]->customConfig);
        if (option == 23) {
            for (uint32_t g = 0; g < record.first.groups->groupCount; ++g) {
                const KORLoraGroup& group = record.first.groups->groups[g];
                text << ":";
                for (uint32_t n = 0; n < group.nameCount; ++n) text << group.names[n];
            }
        } else if (option == 21) {
            text << (record.first.fileDescriptor > 0 ? ":fd" : ":none");
        } else {
            text << ":" << record.first.number64 << (record.second == 0 ? "" : ":" + std::to_string(record.second));
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
    const std::string document = contextDocument(EVERY_MEMBER);
    load(document);
    EXPECT_TRUE(compose());
    EXPECT_EQ(common(), "1:1 7:1 11:0 13:1 18:1 22:1 26:4294967295");
    EXPECT_TRUE(m_backend->afterContextCreate());
    EXPECT_TRUE(fromBinary());
    EXPECT_EQ(common(), "2:0:5 12:4294967295:6 3:0 4:1 6:1 8:1 9:1 11:0 14:1:0 16:1 23:ab:c 22:1 26:4294967295 17:9");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinary());
    EXPECT_TRUE(fromList());
    EXPECT_EQ(listOf("k"), "2:0:5 12:4294967295:6 3:0 4:1 6:1 8:1 9:1 11:0 14:1:0 16:1 23:ab:c");
    EXPECT_EQ(common(), "10:0");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinaryList());
}

TEST_F(ContextHooks, WithoutSettingsThereAreNoRecords) {
    load("{}");
    EXPECT_TRUE(compose() && fromBinary());
    EXPECT_EQ(m_count, 77U);
    load(R"({"context":[{"contextKey":"k"}],)"
         R"("groupContext":{"share_resources":true,"share_resources_optimization_type":3,"reused_io_limit_mb":4}})");
    EXPECT_TRUE(compose());
    EXPECT_EQ(m_count, 0U);
    EXPECT_TRUE(fromList());
    EXPECT_EQ(common(), "5:1 10:3 17:4");
    EXPECT_EQ(m_perContext.at("k").first, 0U);
}

// fault: group pointers that move when a later context brings more groups; a key's first list replaced.
TEST_F(ContextHooks, ListedContextsStandUnderTheirKeys) {
    std::string contexts = R"({"prepare_only":true})";
    for (int i = 0; i < 40; ++i) {
        const std::string n = std::to_string(i);
        contexts += R"(,{"contextKey":"k)" + n + R"(","lora_preload_buffer_group":[["p)" + n + R"("],["q","r"]]})";
    }
    load(R"({"context":[)" + contexts + R"(,{"contextKey":"k0","io_memory_estimation":true}]})");
    EXPECT_TRUE(fromList());
    EXPECT_EQ(m_perContext.size(), 40U);
    EXPECT_EQ(listOf("k0"), "23:p0:qr");
    EXPECT_EQ(listOf("k39"), "23:p39:qr");
}

TEST_F(ContextHooks, SettingsOfGraphsAreWarnedOfWhereGraphsAreComposedAlready) {
    load(R"({"graphs":[{"graph_names":["a"],"spad_mb":1},{"graph_names":["b"],"slu_threads":1}]})");
    EXPECT_TRUE(compose());
    EXPECT_THAT(m_log.takeTexts(), IsEmpty());
    for (const bool isList : {false, true}) {
        EXPECT_TRUE(isList ? fromList() : fromBinary());
        EXPECT_THAT(m_log.takeTexts(), ElementsAre("2 Graph settings specified by user cannot be applied to an already "
                                                   "composed graph."));
    }
}

// fault: a descriptor that stays open, or is closed while its context lives.
TEST_F(ContextHooks, PatchFilesStayOpenUntilContextsGo) {
    const ScratchFolder folder;
    const std::string path = folder.path("patch");
    load(contextDocument(R"("concurrent_deserialization_patch":")" + path + R"(","init_acceleration":true)"));
    const size_t before = openDescriptors();
    EXPECT_TRUE(fromBinary());
    EXPECT_EQ(common(), "8:1 21:fd");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinary() && fromList());
    EXPECT_EQ(listOf("k"), "8:1 21:fd");
    EXPECT_TRUE(m_backend->afterContextCreateFromBinaryList());
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
        load(contextDocument(R"("io_memory_estimation":true,"concurrent_deserialization_patch":")" + bad + "\""));
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
TEST_F(ContextHooks, AnyAllocationMayFail) {
    const ScratchFolder folder;
    const std::string patch = R"(,"concurrent_deserialization_patch":")" + folder.path("patch") + "\"";
    bool failed = true;
    for (int failAt = 0; failed; ++failAt) {
        load(contextDocument(EVERY_MEMBER + patch));
        failAllocation(failAt);
        const bool result = fromList();
        failed = !failAllocation(-1);
        EXPECT_EQ(result, !failed) << failAt;
        EXPECT_EQ(m_log.takeTexts().empty(), result) << failAt;
    }
}

}  // namespace
}  // namespace zant::test
