// The log callback that the host installs, and the lines it has taken.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/backend_extensions.h"

namespace runhost {

struct LogLine {
    int32_t level;
    uint64_t timestampNs;  // since setupLogging
    std::string text;      // expanded
};

// The contract gives a callback no word of its own, so the lines of the whole process meet here. Any thread.
void captureLog(const char* format, ZantLogLevel level, uint64_t timestampNs, va_list arguments);

// The lines since the last call, in order of arrival.
std::vector<LogLine> takeLog();

// "error", "warning", "info", "verbose", "debug".
const char* levelName(int32_t level);

}  // namespace runhost
