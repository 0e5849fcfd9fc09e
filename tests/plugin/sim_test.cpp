// The simulated machine has to be right for the tests that lean on it to mean anything.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <thread>

#include "support/loaded.h"
#include "zant_sim/sim_darlink.h"

namespace {

using namespace testing_support;

std::string darlinkPath() {
    return (std::filesystem::path(SIM_BACKEND_LIBRARY).parent_path() / "windows/drivers/libdarlink.dll").string();
}

constexpr KORContextDetachableConfig DETACHABLE{KOR_CONTEXT_OPTION_DETACHABLE_BUFFERS, 1, {}};

// A vote for an id; the simulated machine looks at no corner.
PowerConfigRecord corners(uint32_t id) {
    return {{1, id, 96}};
}

// A context from a binary with detachable buffers, a graph of it, and a block of 4096 bytes.
class Simulated : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(provider.deviceGetInfrastructure(&power), 0U);
        ASSERT_EQ(createContext(&DETACHABLE), 0U);
        ASSERT_EQ(sim.find<ZantSimRetrieveGraphFn>("ZantSim_retrieveGraph")(context, "g", &graph), 0U);
    }
    void TearDown() override { freeBlock(block); }

    uint64_t vote(uint32_t id, const PowerConfigRecord& record) const {
        const PowerConfigRecord* list[] = {&record, nullptr};
        return power->setPowerConfig(id, list);
    }
    size_t voteCount() const { return sim.find<ZantSimVoteCountFn>("ZantSim_voteCount")(); }
    uint64_t createContext(const void* record) {
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, const_cast<void*>(record)};
        ZantConfigWrapper* list[] = {&wrapper};
        return sim.find<ZantSimCreateContextFromBinaryFn>("ZantSim_createContextFromBinary")(nullptr, list, 1,
                                                                                             &context);
    }
    template <typename Record>
    uint64_t ask(Record record) {
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, &record};
        void* list[] = {&wrapper, nullptr};
        return provider.contextGetProperty(context, list);
    }
    int64_t number(uint32_t option) {
        ContextNumberProperty property{option, 0, -1};
        EXPECT_EQ(ask<ContextNumberProperty&>(property), 0U);
        return property.answer;
    }
    uint64_t setState(int32_t fileDescriptor, uint32_t state) {
        ContextBufferStateRecord record{KOR_CONTEXT_OPTION_BUFFER_STATE, fileDescriptor, state};
        ZantConfigWrapper wrapper{ZANT_CONFIG_OPTION_CUSTOM, 0, &record};
        const ZantConfigWrapper* list[] = {&wrapper, nullptr};
        return provider.contextSetConfig(context, list);
    }
    // A tensor of 128 bytes.
    uint64_t reg(int32_t fileDescriptor, uint64_t offset, void*& handle, uint64_t size = 4096, uint32_t type = 1) {
        const SharedBufferInfo info{type, 0, size, fileDescriptor, 0, offset};
        const uint32_t dimensions[] = {4, 8};
        const MemRegisterDescriptor descriptor{2,    0, dimensions, nullptr, 0x0232, ZANT_MEMORY_KIND_SHARED_BUFFER,
                                               &info};
        return provider.memoryRegister(context, &descriptor, 1, &handle);
    }
    uint64_t execute() { return sim.find<ZantSimExecuteGraphFn>("ZantSim_executeGraph")(graph, nullptr, 0); }

    struct WrongUse {
        const char* reason;
        std::function<uint64_t()> use;
    };
    void expectMisuse(std::initializer_list<WrongUse> cases) {
        for (const WrongUse& wrong : cases) {
            EXPECT_NE(wrong.use(), 0U) << wrong.reason;
            EXPECT_THAT(sim.ledger().back(),
                        testing::AllOf(testing::StartsWith("misuse: "), testing::HasSubstr(wrong.reason)));
        }
    }

    const Sim sim;
    const Sim darlink{darlinkPath()};
    const ZantProviderRecord& provider = sim.provider();
    const ZantPerfInfrastructure* power = nullptr;
    const DarmemFreeFn freeBlock = darlink.find<DarmemFreeFn>("darmem_free");
    const DarmemToFdFn toFd = darlink.find<DarmemToFdFn>("darmem_to_fd");
    void* block = darlink.find<DarmemAllocFn>("darmem_alloc")(DARMEM_HEAP_ID_SYSTEM, DARMEM_FLAG_DEFAULT, 4096);
    void* context = nullptr;
    void* graph = nullptr;
};

