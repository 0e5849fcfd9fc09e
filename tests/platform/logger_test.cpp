#include "platform/logger.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/system.h"

namespace zant::log {
namespace {

struct Message {
    std::string format;
    std::string expanded;
    ZantLogLevel level;
    uint64_t timestampNs;
};

std::vector<Message> g_received;
int g_thrown = 0;

void receive(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments) {
    std::array<char, 128> expanded{};
    std::vsnprintf(expanded.data(), expanded.size(), format, arguments);
    g_received.push_back({format, expanded.data(), level, timestampNs});
}

void throwBack(const char*, ZantLogLevel, uint64_t, va_list) {
    ++g_thrown;
    throw std::runtime_error("a host's fault");
}

class LoggerTest : public testing::Test {
protected:
    void SetUp() override {
        dropLogger();
        g_received.clear();
        g_thrown = 0;
    }
    void TearDown() override { dropLogger(); }

    // The state before the first setupLogging.
    static void dropLogger() {
        g_currentLevel.store(0);
        removeLogger(g_logHandle.exchange(0));
    }
};

TEST_F(LoggerTest, MessagesPassUpToTheLoggersLevelAndOnlyTheyEvaluateArguments) {
    int evaluated = 0;
    ZANT_LOG_ERROR("%d", ++evaluated);
    EXPECT_EQ(evaluated, 0) << "no logger yet";
    for (int32_t loggerLevel = 1; loggerLevel <= 5; ++loggerLevel) {
        ASSERT_TRUE(setupLogging(receive, loggerLevel));
        g_received.clear();
        evaluated = 0;
        for (int32_t level = 1; level <= 6; ++level) ZANT_LOG(level, "%d", ++evaluated);
        EXPECT_EQ(evaluated, loggerLevel);
        ASSERT_EQ(g_received.size(), static_cast<size_t>(loggerLevel));
        EXPECT_EQ(g_received.back().level, loggerLevel);
    }
}

TEST_F(LoggerTest, TheCallbackGetsRawFormatArgumentsAndAge) {
    const uint64_t before = system::wallClockNs();
    ASSERT_TRUE(setupLogging(receive, ZANT_LOG_LEVEL_DEBUG));
    for (const uint64_t start = system::wallClockNs(); system::wallClockNs() <= start;) continue;
    ZANT_LOG_WARN("Key: %s, Value: %d\n", "device_id", 7);
    const uint64_t elapsed = system::wallClockNs() - before;

    ASSERT_EQ(g_received.size(), 1U);
    EXPECT_EQ(g_received[0].format, "Key: %s, Value: %d\n");
    EXPECT_EQ(g_received[0].expanded, "Key: device_id, Value: 7\n");
    EXPECT_GT(g_received[0].timestampNs, 0U);
    EXPECT_LE(g_received[0].timestampNs, elapsed);
}

TEST_F(LoggerTest, ALaterSetupReplacesTheLoggerUnlessItIsRefused) {
    ASSERT_TRUE(setupLogging(receive, ZANT_LOG_LEVEL_DEBUG));
    const uint64_t first = g_logHandle;
    EXPECT_FALSE(setupLogging(nullptr, ZANT_LOG_LEVEL_INFO));
    EXPECT_FALSE(setupLogging(throwBack, 0));
    EXPECT_FALSE(setupLogging(throwBack, 6));
    int32_t status = 0;
    EXPECT_EQ(createLogger(throwBack, 6, &status, false, 5), 0U);
    EXPECT_EQ(status, LOG_STATUS_BAD_LEVEL);
    ZANT_LOG_DEBUG("after the refusals");
    const std::shared_ptr<Logger> held = getLogger(first);
    ASSERT_NE(held, nullptr);

    ASSERT_TRUE(setupLogging(throwBack, ZANT_LOG_LEVEL_ERROR));
    EXPECT_EQ(getLogger(first), nullptr);
    EXPECT_NO_THROW(ZANT_LOG_ERROR("to the second"));
    held->log(ZANT_LOG_LEVEL_DEBUG, "", 0, "to the first, which a log site still holds");
    held->log(6, "", 0, "filtered by the first");
    EXPECT_EQ(g_thrown, 1);
    EXPECT_EQ(g_received.size(), 2U);
}

std::atomic<int> g_heard{0};
std::atomic<int> g_wrong{0};

// A callback that knows the level of its setup: no message above that, and none torn, may come to it.
template <int32_t OWN_LEVEL>
void listen(const char* format, ZantLogLevel level, uint64_t, va_list arguments) {
    const int argument = va_arg(arguments, int);
    if (level > OWN_LEVEL || argument != level || std::string(format) != "at level %d") ++g_wrong;
    ++g_heard;
}

TEST_F(LoggerTest, SetupsWhileOthersLogLoseNoLoggerAndMixNoLevels) {
    std::atomic<bool> stop{false};
    std::vector<std::thread> loggers;
    for (int i = 0; i < 3; ++i) {
        loggers.emplace_back([&stop] {
            while (!stop) {
                for (int32_t level = 1; level <= 5; ++level) ZANT_LOG(level, "at level %d", level);
            }
        });
    }
    for (int turn = 0; turn < 200; ++turn) {
        const int before = g_heard;
        EXPECT_TRUE(turn % 2 == 0 ? setupLogging(listen<ZANT_LOG_LEVEL_WARN>, ZANT_LOG_LEVEL_WARN)
                                  : setupLogging(listen<ZANT_LOG_LEVEL_DEBUG>, ZANT_LOG_LEVEL_DEBUG));
        // Past what the old one still hears, so that every setup meets threads in the middle of a message.
        while (g_heard < before + 10) std::this_thread::yield();
    }
    stop = true;
    for (std::thread& logger : loggers) logger.join();
    EXPECT_EQ(g_wrong, 0);
}

}  // namespace
}  // namespace zant::log
