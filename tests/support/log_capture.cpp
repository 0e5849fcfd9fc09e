#include "support/log_capture.h"

#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "platform/logger.h"

namespace zant::test {

namespace {

std::mutex g_mutex;
std::vector<LogLine> g_lines;

std::string expand(const char* format, va_list arguments) {
    va_list copy;
    va_copy(copy, arguments);
    std::string text(static_cast<size_t>(std::vsnprintf(nullptr, 0, format, copy)), '\0');
    va_end(copy);
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}

void collect(const char* format, ZantLogLevel level, uint64_t, va_list arguments) {
    LogLine line{level, format, expand(format, arguments)};
    const std::lock_guard lock(g_mutex);
    g_lines.push_back(std::move(line));
}

std::vector<std::string> textsOf(const std::vector<LogLine>& lines) {
    std::vector<std::string> texts;
    for (const LogLine& line : lines) texts.push_back(std::to_string(line.level) + " " + line.text);
    return texts;
}

}  // namespace

LogCapture::LogCapture(ZantLogLevel maxLevel) {
    take();
    if (!log::setupLogging(collect, maxLevel)) throw std::runtime_error("the logger was refused");
}

LogCapture::~LogCapture() {
    log::g_currentLevel = 0;
    log::removeLogger(log::g_logHandle.exchange(0));
}

std::vector<LogLine> LogCapture::lines() const {
    const std::lock_guard lock(g_mutex);
    return g_lines;
}

std::vector<LogLine> LogCapture::take() {
    const std::lock_guard lock(g_mutex);
    return std::exchange(g_lines, {});
}

std::vector<std::string> LogCapture::texts() const {
    return textsOf(lines());
}

std::vector<std::string> LogCapture::takeTexts() {
    return textsOf(take());
}

}  // namespace zant::test
