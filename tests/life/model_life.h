// The whole life of a model as a host drives it, with every option of the document set.
#pragma once

#include <cstddef>
#include <string>

#include "life/neighbours.h"
#include "zelmar_kor/backend_extensions.h"

namespace zant::test {

enum class Road { compose, binary, binaryList };
inline constexpr Road ROADS[] = {Road::compose, Road::binary, Road::binaryList};

// The thread sanitizer keeps memory for every thread that ever was: under it there is none for thousands of lives, each
// of which has a thread or two.
#if defined(__SANITIZE_THREAD__)
inline constexpr bool HAS_MEMORY_FOR_ALL_LIVES = false;
#else
inline constexpr bool HAS_MEMORY_FOR_ALL_LIVES = true;
#endif

// Of a test's parameter.
template <class Info>
std::string roadName(const Info& info) {
    constexpr const char* NAMES[] = {"compose", "binary", "binaryList"};
    return NAMES[static_cast<size_t>(info.param)];
}

// A document with every option. patchFile: for concurrent_deserialization_patch, left out when empty.
std::string everyOption(const std::string& patchFile, bool asyncVoting);

// The library's two functions.
struct Factory {
    tools::runhost::IBackend* (*create)();
    void (*destroy)(tools::runhost::IBackend* backend);
};

// Those that the program itself is linked with.
inline Factory linkedFactory() {
    return {createBackendInterface, destroyBackendInterface};
}

// One object of the library and what became of it. A hook whose arguments the host has no memory for is left out.
class ModelLife {
public:
    // config, pool: a document, and the beginning of pool names; borrowed until the object goes.
    ModelLife(Factory factory, const char* config, const char* pool);
    ~ModelLife();
    ModelLife(const ModelLife&) = delete;
    ModelLife& operator=(const ModelLife&) = delete;

    // From the making of the object, unless it stands, to the end of its device. Each life has contexts of its own.
    // short: without pools, detaching, tensors and the extension.
    void run(Road road, bool isShort = false);
    void destroy();
    // One run of a graph of the document, within a life that began.
    void executeOnce(const char* graph);
    // run in two halves, for runs between them.
    void begin(Road road, bool isShort);
    void end();
    // Whether the document was taken.
    bool isLoaded() const { return m_isLoaded; }

    // Hooks that said false, and of these the ones that logged no error though they always have to.
    size_t failedHooks() const { return m_failed; }
    size_t silentFailures() const { return m_silent; }
    const char* firstFailed() const { return m_firstFailed; }
    // Resets the three above.
    void forgetFailures();

private:
    template <class Call>
    bool hook(const char* name, Call call, bool mayBeSilent = false);
    bool makeObject();
    void createContexts(Road road);
    void useBuffers();
    void useTensors();

    Factory m_factory;
    const char* m_config;
    const char* m_pool;
    tools::runhost::IBackend* m_backend = nullptr;
    bool m_isLoaded = false;
    uintptr_t m_firstContext = 1;
    size_t m_failed = 0;
    size_t m_silent = 0;
    const char* m_firstFailed = "";
};

}  // namespace zant::test
