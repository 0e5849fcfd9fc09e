// The one guard behind which whatever the host calls runs: nothing that is thrown reaches it.
#pragma once

#include <exception>
#include <utility>

#include "platform/logger.h"

namespace zant::kor {

// Runs body and returns its result. An escaping exception becomes one level 1 line and the failure value.
template <class Result, class Body>
Result guarded(const char* hook, Result failure, Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::exception& error) {
        ZANT_LOG_ERROR("%s failed: %s", hook, error.what());
    } catch (...) {
        ZANT_LOG_ERROR("%s failed: unknown exception", hook);
    }
    return failure;
}

}  // namespace zant::kor
