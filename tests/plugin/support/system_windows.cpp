#include "plugin/support/system.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>

#include "platform.h"
#include "plugin/support/process.h"

// MinGW-w64's headers know it from version 11 on.
extern "C" WINBASEAPI HRESULT WINAPI SetThreadDescription(HANDLE thread, PCWSTR description);

namespace testing_support {

namespace {

template <typename Record>
const Record* recordAt(const void* image, size_t offset) {
    return reinterpret_cast<const Record*>(static_cast<const char*>(image) + offset);
}

// The shell takes double quotes and has its own name for the device that swallows all.
std::string shellWords(std::string arguments) {
    const std::string nowhere = "/dev/null";
    std::replace(arguments.begin(), arguments.end(), '\'', '"');
    if (const size_t at = arguments.find(nowhere); at != std::string::npos)
        arguments.replace(at, nowhere.size(), "NUL");
    return arguments;
}

}  // namespace

std::set<std::string> exportedNames(const std::string& path) {
    std::string error;
    void* const image = runhost::platform::loadLibrary(path, error);
    if (image == nullptr) throw std::runtime_error(error);
    const auto* dosHeader = recordAt<IMAGE_DOS_HEADER>(image, 0);
    const auto* headers = recordAt<IMAGE_NT_HEADERS>(image, static_cast<size_t>(dosHeader->e_lfanew));
    const auto& entry = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto* directory = recordAt<IMAGE_EXPORT_DIRECTORY>(image, entry.VirtualAddress);
    const auto* nameOffsets = recordAt<uint32_t>(image, directory->AddressOfNames);
    std::set<std::string> names;
    for (size_t i = 0; i < directory->NumberOfNames; ++i) names.insert(recordAt<char>(image, nameOffsets[i]));
    runhost::platform::unloadLibrary(image);
    return names;
}

bool isLoaded(const std::string& path) {
    return GetModuleHandleW(std::filesystem::path(path).make_preferred().c_str()) != nullptr;
}

bool seesMemoryReplaced() {
    return false;
}

void nameThread(const char* name) {
    SetThreadDescription(GetCurrentThread(), std::filesystem::path(name).c_str());
}

ProcessResult runProgram(const std::string& program, const std::string& arguments) {
    // Of two redirections of one stream the later holds.
    const char* errors = arguments.find("2>") == std::string::npos ? " 2>&1" : "";
    // The shell takes the outermost quotes away.
    std::FILE* pipe = _popen(("\"\"" + program + "\" " + shellWords(arguments) + errors + "\"").c_str(), "r");
    const std::string output = readStream(pipe);
    return {_pclose(pipe), output};
}

}  // namespace testing_support
