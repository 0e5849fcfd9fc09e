#include "platform/log_sinks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <utility>

#include "platform/driver_directory.h"
#include "platform/mutex.h"
#include "platform/system.h"

namespace zant::log {

namespace {

constexpr const char* SETTINGS_KEY = "Software\\Corvane\\ZELMAR\\log";
constexpr int32_t LEVEL_UNKNOWN = 0x7FFFFFFF;
constexpr double NS_PER_MS = 1e6;

struct LevelWord {
    int32_t level;
    const char* word;
};

constexpr LevelWord LEVEL_WORDS[] = {
    {ZANT_LOG_LEVEL_ERROR, " ERROR "},   {ZANT_LOG_LEVEL_WARN, "WARNING"},  {ZANT_LOG_LEVEL_INFO, "  INFO "},
    {ZANT_LOG_LEVEL_VERBOSE, "VERBOSE"}, {ZANT_LOG_LEVEL_DEBUG, " DEBUG "}, {LEVEL_UNKNOWN, "UNKNOWN"},
};

const char* wordOf(int32_t level) {
    for (const LevelWord& row : LEVEL_WORDS) {
        if (row.level == level) return row.word;
    }
    return "";
}

// Prefix and message, cut to the buffer; the length that they would have, a failure of the message counting as -1.
template <size_t Capacity>
int64_t formatLine(std::array<char, Capacity>& buffer, const char* format, ZantLogLevel level, uint64_t timestampNs,
                   va_list arguments) {
    const double milliseconds = static_cast<double>(timestampNs) / NS_PER_MS;
    const int prefix = std::snprintf(buffer.data(), Capacity, "%8.1fms [%-7s] ", milliseconds, wordOf(level));
    const auto used = std::min(static_cast<size_t>(std::max(prefix, 0)), Capacity - 1);
    return int64_t{prefix} + std::max(std::vsnprintf(buffer.data() + used, Capacity - used, format, arguments), -1);
}

class LogFile {
public:
    LogFile() = default;
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    // Without the lock: where a process ends, a thread that held it may be gone.
    ~LogFile() { close(m_descriptor); }

    void replace(int descriptor) noexcept EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        close(std::exchange(m_descriptor, descriptor));
    }
    void write(const char* text, size_t size) noexcept EXCLUDES(m_mutex) {
        MutexLock lock(m_mutex);
        if (m_descriptor >= 0) system::writeAll(m_descriptor, text, size);
    }

private:
    static void close(int descriptor) noexcept {
        char error[system::ERROR_TEXT_CAPACITY];
        if (descriptor >= 0) system::closeDescriptor(descriptor, error);
    }

    Mutex m_mutex;  // held across a write, so that entries do not interleave
    int m_descriptor GUARDED_BY(m_mutex) = -1;
};

LogFile g_logFile;
std::atomic<uint64_t> g_stdoutEpoch{0};

// Opens the file that the settings name. False when they name none that could be made.
bool openNamedFile() noexcept {
    const system::RegistryString location = system::readRegistryString(SETTINGS_KEY, "output_location");
    if (location.status != system::REGISTRY_OK || !system::ensureFile(location.text)) return false;
    g_logFile.replace(system::openForAppend(location.text));
    return true;
}

}  // namespace

void writeToStdout(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments) {
    if (timestampNs == 0) timestampNs = system::wallClockNs() - g_stdoutEpoch.load(std::memory_order_relaxed);
    std::array<char, 1024> line{};
    formatLine(line, format, level, timestampNs, arguments);
    std::printf("%s\n", line.data());
    system::writeTraceEvent(line.data());
}

void setStdoutEpoch(uint64_t epochNs) noexcept {
    g_stdoutEpoch.store(epochNs, std::memory_order_relaxed);
}

void writeToFile(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments) {
    std::array<char, 512> line{};
    const int64_t length = formatLine(line, format, level, timestampNs, arguments);
    if (length > 0) g_logFile.write(line.data(), std::min<size_t>(static_cast<size_t>(length), line.size() - 1));
}

RegistrySettings readRegistrySettings(int32_t maxLevel) noexcept {
    RegistrySettings settings;
    if (openNamedFile()) settings.sink = writeToFile;
    const system::RegistryString level = system::readRegistryString(SETTINGS_KEY, "log_level");
    if (level.status != system::REGISTRY_OK) return settings;
    // The first digit is the level, whatever follows.
    const int32_t digit = static_cast<unsigned char>(level.text[0]) - '0';
    if (digit >= ZANT_LOG_LEVEL_ERROR && digit <= std::min<int32_t>(ZANT_LOG_LEVEL_DEBUG, maxLevel)) {
        settings.level = digit;
    }
    return settings;
}

}  // namespace zant::log