TEST_F(Simulated, ASlowCallHoldsNobodyUp) {
    sim.find<ZantSimSetLatencyFn>("ZantSim_setLatency")("setPowerConfig", 300000);
    const auto elapsedNs = sim.find<ZantSimElapsedNsFn>("ZantSim_elapsedNs");
    std::atomic<bool> done{false};
    std::thread slow([&] {
        EXPECT_EQ(vote(0, corners(0)), 0U);
        done = true;
    });
    std::vector<uint64_t> answeredNs;
    while (!done) {
        EXPECT_EQ(provider.getApiVersion(nullptr), 0U);
        answeredNs.push_back(elapsedNs());
    }
    slow.join();
    ZantSimVote last{};
    ASSERT_EQ(sim.find<ZantSimVoteFn>("ZantSim_vote")(0, &last), 1U);
    const auto duringTheVote = [&](uint64_t time) {
        return time > last.timeNs - 290'000'000 && time < last.timeNs - 10'000'000;
    };
    EXPECT_TRUE(std::any_of(answeredNs.begin(), answeredNs.end(), duringTheVote));
}

TEST_F(Simulated, WrongVotesFailAreNamedAndVoteNothing) {
    uint32_t id = 0;
    uint32_t gone = 0;
    ASSERT_EQ(power->createPowerConfigId(0, 0, &id), 0U);
    ASSERT_EQ(power->createPowerConfigId(0, 0, &gone), 0U);
    ASSERT_EQ(power->destroyPowerConfigId(gone), 0U);
    const PowerConfigRecord good = corners(id);
    std::array<const PowerConfigRecord*, 20> endless{};
    endless.fill(&good);
    const PowerConfigRecord* empty[] = {nullptr};
    const size_t before = voteCount();
    expectMisuse({
        {"was never made", [&] { return vote(4711, corners(4711)); }},
        {"is destroyed", [&] { return vote(gone, corners(gone)); }},
        {"destroyed already", [&] { return power->destroyPowerConfigId(gone); }},
        {"the list is empty", [&] { return power->setPowerConfig(id, empty); }},
        {"no null", [&] { return power->setPowerConfig(id, endless.data()); }},
        {"option 2 is unknown", [&] { return vote(id, {{2}}); }},
        {"is for id", [&] { return vote(id, corners(id + 1)); }},
        {"words beyond its own",
         [&] {
             return vote(id, {{7, 1, 5}});
         }},
    });
    EXPECT_EQ(voteCount(), before);
    endless[16] = nullptr;
    EXPECT_EQ(power->setPowerConfig(id, endless.data()), 0U);
}

TEST_F(Simulated, TheCurrentVoteIsTheLastWithCornersOfALivingId) {
    const auto currentVote = sim.find<ZantSimCurrentVoteFn>("ZantSim_currentVote");
    const auto liveIds = sim.find<ZantSimLivePowerConfigIdsFn>("ZantSim_livePowerConfigIds");
    uint32_t id = 0;
    ZantSimVote current{};
    ASSERT_EQ(power->createPowerConfigId(0, 0, &id), 0U);
    EXPECT_EQ(currentVote(id, &current), 0U);
    EXPECT_EQ(vote(id, corners(id)), 0U);
    EXPECT_EQ(vote(id, {{3, 9999}}), 0U);
    ASSERT_EQ(currentVote(id, &current), 1U) << "settings alone replace no vote";
    EXPECT_EQ(current.records[0].words[1], id);
    EXPECT_EQ(liveIds(), 1U);
    EXPECT_EQ(power->destroyPowerConfigId(id), 0U);
    EXPECT_EQ(currentVote(id, &current), 0U);
    EXPECT_EQ(liveIds(), 0U);
}

TEST_F(Simulated, ContextsAnswerByTheScriptAndThenSizesOfTheirOwn) {
    const ZantSimContextBuffers scripted{10, 20, 30, 3};
    sim.find<ZantSimSetContextBuffersFn>("ZantSim_setContextBuffers")(&scripted, 1);
    ASSERT_EQ(createContext(&DETACHABLE), 0U);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE), 10);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_WEIGHTS_SIZE), 20);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_SPAD_BACKUP_SIZE), 30);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT), 3);
    ASSERT_EQ(createContext(&DETACHABLE), 0U);
    EXPECT_GT(number(ZANT_CONTEXT_PROPERTY_SPILL_FILL_SIZE), 10);
    sim.find<ZantSimSetDetachableAnswerFn>("ZantSim_setDetachableAnswer")(int64_t{1} << 62);
    EXPECT_EQ(number(ZANT_CONTEXT_PROPERTY_DETACHABLE_COUNT), int64_t{1} << 62);
}

