// The library's one logger: what passes its level goes to the host's callback as raw format and arguments.
//
// Any thread may log. Logging never fails its caller: it throws nothing and reports nothing.
#pragma once

#include <atomic>
#include <cstdarg>
#include <cstdint>
#include <memory>

#include "zelmar_kor/backend_extensions.h"

#if defined(__MINGW32__) && !defined(__clang__)
#define ZANT_PRINTF_FORMAT(formatAt, firstAt) __attribute__((format(gnu_printf, formatAt, firstAt)))
#elif defined(__GNUC__)
#define ZANT_PRINTF_FORMAT(formatAt, firstAt) __attribute__((format(printf, formatAt, firstAt)))
#else
#define ZANT_PRINTF_FORMAT(formatAt, firstAt)
#endif

namespace zant::log {

using LogCallback = ZantLogCallback;

// What createLogger reports for a level outside 1 to 5.
constexpr int32_t LOG_STATUS_BAD_LEVEL = 11003;

class Logger {
public:
    Logger(LogCallback callback, int32_t level, uint64_t epochNs) noexcept
        : m_callback(callback), m_level(level), m_epoch(epochNs) {}

    // file and line are accepted and used by nothing.
    void log(int32_t level, const char* file, int32_t line, const char* format, ...) noexcept ZANT_PRINTF_FORMAT(5, 6);
    void logArguments(int32_t level, const char* format, va_list arguments) noexcept;

    // While the logger is being built: another level, and another sink unless it is null.
    void adopt(LogCallback sink, int32_t level) noexcept {
        if (sink != nullptr) m_callback = sink;
        m_level.store(level, std::memory_order_seq_cst);
    }

    int32_t level() const noexcept { return m_level.load(std::memory_order_seq_cst); }

private:
    LogCallback m_callback;  // never null
    std::atomic<int32_t> m_level;
    uint64_t m_epoch;  // wall clock at creation, nanoseconds since 1970
};

// Makes a logger and registers it. Returns its handle; the level is checked only when status is given:
// *status becomes 0, or LOG_STATUS_BAD_LEVEL with nothing registered and 0 returned. When memory is short the handle
// returned finds nothing and *status stays as it was. Without a callback messages go to the standard output. With
// readRegistry the user's settings come last: the file that they name takes the place of any callback, and a level from
// 1 to maxLevel that of level.
uint64_t createLogger(LogCallback callback, int32_t level, int32_t* status, bool readRegistry, int32_t maxLevel);

// A shared reference keeps the logger alive across a setupLogging on another thread; empty for an unknown handle.
std::shared_ptr<Logger> getLogger(uint64_t handle) noexcept;

// Takes the handle's logger out of the table; it lives on as long as a log site holds it.
void removeLogger(uint64_t handle);

// The hook's body: replaces the library's logger. False, with the old one in place, for a null callback or a level
// outside 1 to 5.
bool setupLogging(LogCallback callback, int32_t level);

// The library's one handle, 0 before the first setupLogging.
extern std::atomic<uint64_t> g_logHandle;

// The level of the logger behind g_logHandle, 0 while there is none. Kept beside the table of loggers so that a
// filtered message costs one load.
extern std::atomic<int32_t> g_currentLevel;

inline bool passes(int32_t level) noexcept {
    return level <= g_currentLevel.load(std::memory_order_relaxed);
}

// The road of a message that passed: look the logger up, test its level again, hand the message over.
void write(int32_t level, const char* format, ...) noexcept ZANT_PRINTF_FORMAT(2, 3);

}  // namespace zant::log

// A log site. Arguments are evaluated only when the message passes, and are cast at the site to the type that their
// conversion names on every platform.
#define ZANT_LOG(level, ...)                                                    \
    do {                                                                        \
        if (::zant::log::passes(level)) ::zant::log::write(level, __VA_ARGS__); \
    } while (false)
#define ZANT_LOG_ERROR(...) ZANT_LOG(ZANT_LOG_LEVEL_ERROR, __VA_ARGS__)
#define ZANT_LOG_WARN(...) ZANT_LOG(ZANT_LOG_LEVEL_WARN, __VA_ARGS__)
#define ZANT_LOG_INFO(...) ZANT_LOG(ZANT_LOG_LEVEL_INFO, __VA_ARGS__)
#define ZANT_LOG_VERBOSE(...) ZANT_LOG(ZANT_LOG_LEVEL_VERBOSE, __VA_ARGS__)
#define ZANT_LOG_DEBUG(...) ZANT_LOG(ZANT_LOG_LEVEL_DEBUG, __VA_ARGS__)
