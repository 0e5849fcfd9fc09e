// An environment variable of the process, set for a scope.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace zant::test {

class ScopedVariable {
public:
    // A null value takes the variable away.
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        if (const char* before = std::getenv(name)) m_before = before;
        set(m_name, value);
    }
    ~ScopedVariable() { set(m_name, m_before ? m_before->c_str() : nullptr); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    static void set(const char* name, const char* value) {
#if defined(_WIN32)
        _putenv_s(name, value == nullptr ? "" : value);
#else
        value == nullptr ? unsetenv(name) : setenv(name, value, 1);
#endif
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

}  // namespace zant::test