TEST_F(Simulated, BuffersAreDetachedOnceTheContextIsFinalised) {
    int32_t fds[8] = {};  // the first context has two
    ASSERT_EQ(ask(ContextFdsProperty{ZANT_CONTEXT_PROPERTY_DETACHABLE_FDS, 0, fds}), 0U);
    EXPECT_EQ(setState(fds[1], KOR_BUFFER_DETACHED), 0U);
    expectMisuse({{"no finalise", [&] { return execute(); }}});
    EXPECT_EQ(provider.contextFinalize(context, nullptr), 0U);
    expectMisuse({{"has detached buffers", [&] { return execute(); }}});
    EXPECT_EQ(setState(fds[1], KOR_BUFFER_ATTACHED), 0U);
    EXPECT_EQ(provider.contextFinalize(context, nullptr), 0U);
    EXPECT_EQ(execute(), 0U);
    expectMisuse({
        {"is no detachable buffer", [&] { return setState(fds[1] + 1000, KOR_BUFFER_DETACHED); }},
        {"unknown buffer state 2", [&] { return setState(fds[1], 2); }},
        {"unknown property 7",
         [&] {
             return ask(ContextNumberProperty{7, 0, 0});
         }},
    });
}

TEST_F(Simulated, ContextsRefuseRecordsThatTheyDoNotKnow) {
    const char* names[] = {"a", nullptr};
    const KORLoraGroup group{names, 2, 0};
    const KORLoraGroupList groups{&group, 1, 0};
    const auto list = reinterpret_cast<uint64_t>(&groups);
    const auto create = [&](uint32_t option, uint64_t value) {
        KORContextCustomConfig record{};
        record.option = option;
        record.first.number64 = value;
        return createContext(&record);
    };
    expectMisuse({
        {"unknown context option 19", [&] { return create(19, 1); }},
        {"weight sharing", [&] { return create(KOR_CONTEXT_OPTION_WEIGHT_SHARING, 0x101); }},
        {"no file open", [&] { return create(KOR_CONTEXT_OPTION_DESERIALIZATION_PATCH, 9999); }},
        {"that is null", [&] { return create(KOR_CONTEXT_OPTION_LORA_PRELOAD_GROUPS, list); }},
    });
    EXPECT_EQ(context, nullptr);
}

TEST_F(Simulated, RegionsLieInTheirMemoryAndEndOnce) {
    void* first = nullptr;
    void* second = nullptr;
    const int32_t fd = toFd(block);
    expectMisuse({
        {"128 bytes at 3969 lie not within 4096", [&] { return reg(fd, 4096 - 127, first); }},
        {"names 4096 bytes, not 4097", [&] { return reg(fd, 0, first, 4097); }},
        {"descriptor -1 names no memory", [&] { return reg(-1, 0, first); }},
        {"unknown buffer type 5", [&] { return reg(fd, 0, first, 4096, 5); }},
    });
    EXPECT_EQ(first, nullptr);
    ASSERT_EQ(reg(fd, 0, first), 0U);
    ASSERT_EQ(reg(fd, 4096 - 128, second), 0U);
    EXPECT_EQ(execute(), 0U);
    EXPECT_EQ(provider.memoryDeregister(&first, 1), 0U);
    expectMisuse({{"is deregistered", [&] { return provider.memoryDeregister(&first, 1); }}});
    freeBlock(block);
    expectMisuse({{"(tensor) is gone", [&] { return execute(); }}});
    freeBlock(block);
    EXPECT_THAT(darlink.ledger().back(), testing::StartsWith("misuse: darmem_free"));
    EXPECT_EQ(sim.find<ZantSimFreeContextFn>("ZantSim_freeContext")(context), 0U);
    EXPECT_THAT(sim.ledger().back(), testing::EndsWith("was freed with 1 registered tensors"));
    expectMisuse({
        {"is deregistered", [&] { return provider.memoryDeregister(&second, 1); }},
        {"was never made or is freed", [&] { return reg(fd, 0, first); }},
    });
}

}  // namespace
