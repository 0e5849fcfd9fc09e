// Binding to a backend that is a real shared library, and the one direct call into it.
#include <gmock/gmock.h>

#include "support/loaded.h"

namespace {

using namespace testing_support;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char MISMATCH[] =
    "Backend version mismatch. Please use version of backend that matchescurrent backend API Definition version.";
constexpr char ENABLED[] = R"({"devices":[{"device_id":0},{"enable_kor_extension":true,)"
                           R"("consolidate_kor_extension":true},{"enable_kor_extension":true}]})";

TEST(Binding, ByHandleAndByEntrySkipTheDecoy) {
    const Sim sim;
    const Extension extension;
    EXPECT_TRUE(extension->bindBackendLibrary(sim.handle()));
    EXPECT_TRUE(extension->bindInterfaceProviders(sim.getProviders()));
    EXPECT_THAT(sim.ledger(), ElementsAre("getProviders() -> 0", "getApiVersion(backend 5.51.0) -> 0",
                                          "getProviders() -> 0", "getApiVersion(backend 5.51.0) -> 0"));
    EXPECT_THAT(Extension::errors(), IsEmpty());
}

struct VersionCase {
    uint32_t major;
    uint32_t minor;
    bool accepted;
};

class BindingVersion : public testing::TestWithParam<VersionCase> {};

TEST_P(BindingVersion, IsGated) {
    const Sim sim;
    const Extension extension;
    sim.setVersion(GetParam().major, GetParam().minor);
    EXPECT_EQ(extension->bindBackendLibrary(sim.handle()), GetParam().accepted);
    if (GetParam().accepted) {
        EXPECT_THAT(Extension::errors(), IsEmpty());
    } else {
        EXPECT_THAT(Extension::errors(), ElementsAre(MISMATCH));
    }
}

INSTANTIATE_TEST_SUITE_P(Versions, BindingVersion,
                         testing::Values(VersionCase{5, 50, false}, VersionCase{5, 51, true}, VersionCase{5, 200, true},
                                         VersionCase{6, 0, false}, VersionCase{6, 51, false},
                                         VersionCase{4, 99, false}),
                         [](const auto& tested) {
                             return std::to_string(tested.param.major) + "_" + std::to_string(tested.param.minor);
                         });

TEST(Binding, TakesTheFirstOfSeveralProviders) {
    const Sim sim;
    const Extension extension;
    sim.setProviders({9, 6, 6});
    EXPECT_TRUE(extension->bindBackendLibrary(sim.handle()));
    EXPECT_EQ(sim.ledger().back(), "getApiVersion(backend 5.51.0) -> 0");  // another one's would begin "provider 2: "
}

TEST(Binding, WithoutAProviderKeepsTheEarlierOne) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->loadConfig(ENABLED));
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    sim.setProviders({1, 2, 3});
    EXPECT_FALSE(extension->bindBackendLibrary(sim.handle()));
    sim.setProviders({});
    EXPECT_FALSE(extension->bindBackendLibrary(sim.handle()));
    EXPECT_THAT(Extension::errors(),
                ElementsAre("Unable to find KOR interface provider.", "Unable to find KOR interface provider."));
    int device = 0;
    EXPECT_TRUE(extension->enableKorExtension(&device));
}

TEST(Binding, NamesWhatIsMissing) {
    const Sim sim;
    const Extension extension;
    EXPECT_FALSE(extension->bindBackendLibrary(nullptr));
    EXPECT_FALSE(extension->bindInterfaceProviders(nullptr));
    const Library notABackend(EXTENSIONS_LIBRARY);
    EXPECT_FALSE(extension->bindBackendLibrary(notABackend.handle()));
    EXPECT_THAT(Extension::errors(), ElementsAre("backend handle is nullptr", "getProviders function is nullptr",
                                                 HasSubstr("Unable to find symbols. dlerror(): ")));
}

TEST(EnableKorExtension, SendsTheChainOfTheFirstDeviceThatAsks) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(ENABLED));
    void* device = nullptr;
    ASSERT_EQ(sim.find<ZantSimCreateDeviceFn>("ZantSim_createDevice")(nullptr, 0, &device), 0U);
    EXPECT_TRUE(extension->enableKorExtension(device));
    EXPECT_THAT(sim.ledger().back(),
                testing::AllOf(testing::StartsWith("deviceSetConfig(device "),
                               testing::EndsWith(", custom[option 0 record 0x7fff0000 switch 1: enableKorExtension=1 "
                                                 "consolidateKorExtension=1]) -> 0")));
}

TEST(EnableKorExtension, ReportsTheBackendsStatus) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(ENABLED));
    sim.failNthCall("deviceSetConfig", 2, 0x2af9);
    int device = 0;
    EXPECT_TRUE(extension->enableKorExtension(&device));
    EXPECT_FALSE(extension->enableKorExtension(&device));
    EXPECT_TRUE(extension->enableKorExtension(&device));
    EXPECT_THAT(Extension::errors(), ElementsAre("ZantDevice_setConfig(enableKorExtension) failed: 0x2af9"));
}

TEST(EnableKorExtension, NeitherCallsNorLogsWhenNoDeviceAsks) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(R"({"devices":[{"consolidate_kor_extension":true}]})"));
    const size_t before = sim.ledger().size();
    int device = 0;
    EXPECT_FALSE(extension->enableKorExtension(&device));
    EXPECT_EQ(sim.ledger().size(), before);
    EXPECT_THAT(Extension::errors(), IsEmpty());
}

}  // namespace
