#include "platform/logger.h"

#include <new>
#include <string>
#include <unordered_map>
#include <utility>

#include "platform/log_sinks.h"
#include "platform/mutex.h"
#include "platform/system.h"

namespace zant::log {

namespace {

// Handles are opaque: nothing computes the address back from one.
constexpr uint64_t LOG_HANDLE_MASK = 0x5A17C3E96B20F48DULL;

constexpr int32_t MIN_LEVEL = ZANT_LOG_LEVEL_ERROR;
constexpr int32_t MAX_LEVEL = ZANT_LOG_LEVEL_DEBUG;

bool isLevel(int32_t level) {
    return level >= MIN_LEVEL && level <= MAX_LEVEL;
}

uint64_t reverseBytes(uint64_t value) {
    uint64_t reversed = 0;
    for (int i = 0; i < 8; ++i) {
        reversed = (reversed << 8U) | (value & 0xFFU);
        value >>= 8U;
    }
    return reversed;
}

uint64_t handleOf(const Logger* logger) {
    return reverseBytes(static_cast<uint64_t>(reinterpret_cast<uintptr_t>(logger))) ^ LOG_HANDLE_MASK;
}

class LoggerTable {
public:
    LoggerTable() = default;
    LoggerTable(const LoggerTable&) = delete;
    LoggerTable& operator=(const LoggerTable&) = delete;
    // A host may destroy its backend when this library's statics are gone: no log site may look in here then.
    ~LoggerTable() { g_currentLevel.store(0); }

    void add(uint64_t handle, std::shared_ptr<Logger> logger) EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        m_loggers.insert_or_assign(handle, std::move(logger));
    }
    std::shared_ptr<Logger> find(uint64_t handle) EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        const auto found = m_loggers.find(handle);
        return found == m_loggers.end() ? nullptr : found->second;
    }
    void remove(uint64_t handle) EXCLUDES(m_mutex) {
        std::shared_ptr<Logger> removed;  // freed with the lock released
        MutexLock lock(m_mutex);
        const auto found = m_loggers.find(handle);
        if (found == m_loggers.end()) return;
        removed = std::move(found->second);
        m_loggers.erase(found);
    }

private:
    Mutex m_mutex;  // never held across a callback
    std::unordered_map<uint64_t, std::shared_ptr<Logger>> m_loggers GUARDED_BY(m_mutex);
};

LoggerTable g_loggers;

std::shared_ptr<Logger> makeLogger(LogCallback callback, int32_t level, bool readRegistry, int32_t maxLevel) {
    const uint64_t now = system::wallClockNs();
    std::shared_ptr<Logger> logger;
    try {
        logger = std::make_shared<Logger>(callback != nullptr ? callback : writeToStdout, level, now);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    if (callback == nullptr) setStdoutEpoch(now);
    if (readRegistry) {
        const RegistrySettings settings = readRegistrySettings(maxLevel);
        logger->adopt(settings.sink, settings.level.value_or(level));
    }
    return logger;
}

}  // namespace

std::atomic<uint64_t> g_logHandle{0};
std::atomic<int32_t> g_currentLevel{0};

void Logger::log(int32_t level, const char*, int32_t, const char* format, ...) noexcept {
    va_list arguments;
    va_start(arguments, format);
    logArguments(level, format, arguments);
    va_end(arguments);
}

void Logger::logArguments(int32_t level, const char* format, va_list arguments) noexcept {
    if (level > this->level()) return;
    const uint64_t timestamp = system::wallClockNs() - m_epoch;
    std::string copy;
    const char* text = format;
    try {
        // The text lives for the call only; a host that keeps the pointer is shown so in its own tests.
        copy = format;
        text = copy.c_str();
    } catch (...) {
        // A shortage of memory is what the host most needs to hear of: it gets the caller's own text.
    }
    try {
        m_callback(text, static_cast<ZantLogLevel>(level), timestamp, arguments);
    } catch (...) {
        // No callback's fault may fail the hook that logs.
    }
}

uint64_t createLogger(LogCallback callback, int32_t level, int32_t* status, bool readRegistry, int32_t maxLevel) {
    std::shared_ptr<Logger> logger = makeLogger(callback, level, readRegistry, maxLevel);
    if (logger != nullptr && status != nullptr) *status = isLevel(level) ? 0 : LOG_STATUS_BAD_LEVEL;
    if (status != nullptr && *status != 0) return 0;
    if (logger == nullptr) return LOG_HANDLE_MASK;
    const uint64_t handle = handleOf(logger.get());
    try {
        g_loggers.add(handle, std::move(logger));
    } catch (const std::bad_alloc&) {
        return LOG_HANDLE_MASK;
    }
    return handle;
}

std::shared_ptr<Logger> getLogger(uint64_t handle) noexcept {
    return g_loggers.find(handle);
}

void removeLogger(uint64_t handle) {
    g_loggers.remove(handle);
}

bool setupLogging(LogCallback callback, int32_t level) {
    if (callback == nullptr || !isLevel(level)) return false;
    if (const uint64_t old = g_logHandle.load(std::memory_order_relaxed); old != 0) {
        g_currentLevel.store(0, std::memory_order_relaxed);
        removeLogger(old);
    }
    int32_t status = 0;
    const uint64_t handle = createLogger(callback, level, &status, false, MAX_LEVEL);
    g_logHandle.store(handle, std::memory_order_relaxed);
    const std::shared_ptr<Logger> logger = getLogger(handle);
    g_currentLevel.store(logger != nullptr ? logger->level() : 0, std::memory_order_relaxed);
    return status == 0;
}

void write(int32_t level, const char* format, ...) noexcept {
    const std::shared_ptr<Logger> logger = getLogger(g_logHandle.load(std::memory_order_relaxed));
    if (logger == nullptr || logger->level() < level) return;
    va_list arguments;
    va_start(arguments, format);
    logger->logArguments(level, format, arguments);
    va_end(arguments);
}

}  // namespace zant::log
