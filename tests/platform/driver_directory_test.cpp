// Where the RPC client library is looked for, on machines with other services and registries.
#include <gtest/gtest.h>

#include "platform/driver_directory.h"
#include "platform/system.h"
#include "support/environment.h"
#include "support/machine.h"

namespace zant::test {
namespace {

class DriverDirectory : public testing::Test {
protected:
    void SetUp() override {
        if (!m_machine.become("{}")) GTEST_SKIP() << "services and registry may not be changed here";
    }
    void machine(const std::string& services, const std::string& registry = "{}") {
        EXPECT_TRUE(m_machine.become(R"({"services":{)" + services + R"(},"registry":)" + registry + "}"));
    }
    static std::string service(const std::string& name, const std::string& path) {
        return "\"" + name + R"(":{"binaryPathName":")" + path + "\"}";
    }
    static std::string korDriver(const std::string& info) {
        return R"({"HKLM":{"SYSTEM\\CurrentControlSet\\Services\\cvkordrv\\Enum":{"0":"PCI\\VEN_1\\7"},)"
               R"("SYSTEM\\CurrentControlSet\\Enum\\PCI\\VEN_1\\7\\Device Parameters\\KORM\\INFO":)"
               R"({"DarlinkEnabledDSPInfo":)" +
               info + "}}}";
    }

    Machine m_machine;
    const ScopedVariable m_windows{"windir", "C:\\Wind\xC3\xB6ws"};
};

TEST_F(DriverDirectory, OfAServiceBeginsWithTheSystemsRoot) {
    machine(service("a", R"(\\SystemRoot\\System32\\drivers\\a.sys)") + "," + service("b", R"(C:\\b\\b.sys)") + "," +
            service("c", R"(\\SystemRoot)") + "," + service("d", R"(\\systemroot\\d.sys)"));
    EXPECT_EQ(system::getServiceDirectory(L"a"), "C:\\Wind\xC3\xB6ws\\System32\\drivers");
    for (const wchar_t* name : {L"b", L"c", L"d", L"none"}) EXPECT_EQ(system::getServiceDirectory(name), "");
    const ScopedVariable none("windir", nullptr);
    EXPECT_EQ(system::getServiceDirectory(L"a"), "");
}

// fault: the byte tested as a mask, a value of another size or type taken for it.
TEST_F(DriverDirectory, IsTheNpuDriversWhenItCarriesTheFramework) {
    const std::string both =
        service("cvkordrv", R"(\\SystemRoot\\npu\\k.sys)") + "," + service("cvdarlink", R"(\\SystemRoot\\rpc\\d.sys)");
    const std::string rpc = "C:\\Wind\xC3\xB6ws\\rpc";
    machine(both, korDriver("[8]"));
    EXPECT_EQ(system::findDriverDirectory(), "C:\\Wind\xC3\xB6ws\\npu");
    for (const char* info : {"[9]", "[8,0]", "\"8\"", "8"}) {
        machine(both, korDriver(info));
        EXPECT_EQ(system::findDriverDirectory(), rpc) << info;
    }
}

// fault: a value without its end is read on behind it, or one that is too long is cut.
TEST_F(DriverDirectory, RegistryStringsEnd) {
    const std::string fits(255, 'x');
    machine("", R"({"HKCU":{"Software\\K":{"v":"text","raw":[97,98],"fits":")" + fits + R"(","long":")" + fits +
                    R"(y"}}})");
    EXPECT_STREQ(system::readRegistryString("Software\\K", "v").text, "text");
    EXPECT_STREQ(system::readRegistryString("software\\k", "RAW").text, "ab");
    EXPECT_EQ(system::readRegistryString("Software\\K", "fits").text, fits);
    const system::RegistryString tooLong = system::readRegistryString("Software\\K", "long");
    EXPECT_EQ(tooLong.status, 234U);
    EXPECT_STREQ(tooLong.text, "Failed to query registry value.");
    EXPECT_EQ(system::readRegistryString("Software\\K", "none").status, 2U);
    m_machine.become(std::string(100000, '['));
    EXPECT_EQ(system::readRegistryString("Software\\K", "v").status, 2U);
}

}  // namespace
}  // namespace zant::test
