#include <windows.h>
// Behind windows.h, which it builds on.
#include <io.h>

#include <system_error>

#include "machine/platform.h"

namespace runhost::platform {

namespace fs = std::filesystem;

void* loadLibrary(const std::string& path, std::string& error) {
    const fs::path file = fs::path(path).make_preferred();
    HMODULE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (library == nullptr) {
        const auto code = static_cast<int>(GetLastError());
        error = path + ": " + std::system_category().message(code) + " (error " + std::to_string(code) + ")";
    }
    return library;
}

void* findSymbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void unloadLibrary(void* library) {
    FreeLibrary(static_cast<HMODULE>(library));
}

fs::path executableDirectory() {
    std::wstring file(32768, L'\0');  // the longest path there is
    const DWORD length = GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
    return length == 0 ? fs::path(".") : fs::path(file.substr(0, length)).parent_path();
}

bool canStandIn() {
    return false;
}

void standIn(const fs::path&) {}

void nameCapabilities(const fs::path& file) {
    _wputenv_s(L"ZELMAR_SIM_CAPABILITIES", file.c_str());
}

// The system has set it.
void nameWindowsDirectory(const fs::path&) {}

bool isTerminal(std::FILE* stream) {
    return _isatty(_fileno(stream)) != 0;
}

}  // namespace runhost::platform
