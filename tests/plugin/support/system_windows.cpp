#include "plugin/support/process.h"

#include <windows.h>

#include <algorithm>

#include "machine/platform.h"

namespace testing_support {

namespace {

// The shell takes double quotes and has its own name for the device that swallows all.
std::string shellWords(std::string arguments) {
    const std::string nowhere = "/dev/null";
    std::replace(arguments.begin(), arguments.end(), '\'', '"');
    if (const size_t at = arguments.find(nowhere); at != std::string::npos)
        arguments.replace(at, nowhere.size(), "NUL");
    return arguments;
}

}  // namespace

bool isLoaded(const std::string& path) {
    return GetModuleHandleW(std::filesystem::path(path).make_preferred().c_str()) != nullptr;
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
