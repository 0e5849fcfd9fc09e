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

void setProviders(const Sim& sim, const std::vector<uint32_t>& ids) {
    sim.find<ZantSimSetProvidersFn>("ZantSim_setProviders")(ids.data(), ids.size());
}

TEST(Binding, ByHandleAndByEntryTakesTheFirstProviderOfItsOwn) {
    const Sim sim;
    const Extension extension;
    EXPECT_TRUE(extension->bindBackendLibrary(sim.handle()));
    setProviders(sim, {9, 6, 6});
    EXPECT_TRUE(extension->bindInterfaceProviders(sim.getProviders()));
    // Another provider's line would begin with its number.
    EXPECT_THAT(sim.ledger(), ElementsAre("getProviders() -> 0", "getApiVersion(backend 5.51.0) -> 0",
                                          "getProviders() -> 0", "getApiVersion(backend 5.51.0) -> 0"));
    EXPECT_THAT(Extension::errors(), IsEmpty());
}

TEST(Binding, IsGatedByTheVersion) {
    const Sim sim;
    const Extension extension;
    const auto binds = [&](uint32_t major, uint32_t minor) {
        sim.find<ZantSimSetApiVersionFn>("ZantSim_setApiVersion")(major, minor, 0);
        return extension->bindBackendLibrary(sim.handle());
    };
    EXPECT_TRUE(binds(5, 200));
    EXPECT_THAT(Extension::errors(), IsEmpty());
    EXPECT_FALSE(binds(5, 50));
    EXPECT_FALSE(binds(6, 51));
    EXPECT_FALSE(binds(4, 99));
    EXPECT_THAT(Extension::errors(), ElementsAre(MISMATCH, MISMATCH, MISMATCH));
}

TEST(Binding, WithoutAProviderKeepsTheEarlierOne) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->loadConfig(ENABLED));
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    setProviders(sim, {1, 2, 3});
    EXPECT_FALSE(extension->bindBackendLibrary(sim.handle()));
    setProviders(sim, {});
    EXPECT_FALSE(extension->bindBackendLibrary(sim.handle()));
    EXPECT_THAT(Extension::errors(),
                ElementsAre("Unable to find KOR interface provider.", "Unable to find KOR interface provider."));
    int device = 0;
    EXPECT_TRUE(extension->enableKorExtension(&device));
}

TEST(Binding, NamesWhatIsMissing) {
    const Extension extension;
    EXPECT_FALSE(extension->bindBackendLibrary(nullptr));
    EXPECT_FALSE(extension->bindInterfaceProviders(nullptr));
    const Library notABackend(EXTENSIONS_LIBRARY);
    EXPECT_FALSE(extension->bindBackendLibrary(notABackend.handle()));
    EXPECT_THAT(Extension::errors(), ElementsAre("backend handle is nullptr", "getProviders function is nullptr",
                                                 HasSubstr("Unable to find symbols. dlerror(): ")));
}

TEST(EnableKorExtension, SendsTheChainOfTheFirstDeviceThatAsksAndReportsTheStatus) {
    const Sim sim;
    const Extension extension;
    ASSERT_TRUE(extension->bindBackendLibrary(sim.handle()));
    ASSERT_TRUE(extension->loadConfig(R"({"devices":[{"consolidate_kor_extension":true}]})"));
    const size_t before = sim.ledger().size();
    EXPECT_FALSE(extension->enableKorExtension(nullptr));
    EXPECT_EQ(sim.ledger().size(), before);
    EXPECT_THAT(Extension::errors(), IsEmpty());

    ASSERT_TRUE(extension->loadConfig(ENABLED));
    void* device = nullptr;
    ASSERT_EQ(sim.find<ZantSimCreateDeviceFn>("ZantSim_createDevice")(nullptr, 0, &device), 0U);
    EXPECT_TRUE(extension->enableKorExtension(device));
    EXPECT_THAT(sim.ledger().back(),
                testing::AllOf(testing::StartsWith("deviceSetConfig(device "),
                               testing::EndsWith(", custom[option 0 record 0x7fff0000 switch 1: enableKorExtension=1 "
                                                 "consolidateKorExtension=1]) -> 0")));
    sim.failNthCall("deviceSetConfig", 1, 0x2af9);
    EXPECT_FALSE(extension->enableKorExtension(device));
    EXPECT_THAT(Extension::errors(), ElementsAre("ZantDevice_setConfig(enableKorExtension) failed: 0x2af9"));
}

}  // namespace
