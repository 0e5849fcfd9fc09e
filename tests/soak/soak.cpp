// A long life in one process: the shared library is loaded, lived with and unloaded again and again, at each unload
// with a hold running; then one object runs graphs as often as a day of inferences does. Threads, descriptors and
// resident memory stay as they are.
// usage: soak [LOADS] [RUNS]
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "life/model_life.h"

namespace {

using namespace zant::test;

constexpr size_t DRIFT_KIB = 64;

struct Footprint {
    size_t threads;
    size_t descriptors;
    size_t residentKib;
};

size_t entriesOf(const char* folder) {
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

Footprint footprint() {
    size_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    return {entriesOf("/proc/self/task"), entriesOf("/proc/self/fd"),
            pages * static_cast<size_t>(sysconf(_SC_PAGESIZE)) / 1024};
}

[[noreturn]] void fail(const std::string& what) {
    std::fprintf(stderr, "soak: %s\n", what.c_str());
    std::exit(EXIT_FAILURE);
}

void check(const char* what, const Footprint& before, const Footprint& after) {
    std::printf("%s: threads %zu to %zu, descriptors %zu to %zu, resident %zu to %zu KiB\n", what, before.threads,
                after.threads, before.descriptors, after.descriptors, before.residentKib, after.residentKib);
    if (after.threads != before.threads || after.descriptors != before.descriptors ||
        after.residentKib > before.residentKib + DRIFT_KIB) {
        fail("the process grew");
    }
}

void checkHooks(const ModelLife& life) {
    if (life.failedHooks() != 0) fail(std::string(life.firstFailed()) + " failed");
}

FakeDarlink& darlink() {
    setenv("ZELMAR_PLATFORM_ROOT", TEST_MACHINE, 1);
    setenv("windir", TEST_MACHINE "/windows", 1);
    void* library = dlopen(TEST_MACHINE "/windows/drivers/libdarlink.dll", RTLD_NOW | RTLD_LOCAL);
    const auto state = library == nullptr
                           ? nullptr
                           : reinterpret_cast<decltype(&fakeDarlinkState)>(dlsym(library, "fakeDarlinkState"));
    if (state == nullptr) fail("no RPC client library");
    return *state();
}

class Library {
public:
    Library() : m_handle(dlopen(EXTENSIONS_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {
        if (m_handle == nullptr) fail(dlerror());
    }
    ~Library() {
        dlclose(m_handle);
        if (dlopen(EXTENSIONS_LIBRARY, RTLD_NOW | RTLD_NOLOAD) != nullptr) fail("the library stays in the process");
    }
    Factory factory() const {
        return {reinterpret_cast<decltype(Factory::create)>(dlsym(m_handle, "createBackendInterface")),
                reinterpret_cast<decltype(Factory::destroy)>(dlsym(m_handle, "destroyBackendInterface"))};
    }

private:
    void* m_handle;
};

// The last run leaves a hold of 300 ms, which the object's end cuts short.
void liveOnce(const std::string& document, Road road) {
    const Library library;
    ModelLife life(library.factory(), document.c_str(), "p");
    life.begin(road, false);
    life.executeOnce("encoder");
    checkHooks(life);
}

void loads(Neighbours& neighbours, size_t count) {
    const std::string documents[] = {everyOption("", true), everyOption("", false)};
    constexpr size_t WARM_UP = 200;
    Footprint before{};
    for (size_t i = 0; i < WARM_UP + count; ++i) {
        if (i == WARM_UP) before = footprint();
        neighbours.fail({});
        liveOnce(documents[i % 2], ROADS[i % 3]);
        if (neighbours.liveIds() != 0 || neighbours.liveBlocks() != 0) fail("something of the backend's stands");
        neighbours.forget();
    }
    check((std::to_string(count) + " loads").c_str(), before, footprint());
}

void runs(Neighbours& neighbours, size_t count) {
    constexpr size_t WARM_UP = 10'000;
    for (const bool async : {true, false}) {
        const std::string document = everyOption("", async);
        const Library library;
        ModelLife life(library.factory(), document.c_str(), "p");
        neighbours.fail({});
        life.begin(Road::compose, true);
        Footprint before{};
        for (size_t i = 0; i < WARM_UP + count / 2; ++i) {
            if (i == WARM_UP) before = footprint();
            life.executeOnce("encoder");
        }
        checkHooks(life);
        check((std::to_string(count / 2) + (async ? " runs, async" : " runs")).c_str(), before, footprint());
        life.end();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const size_t loadCount = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 10'000;
    const size_t runCount = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1'000'000;
    static Neighbours neighbours(darlink());
    footprint();  // takes memory of its own the first time
    loads(neighbours, loadCount);
    runs(neighbours, runCount);
    std::puts("soak: ok");
}
