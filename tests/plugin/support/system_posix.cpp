#include "plugin/support/system.h"

#include <dlfcn.h>
#include <elf.h>
#include <pthread.h>
#include <sys/wait.h>

#include <cstring>

#include "plugin/support/process.h"

namespace testing_support {

namespace {

template <typename Record>
Record recordAt(const std::string& file, size_t offset) {
    Record record;
    if (offset + sizeof(record) > file.size()) throw std::out_of_range("a record behind the file's end");
    std::memcpy(&record, file.data() + offset, sizeof(record));
    return record;
}

}  // namespace

std::set<std::string> exportedNames(const std::string& path) {
    const std::string file = readText(path);
    const auto header = recordAt<Elf64_Ehdr>(file, 0);
    std::set<std::string> names;
    for (size_t section = 0; section < header.e_shnum; ++section) {
        const auto table = recordAt<Elf64_Shdr>(file, header.e_shoff + section * header.e_shentsize);
        if (table.sh_type != SHT_DYNSYM) continue;
        const auto strings = recordAt<Elf64_Shdr>(file, header.e_shoff + table.sh_link * header.e_shentsize);
        for (size_t i = 0; i < table.sh_size / sizeof(Elf64_Sym); ++i) {
            const auto symbol = recordAt<Elf64_Sym>(file, table.sh_offset + i * sizeof(Elf64_Sym));
            if (symbol.st_shndx != SHN_UNDEF) names.insert(file.c_str() + strings.sh_offset + symbol.st_name);
        }
    }
    return names;
}

bool isLoaded(const std::string& path) {
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (library != nullptr) dlclose(library);
    return library != nullptr;
}

bool seesMemoryReplaced() {
    return true;
}

void nameThread(const char* name) {
    pthread_setname_np(pthread_self(), name);
}

ProcessResult runProgram(const std::string& program, const std::string& arguments) {
    std::FILE* pipe = popen(("{ '" + program + "' " + arguments + "; } 2>&1").c_str(), "r");
    const std::string output = readStream(pipe);
    const int status = pclose(pipe);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, output};
}

}  // namespace testing_support
