// The simulated backend's contexts: their config records, their properties and their own buffers.
#include <gmock/gmock.h>

#include "support/loaded.h"

namespace {

using namespace testing_support;
using testing::HasSubstr;
using testing::StartsWith;

class SimContexts : public testing::Test {
protected:
    // A context from a binary, with one custom record.
    uint64_t create(const void* record) {
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, const_cast<void*>(record)};
        ZantConfigWrapper* list[] = {&wrapper};
        return m_sim.find<ZantSimCreateContextFromBinaryFn>("ZantSim_createContextFromBinary")(nullptr, list, 1,
                                                                                               &m_context);
    }
    void makeDetachable() {
        const KORContextDetachableConfig record{KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, 1, {}};
        ASSERT_EQ(create(&record), 0U);
    }
    template <typename Record>
    uint64_t ask(Record& record) {
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, &record};
        void* list[] = {&wrapper, nullptr};
        return ourProvider(m_sim).contextGetProperty(m_context, list);
    }
    int64_t number(uint32_t option) {
        ContextNumberProperty record{option, 0, -1};
        EXPECT_EQ(ask(record), 0U);
        return record.answer;
    }
    uint64_t setState(int32_t fileDescriptor, uint32_t state) {
        ContextBufferStateRecord record{KOR_CONTEXT_OPTION_BUFFER_STATE, fileDescriptor, state};
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, &record};
        const ZantConfigWrapper* list[] = {&wrapper, nullptr};
        return ourProvider(m_sim).contextSetConfig(m_context, list);
    }
    uint64_t finalize() { return ourProvider(m_sim).contextFinalize(m_context, nullptr); }
    uint32_t detached() { return m_sim.find<ZantSimDetachedBuffersFn>("ZantSim_detachedBuffers")(m_context); }
    void expectMisuse(const char* reason) {
        EXPECT_THAT(m_sim.ledger().back(), testing::AllOf(StartsWith("misuse: "), HasSubstr(reason)));
    }

    const Sim m_sim;
    void* m_context = nullptr;
};

TEST_F(SimContexts, RefuseRecordsThatTheyDoNotKnow) {
    KORContextCustomConfig record{};
    const auto refused = [&](uint32_t option, uint64_t first, uint64_t second, const char* reason) {
        record.option = option;
        record.first.number64 = first;
        record.second = second;
        EXPECT_NE(create(&record), 0U);
        EXPECT_EQ(m_context, nullptr);
        expectMisuse(reason);
    };
    refused(19, 1, 0, "unknown context option 19");
    refused(KOR_CONTEXT_OPTION_WEIGHT_SHARING, 0x101, 0, "weight sharing");
    refused(KOR_CONTEXT_OPTION_EXTENDED_UDMA, 2, 0, "extended udma");
    refused(KOR_CONTEXT_OPTION_REUSED_IO_LIMIT, 64, 1, "reused io limit");
    refused(KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH, 9999, 0, "no file open for writing");
    refused(KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, 0, 0, "no list of groups");
    const char* names[] = {"a", nullptr};
    const KORLoraGroup group{names, 2, 0};
    const KORLoraGroupList groups{&group, 1, 0};
    refused(KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, reinterpret_cast<uint64_t>(&groups), 0, "a name that is null");
    const KORContextDetachableConfig off{KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, 0, {}};
    EXPECT_NE(create(&off), 0U);
}

TEST_F(SimContexts, AnswerSizesFromTheScriptAndThenTheirOwn) {
    const ZantSimContextBuffers first{10, 20, 30, 3};
    m_sim.find<ZantSimSetContextBuffersFn>("ZantSim_setContextBuffers")(&first, 1);
    makeDetachable();
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE), 10);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE), 20);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE), 30);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT), 3);
    makeDetachable();
    const int64_t second = number(ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE);
    makeDetachable();
    EXPECT_NE(number(ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE), second);
    ContextNumberProperty unknown{7, 0, 0};
    EXPECT_NE(ask(unknown), 0U);
    expectMisuse("unknown property 7");
}

TEST_F(SimContexts, DetachTheirBuffersWhenTheyAreFinalised) {
    makeDetachable();
    std::vector<int32_t> list(static_cast<size_t>(number(ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT)), -1);
    ContextFdsProperty descriptors{ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS, 0, list.data()};
    ASSERT_EQ(ask(descriptors), 0U);
    void* graph = nullptr;
    ASSERT_EQ(m_sim.find<ZantSimRetrieveGraphFn>("ZantSim_retrieveGraph")(m_context, "g", &graph), 0U);
    const auto execute = [&] { return m_sim.find<ZantSimExecuteGraphFn>("ZantSim_executeGraph")(graph, nullptr, 0); };
    for (const int32_t fd : list) EXPECT_EQ(setState(fd, KOR_BUFFER_DETACHED), 0U);
    EXPECT_EQ(detached(), 0U);
    EXPECT_NE(execute(), 0U);
    expectMisuse("no finalise");
    EXPECT_EQ(finalize(), 0U);
    EXPECT_EQ(detached(), list.size());
    EXPECT_NE(execute(), 0U);
    expectMisuse("has detached buffers");
    for (const int32_t fd : list) EXPECT_EQ(setState(fd, KOR_BUFFER_ATTACHED), 0U);
    EXPECT_EQ(finalize(), 0U);
    EXPECT_EQ(execute(), 0U);
    EXPECT_NE(setState(list.back() + 1000, KOR_BUFFER_DETACHED), 0U);
    expectMisuse("is no detachable buffer");
    EXPECT_NE(setState(list.back(), 2), 0U);
    expectMisuse("unknown buffer state 2");
}

TEST_F(SimContexts, CanLieAboutTheirNumberOfBuffers) {
    makeDetachable();
    for (const int64_t answer : {int64_t{-1}, int64_t{1} << 62, int64_t{0}}) {
        m_sim.find<ZantSimSetDetachableAnswerFn>("ZantSim_setDetachableAnswer")(answer);
        EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT), answer);
    }
    ContextFdsProperty nowhere{ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS, 0, nullptr};
    EXPECT_EQ(ask(nowhere), 0U) << "nothing to fill in for a number of 0";
}

}  // namespace
