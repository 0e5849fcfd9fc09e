// The system's operations on Linux.
#include <dlfcn.h>
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <new>
#include <string_view>
#include <vector>

#include "platform/system.h"

namespace zant::system {

namespace {

// A path that needs more than this many characters, its end included, counts as one without a name.
constexpr size_t MODULE_PATH_CAPACITY = 260;

// The handle of a module in the process, with the reference that dlopen takes given back. The main program's name
// is the empty text.
void* handleOfLoaded(const char* name) noexcept {
    void* handle = dlopen(*name == '\0' ? nullptr : name, RTLD_LAZY | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle;
}

int countModule(dl_phdr_info*, size_t, void* count) {
    ++*static_cast<size_t*>(count);
    return 0;
}

struct NameCollection {
    std::vector<std::string> names;
    bool failed = false;
};

int collectName(dl_phdr_info* info, size_t, void* collection) {
    auto* names = static_cast<NameCollection*>(collection);
    try {
        names->names.emplace_back(info->dlpi_name != nullptr ? info->dlpi_name : "");
        return 0;
    } catch (const std::bad_alloc&) {
        names->failed = true;  // no exception may cross the loader's lock
        return 1;
    }
}

std::optional<std::vector<std::string>> moduleNames() noexcept {
    NameCollection collection;
    dl_iterate_phdr(collectName, &collection);
    if (collection.failed) return std::nullopt;
    return std::move(collection.names);
}

std::string_view baseName(std::string_view path) noexcept {
    return path.substr(path.rfind('/') + 1);
}

// Also true where they cannot be listed for want of memory.
bool isListed(void* module) noexcept {
    const auto names = moduleNames();
    return !names || std::any_of(names->begin(), names->end(),
                                 [module](const std::string& name) { return handleOfLoaded(name.c_str()) == module; });
}

// The kernel's name for the file that the memory at an address came from, empty if there is none.
std::string mappedFile(const void* address) {
    std::ifstream maps("/proc/self/maps");
    std::string line;
    while (std::getline(maps, line)) {
        // A line begins with the range's ends in hexadecimal, a hyphen between them.
        uintptr_t begin = 0;
        uintptr_t end = 0;
        const char* last = line.data() + line.size();
        const std::from_chars_result first = std::from_chars(line.data(), last, begin, 16);
        if (first.ptr == last || std::from_chars(first.ptr + 1, last, end, 16).ec != std::errc()) continue;
        const auto wanted = reinterpret_cast<uintptr_t>(address);
        const size_t nameAt = line.find('/');
        if (begin <= wanted && wanted < end) return nameAt == std::string::npos ? "" : line.substr(nameAt);
    }
    return "";
}

class OpenFile {
public:
    // Without waiting for the other end of a pipe; what is not a regular file is refused afterwards.
    explicit OpenFile(const char* path) noexcept {
        do {
            m_descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
        } while (m_descriptor < 0 && errno == EINTR);
    }
    ~OpenFile() {
        if (m_descriptor >= 0) close(m_descriptor);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool regularFileSize(size_t& size) const noexcept {
        struct stat status {};
        if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0 || !S_ISREG(status.st_mode)) return false;
        size = static_cast<size_t>(status.st_size);
        return true;
    }

    // Reads until size bytes or the file's end; false on an error.
    bool readUpTo(char* buffer, size_t size, size_t& count) const noexcept {
        count = 0;
        while (count < size) {
            const ssize_t got = ::read(m_descriptor, buffer + count, size - count);
            if (got < 0 && errno == EINTR) continue;
            if (got < 0) return false;
            if (got == 0) break;
            count += static_cast<size_t>(got);
        }
        return true;
    }

private:
    int m_descriptor = -1;
};

}  // namespace

void* mainModule() noexcept {
    return handleOfLoaded("");
}

// RTLD_LOCAL always: which modules a default search sees is the shim's own affair, and the process's namespace
// stays as the host made it.
void* loadModule(const char* path) noexcept {
    void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    if (module != nullptr || std::strchr(path, '\\') == nullptr) return module;
    // The directories of a machine that ZELMAR_PLATFORM_ROOT stands for come with its own separators.
    try {
        std::string here = path;
        std::replace(here.begin(), here.end(), '\\', '/');
        return dlopen(here.c_str(), RTLD_NOW | RTLD_LOCAL);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* findLoadedModule(const char* name) noexcept {
    if (void* handle = handleOfLoaded(name)) return handle;
    // A module loaded by path is also known by its bare file name.
    if (std::strchr(name, '/') != nullptr) return nullptr;
    const auto names = moduleNames();
    if (!names) return nullptr;
    const auto found =
        std::find_if(names->begin(), names->end(), [name](const std::string& path) { return baseName(path) == name; });
    return found == names->end() || found->empty() ? nullptr : handleOfLoaded(found->c_str());
}

bool unloadModule(void* module) noexcept {
    // mainModule took no reference: the one that could be given back is the process's own.
    if (module != nullptr && module == mainModule()) return true;
    return isListed(module) && dlclose(module) == 0;
}

void* resolveSymbol(void* module, const char* name) noexcept {
    void* address = dlsym(module, name);
    if (address == nullptr) return nullptr;
    // dlsym goes on into the module's dependencies; a hit there is another module's symbol.
    Dl_info info{};
    link_map* owner = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0) return nullptr;
    link_map* own = nullptr;
    if (dlinfo(module, RTLD_DI_LINKMAP, static_cast<void*>(&own)) != 0) return nullptr;
    return owner == own ? address : nullptr;
}

std::optional<size_t> countModules() noexcept {
    size_t count = 0;
    dl_iterate_phdr(countModule, &count);
    return count;
}

std::optional<size_t> listModules(void** modules, size_t capacity) noexcept {
    const auto names = moduleNames();
    if (!names) return std::nullopt;
    size_t count = 0;
    for (const std::string& name : *names) {
        if (count == capacity) break;
        // The kernel's own page is listed and cannot be opened.
        if (void* handle = handleOfLoaded(name.c_str())) modules[count++] = handle;
    }
    return count;
}

bool moduleFileOfAddress(const void* address, std::string& path) {
    Dl_info info{};
    link_map* owner = nullptr;
    if (dladdr1(address, &info, reinterpret_cast<void**>(&owner), RTLD_DL_LINKMAP) == 0 || owner == nullptr) {
        return false;
    }
    // An absolute name is where the module was loaded from, links and all: its siblings lie there. The main program
    // has no name, and a relative one may lead elsewhere since the working directory changed.
    path = *owner->l_name == '/' ? owner->l_name : mappedFile(owner->l_ld);
    if (path.size() >= MODULE_PATH_CAPACITY) path.clear();
    return true;
}

ReadFileStatus readWholeFile(const char* path, size_t maxSize, FileContents& contents) noexcept {
    const OpenFile file(path);
    size_t size = 0;
    if (!file.regularFileSize(size)) return ReadFileStatus::cannotOpen;
    if (size > maxSize) return ReadFileStatus::noMemory;
    contents.text.reset(new (std::nothrow) char[size + 1]);
    if (contents.text == nullptr) return ReadFileStatus::noMemory;
    if (!file.readUpTo(contents.text.get(), size, contents.size)) return ReadFileStatus::cannotOpen;
    contents.text[contents.size] = '\0';
    return ReadFileStatus::ok;
}

namespace {

constexpr int NOT_REGULAR = -1;

const char* errorText(int code) noexcept {
    const char* text = strerrordesc_np(code);  // null for a number that the C library does not know
    return text != nullptr ? text : "Unknown error";
}

// Refuses what would block, or what a write would do more to than change a file. An error number, 0 for none.
int checkRegularFile(int descriptor) noexcept {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) return errno;
    return S_ISREG(status.st_mode) ? 0 : NOT_REGULAR;
}

}  // namespace

int openForUpdate(const char* path, std::string& error) {
    // Looked at before it is opened too: opening a device can do something already.
    struct stat status {};
    int code = stat(path, &status) == 0 && !S_ISREG(status.st_mode) ? NOT_REGULAR : 0;
    int descriptor = -1;
    while (code == 0 && descriptor < 0) {
        descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0644);
        if (descriptor < 0 && errno != EINTR) code = errno;
    }
    if (code == 0) code = checkRegularFile(descriptor);
    if (code == 0 && descriptor == 0) {
        // A process without standard input: 0 would read as no descriptor.
        descriptor = fcntl(0, F_DUPFD_CLOEXEC, 1);
        if (descriptor < 0) code = errno;
        close(0);
    }
    if (code == 0) return descriptor;
    if (descriptor >= 0) close(descriptor);
    error = code == NOT_REGULAR ? "Not a regular file" : errorText(code);
    return -1;
}

bool closeDescriptor(int descriptor, char (&error)[ERROR_TEXT_CAPACITY]) noexcept {
    // After an interrupted close the descriptor is gone: a second close could hit another's.
    if (close(descriptor) == 0 || errno == EINTR) return true;
    (void)std::snprintf(error, sizeof(error), "%s", errorText(errno));
    return false;
}

bool ensureFile(const char* path) noexcept {
    if (access(path, F_OK) == 0) return true;
    const int descriptor = open(path, O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
    if (descriptor < 0) return false;
    close(descriptor);
    return true;
}

int openForAppend(const char* path) noexcept {
    const int descriptor = open(path, O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0777);
    if (descriptor < 0 || lseek(descriptor, 0, SEEK_END) >= 0) return descriptor;
    close(descriptor);
    return -1;
}

bool writeAll(int descriptor, const char* text, size_t size) noexcept {
    while (size > 0) {
        const ssize_t written = ::write(descriptor, text, size);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text += written;
        size -= static_cast<size_t>(written);
    }
    return true;
}

void writeTraceEvent(const char*) noexcept {}

void setThreadName(const char* name) noexcept {
    char cut[16] = {};  // all that the kernel takes, its end included
    std::strncpy(cut, name, sizeof(cut) - 1);
    pthread_setname_np(pthread_self(), cut);
}

uint64_t wallClockNs() noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const auto nanoseconds = static_cast<uint64_t>(now.tv_nsec);
    return static_cast<uint64_t>(now.tv_sec) * 1'000'000'000U + nanoseconds - nanoseconds % 100;
}

}  // namespace zant::system
