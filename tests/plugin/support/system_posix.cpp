#include "plugin/support/system.h"

#include <dlfcn.h>
#include <sys/wait.h>

#include "plugin/support/process.h"

namespace testing_support {

bool isLoaded(const std::string& path) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);
    return library != nullptr;
}

ProcessResult runProgram(const std::string& program, const std::string& arguments) {
    std::FILE* pipe = popen(("{ '" + program + "' " + arguments + "; } 2>&1").c_str(), "r");
    const std::string output = readStream(pipe);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace testing_support
