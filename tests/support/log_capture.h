// Collects what the library logs while it lives. One at a time: it installs itself as the library's logger.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "zelmar_kor/backend_extensions.h"

namespace zant::test {

struct LogLine {
    int32_t level;
    std::string format;  // as the log site wrote it
    std::string text;    // expanded
};

class LogCapture {
public:
    explicit LogCapture(ZantLogLevel maxLevel = ZANT_LOG_LEVEL_DEBUG);
    ~LogCapture();  // leaves the library without a logger
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    // What was logged so far, from any thread; take also forgets it.
    std::vector<LogLine> lines() const;
    std::vector<LogLine> take();
    // The same, each line as its level and its text: "1 Cannot open file x".
    std::vector<std::string> texts() const;
    std::vector<std::string> takeTexts();
};

}  // namespace zant::test
