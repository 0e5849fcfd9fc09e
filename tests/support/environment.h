// An environment variable of the process, set for a scope.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace zant::test {

class ScopedVariable {
public:
    // A null value takes the variable away. On Windows the value is UTF-8, and an empty one is none.
    ScopedVariable(const char* name, const char* value) : m_name(textOf(name)), m_before(get(m_name)) {
        set(m_name, value == nullptr ? std::nullopt : std::optional(textOf(value)));
    }
    ~ScopedVariable() { set(m_name, m_before); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    // As the system keeps it.
    using Text = std::filesystem::path::string_type;

    static Text textOf(const char* utf8) {
        return std::filesystem::path(reinterpret_cast<const char8_t*>(utf8)).native();
    }

#if defined(_WIN32)
    static std::optional<Text> get(const Text& name) {
        const wchar_t* value = _wgetenv(name.c_str());
        return value == nullptr ? std::nullopt : std::optional<Text>(value);
    }
    static void set(const Text& name, const std::optional<Text>& value) {
        _wputenv_s(name.c_str(), value.value_or(L"").c_str());
    }
#else
    static std::optional<Text> get(const Text& name) {
        const char* value = std::getenv(name.c_str());
        return value == nullptr ? std::nullopt : std::optional<Text>(value);
    }
    static void set(const Text& name, const std::optional<Text>& value) {
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    }
#endif

    const Text m_name;
    const std::optional<Text> m_before;
};

}  // namespace zant::test
