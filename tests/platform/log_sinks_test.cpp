// What a logger without a host's callback writes, and what the user's settings change.
#include "platform/log_sinks.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/system.h"
#include "support/machine.h"
#include "support/scratch_folder.h"

namespace zant::log {
namespace {

using zant::test::ScratchFolder;

void toSink(LogCallback sink, int32_t level, uint64_t timestampNs, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    sink(format, static_cast<ZantLogLevel>(level), timestampNs, arguments);
    va_end(arguments);
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

int g_received = 0;
void receive(const char*, ZantLogLevel, uint64_t, va_list) {
    ++g_received;
}

class LogSinks : public testing::Test {
protected:
    void SetUp() override {
        g_received = 0;
        if (!m_machine.become("{}")) GTEST_SKIP() << "the registry may not be changed here";
    }
    // Leaves no log file of this test behind.
    void TearDown() override {
        settings(R"("output_location":")" + m_folder.path("") + '"');
        readRegistrySettings(5);
    }
    void settings(const std::string& values) {
        m_machine.become(R"({"registry":{"HKCU":{"Software\\Corvane\\ZELMAR\\log":{)" + values + "}}}}");
    }
    std::string file(const std::string& name) { return R"("output_location":")" + m_folder.path(name) + '"'; }
    // A logger's level, and where its message goes.
    static int32_t levelOf(uint64_t handle) {
        const std::shared_ptr<Logger> logger = getLogger(handle);
        if (logger == nullptr) return -1;
        logger->log(ZANT_LOG_LEVEL_ERROR, "", 0, "%s", "text");
        removeLogger(handle);
        return logger->level();
    }

    const ScratchFolder m_folder;
    zant::test::Machine m_machine;
};

TEST_F(LogSinks, StandardOutputHasALineForEachMessage) {
    testing::internal::CaptureStdout();
    toSink(writeToStdout, 3, 1234567890, "%d%%", 7);
    toSink(writeToStdout, 6, 1000000, "no word");
    toSink(writeToStdout, 0x7FFFFFFF, 1000000, "%2000s", "");
    const std::string cut = "     1.0ms [UNKNOWN] " + std::string(1023 - 21, ' ') + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "  1234.6ms [  INFO ] 7%\n     1.0ms [       ] no word\n" + cut);
}

TEST_F(LogSinks, ALoggerWithoutACallbackWritesToStandardOutputTheTimeSinceItWasMade) {
    setStdoutEpoch(system::wallClockNs() - 3600'000'000'000U);
    testing::internal::CaptureStdout();
    toSink(writeToStdout, 1, 0, "long before");
    EXPECT_EQ(levelOf(createLogger(nullptr, 3, nullptr, true, 5)), 3);
    toSink(writeToStdout, 1, 0, "now");
    const std::string lines = testing::internal::GetCapturedStdout();
    const size_t second = lines.find("ms [ ERROR ] text\n");
    ASSERT_NE(second, std::string::npos) << lines;
    EXPECT_GE(std::stod(lines), 3600'000.0);
    EXPECT_LT(std::stod(lines.substr(lines.find('\n', second))), 3600'000.0);
}

TEST_F(LogSinks, TheNamedFileTakesAnyCallbacksPlace) {
    const std::string path = m_folder.path("log");
    settings(file("log"));
    for (const bool readRegistry : {false, true}) {
        EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, readRegistry, 5)), 3);
        EXPECT_EQ(g_received, 1);
        EXPECT_EQ(std::filesystem::exists(path), readRegistry);
    }
    EXPECT_EQ(contentsOf(path).substr(8), "ms [ ERROR ] text");
    const size_t descriptors = zant::test::openDescriptors();
    EXPECT_EQ(levelOf(createLogger(nullptr, 3, nullptr, true, 5)), 3);
    EXPECT_EQ(contentsOf(path).size(), 50U) << "behind what was there, and nothing between";
    EXPECT_EQ(zant::test::openDescriptors(), descriptors);

    settings(file("second"));
    readRegistrySettings(5);
    toSink(writeToFile, 4, 0, "%2000s", "");
    EXPECT_EQ(contentsOf(m_folder.path("second")), "     0.0ms [VERBOSE] " + std::string(511 - 21, ' '));
}

TEST_F(LogSinks, AFileThatDoesNotOpenDropsEveryMessage) {
    m_folder.pipe("pipe");
    for (const char* name : {"nowhere/log", "", "pipe"}) {  // the first can not be made: the callback stays
        settings(file(name));
        EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, true, 5)), 3);
        EXPECT_EQ(g_received, 1) << name;
    }
}

TEST_F(LogSinks, TheFirstDigitIsTheLevel) {
    const auto levelFor = [this](const std::string& text, int32_t maxLevel) {
        settings(R"("log_level":")" + text + '"');
        return levelOf(createLogger(receive, 2, nullptr, true, maxLevel));
    };
    EXPECT_EQ(levelFor("31 or so", 5), 3);
    EXPECT_EQ(levelFor("4", 4), 4);
    EXPECT_EQ(levelFor("4", 3), 2);
    for (const char* text : {"6", "0", "", " 4"}) EXPECT_EQ(levelFor(text, 9), 2) << text;
}

}  // namespace
}  // namespace zant::log
