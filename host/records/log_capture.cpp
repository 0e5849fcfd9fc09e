#include "records/log_capture.h"

#include <cstdio>
#include <mutex>
#include <utility>

namespace runhost {

namespace {

std::mutex g_mutex;
std::vector<LogLine> g_lines;

std::string expand(const char* format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    // Where several files are read in one go, the analyzer loses sight of va_copy.
    const int length = std::vsnprintf(nullptr, 0, format, again);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(again);
    if (length < 0) return format;
    std::string text(static_cast<size_t>(length) + 1, '\0');
    if (std::vsnprintf(text.data(), text.size(), format, arguments) < 0) return format;
    text.pop_back();
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}

}  // namespace

void captureLog(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments) {
    LogLine line{level, timestampNs, expand(format, arguments)};
    const std::lock_guard<std::mutex> lock(g_mutex);
    g_lines.push_back(std::move(line));
}

std::vector<LogLine> takeLog() {
    const std::lock_guard<std::mutex> lock(g_mutex);
    return std::exchange(g_lines, {});
}

const char* levelName(int32_t level) {
    constexpr const char* names[] = {"error", "warning", "info", "verbose", "debug"};
    return level >= ZANT_LOG_LEVEL_ERROR && level <= ZANT_LOG_LEVEL_DEBUG ? names[level - 1] : "unknown";
}

}  // namespace runhost
