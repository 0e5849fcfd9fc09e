#include <dlfcn.h>
#include <unistd.h>

#include <cstdlib>

#include "machine/platform.h"

namespace runhost::platform {

namespace fs = std::filesystem;

void* loadLibrary(const std::string& path, std::string& error) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library != nullptr) return library;
    const char* text = dlerror();
    error = text == nullptr ? "unknown loader error" : text;
    return nullptr;
}

void* findSymbol(void* library, const char* name) {
    return dlsym(library, name);
}

void unloadLibrary(void* library) {
    dlclose(library);
}

fs::path executableDirectory() {
    std::error_code error;
    const fs::path executable = fs::read_symlink("/proc/self/exe", error);
    return error ? fs::path(".") : executable.parent_path();
}

bool canStandIn() {
    return true;
}

void standIn(const fs::path& directory) {
    constexpr int replace = 1;
    setenv("ZELMAR_PLATFORM_ROOT", directory.c_str(), replace);
}

void nameCapabilities(const fs::path& file) {
    constexpr int replace = 1;
    setenv("ZELMAR_SIM_CAPABILITIES", file.c_str(), replace);
}

void nameWindowsDirectory(const fs::path& directory) {
    constexpr int keep = 0;
    setenv("windir", directory.c_str(), keep);
}

bool isTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

}  // namespace runhost::platform
