#include "machine/paths.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <sstream>
#include <system_error>

#include "machine/platform.h"

namespace fs = std::filesystem;

namespace runhost {

namespace {

// directories: relative to the executable, separated by colons.
std::vector<fs::path> besideExecutable(const std::string& directories) {
    std::vector<fs::path> found;
    std::istringstream stream(directories);
    for (std::string directory; std::getline(stream, directory, ':');) {
        found.push_back((platform::executableDirectory() / directory).lexically_normal());
    }
    return found;
}

bool isDirectory(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

// Empty when it is in none of the directories.
std::string findBeside(const char* directories, const std::string& fileName) {
    for (const fs::path& directory : besideExecutable(directories)) {
        std::error_code error;
        if (fs::is_regular_file(directory / fileName, error)) return (directory / fileName).string();
    }
    return {};
}

std::string findLibrary(const std::string& fileName, const std::string& option) {
    if (std::string path = findBeside(RUNHOST_LIBRARY_DIRECTORIES, fileName); !path.empty()) return path;
    throw UsageError(fileName + " was not found beside this program: name it with " + option);
}

}  // namespace

std::string extensionsPath(const std::string& given) {
    return given.empty() ? findLibrary(RUNHOST_EXTENSIONS_FILE, "--library") : given;
}

std::string backendPath(const std::string& given) {
    return given.empty() ? findLibrary(RUNHOST_SIM_BACKEND_FILE, "--backend") : given;
}

std::string inspectionPath(const std::string& givenExtensions) {
    return (fs::path(extensionsPath(givenExtensions)).parent_path() / RUNHOST_INSPECTION_FILE).string();
}

std::string capabilityLibraryPath(const std::string& fileName) {
    if (std::string path = findBeside(RUNHOST_CAPABILITY_DIRECTORIES, fileName); !path.empty()) return path;
    throw UsageError(fileName + " was not found beside this program: install the simulated machine with it");
}

std::string rpcLibraryPath() {
    if (std::string path = findBeside(RUNHOST_DRIVER_DIRECTORIES, RUNHOST_RPC_LIBRARY_FILE); !path.empty()) return path;
    throw UsageError(RUNHOST_RPC_LIBRARY_FILE
                     " was not found beside this program: install the simulated machine with it");
}

void useRpcLibrary(const std::string& path) {
    platform::nameWindowsDirectory(fs::path(path).parent_path().parent_path());
}

std::string configPath(const std::string& path) {
    return path.front() == '{' ? "./" + path : path;
}

std::optional<fs::path> findMachine(const std::string& nameOrDirectory) {
    const bool isName = nameOrDirectory.find('/') == std::string::npos && nameOrDirectory.front() != '.';
    for (const fs::path& directory : besideExecutable(isName ? RUNHOST_MACHINE_DIRECTORIES : "")) {
        if (isDirectory(directory / nameOrDirectory)) return directory / nameOrDirectory;
    }
    if (isDirectory(nameOrDirectory)) return fs::absolute(nameOrDirectory);
    return std::nullopt;
}

std::string machinePath(const std::string& given) {
    if (given.empty()) return {};
    if (const auto found = findMachine(given)) return found->string();
    throw UsageError(
        fmt::format("no machine \"{}\": give a directory or one of {}", given, fmt::join(machineNames(), ", ")));
}

std::vector<std::string> machineNames() {
    std::vector<std::string> names;
    for (const fs::path& directory : besideExecutable(RUNHOST_MACHINE_DIRECTORIES)) {
        std::error_code error;
        for (const fs::directory_entry& entry : fs::directory_iterator(directory, error)) {
            names.push_back(entry.path().filename().string());
        }
        if (!names.empty()) break;
    }
    std::sort(names.begin(), names.end());
    return names;
}

void useMachine(const fs::path& directory) {
    if (!platform::canStandIn()) {
        throw UsageError("on this system the library sees the real machine only: leave --machine out");
    }
    platform::standIn(directory);
}

std::string readFile(const std::string& path) {
    const auto fail = [] { throw std::system_error(errno, std::generic_category()); };
    const auto close = [](std::FILE* stream) { static_cast<void>(std::fclose(stream)); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "rb"), close);
    if (file == nullptr) fail();
    std::string text;
    char block[16384];
    while (const size_t length = std::fread(block, 1, sizeof(block), file.get())) text.append(block, length);
    if (std::ferror(file.get()) != 0) fail();
    return text;
}

}  // namespace runhost
