// The logger's own sinks, for a logger that is made without a host's callback, and what the user's registry says of
// logging.
#pragma once

#include <cstdarg>
#include <cstdint>
#include <optional>

#include "platform/logger.h"

namespace zant::log {

// "   123.4ms [WARNING] " in front of the message, a line end behind it; 1023 characters at most before that. A
// timestamp of 0 means now. What tracing the system has gets the line too.
void writeToStdout(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments);
// What a timestamp of 0 is counted from, nanoseconds since 1970.
void setStdoutEpoch(uint64_t epochNs) noexcept;

// The same prefix, and nothing behind the message: 511 bytes at most, which other writers do not tear apart. Without
// an open log file the message is dropped.
void writeToFile(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments);

struct RegistrySettings {
    LogCallback sink = nullptr;    // null: the sink stays
    std::optional<int32_t> level;  // from 1 to the most that is allowed
};

// Reads the user's settings and opens the log file that they name, which is the process's: it replaces an earlier one,
// and stays open until another or the library's end replaces it. One thread at a time.
RegistrySettings readRegistrySettings(int32_t maxLevel) noexcept;

}  // namespace zant::log
