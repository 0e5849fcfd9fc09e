// What a logger without a host's callback writes, and what the user's settings change.
#include "platform/log_sinks.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

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
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
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
    const char* const words[] = {"", " ERROR ", "WARNING", "  INFO ", "VERBOSE", " DEBUG ", "", "UNKNOWN"};
    std::string expected;
    for (int32_t i = 0; i < 8; ++i) {
        toSink(writeToStdout, i == 7 ? 0x7FFFFFFF : i, 1234567890, "%d%%", i);
        char line[64];
        std::snprintf(line, sizeof(line), "  1234.6ms [%-7s] %d%%\n", words[i], i);
        expected += line;
    }
    const std::string longText(2000, 'x');
    toSink(writeToStdout, 1, 1000000, "%s", longText.c_str());
    expected += "     1.0ms [ ERROR ] " + std::string(1023 - 21, 'x') + "\n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), expected);
}

TEST_F(LogSinks, AMessageWithoutATimeIsOfNow) {
    setStdoutEpoch(system::wallClockNs() - 3600'000'000'000U);
    testing::internal::CaptureStdout();
    toSink(writeToStdout, 1, 0, "late");
    const double milliseconds = std::stod(testing::internal::GetCapturedStdout());
    EXPECT_GE(milliseconds, 3600'000.0);
    EXPECT_LT(milliseconds, 7200'000.0);
}

TEST_F(LogSinks, ALoggerWithoutACallbackWritesToStandardOutput) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(levelOf(createLogger(nullptr, 3, nullptr, true, 5)), 3);
    const std::string line = testing::internal::GetCapturedStdout();
    EXPECT_NE(line.find("ms [ ERROR ] text\n"), std::string::npos) << line;
    testing::internal::CaptureStdout();
    toSink(writeToStdout, 1, 0, "since the logger was made");
    EXPECT_LT(std::stod(testing::internal::GetCapturedStdout()), 3600'000.0);
}

TEST_F(LogSinks, TheNamedFileTakesAnyCallbacksPlace) {
    const std::string path = m_folder.path("log");
    settings(file("log"));
    EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, false, 5)), 3);
    EXPECT_EQ(g_received, 1);
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, true, 5)), 3);
    EXPECT_EQ(g_received, 1);
    EXPECT_EQ(contentsOf(path).substr(8), "ms [ ERROR ] text");
    const size_t descriptors = zant::test::openDescriptors();
    EXPECT_EQ(levelOf(createLogger(nullptr, 3, nullptr, true, 5)), 3);
    EXPECT_EQ(contentsOf(path).size(), 50U) << "behind what was there, and nothing between";
    EXPECT_EQ(zant::test::openDescriptors(), descriptors);

    settings(file("second"));
    readRegistrySettings(5);
    const std::string longText(2000, 'x');
    toSink(writeToFile, 4, 0, "%s", longText.c_str());
    EXPECT_EQ(contentsOf(m_folder.path("second")), "     0.0ms [VERBOSE] " + std::string(511 - 21, 'x'));
}

TEST_F(LogSinks, AFileThatDoesNotOpenDropsEveryMessage) {
    settings(file("nowhere/log"));
    EXPECT_EQ(readRegistrySettings(5).sink, nullptr) << "it could not be made";
    EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, true, 5)), 3);
    EXPECT_EQ(g_received, 1);
    settings(file(""));
    EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, true, 5)), 3);
    m_folder.pipe("pipe");
    settings(file("pipe"));
    EXPECT_EQ(levelOf(createLogger(receive, 3, nullptr, true, 5)), 3);
    EXPECT_EQ(g_received, 1);
}

TEST_F(LogSinks, TheFirstDigitIsTheLevel) {
    const auto levelFor = [this](const std::string& text, int32_t maxLevel) {
        settings(R"("log_level":")" + text + '"');
        return levelOf(createLogger(receive, 2, nullptr, true, maxLevel));
    };
    EXPECT_EQ(levelFor("4", 5), 4);
    EXPECT_EQ(levelFor("31 or so", 5), 3);
    EXPECT_EQ(levelFor("4", 4), 4);
    for (const char* text : {"9", "6", "0", "abc", "", " 4", "-1"}) EXPECT_EQ(levelFor(text, 9), 2) << text;
    EXPECT_EQ(levelFor("4", 3), 2);
    int32_t status = 0;
    settings(R"("log_level":"3")");
    EXPECT_EQ(createLogger(receive, 6, &status, true, 5), 0U);
    EXPECT_EQ(status, LOG_STATUS_BAD_LEVEL) << "of the argument";
}

}  // namespace
}  // namespace zant::log
