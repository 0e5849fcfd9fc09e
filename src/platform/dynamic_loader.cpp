#include "platform/dynamic_loader.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <utility>

#include "platform/mutex.h"
#include "platform/system.h"

namespace zant::loader {

namespace {

thread_local const char* t_error = "";

// Whoever unloads a module after this library's own end, as a host's late destructor may, finds no set.
std::atomic<bool> g_isEnded{false};

class LocalModules {
public:
    LocalModules() = default;
    LocalModules(const LocalModules&) = delete;
    LocalModules& operator=(const LocalModules&) = delete;
    ~LocalModules() { g_isEnded.store(true); }

    bool add(void* module) noexcept EXCLUDES(m_mutex) {
        if (g_isEnded.load()) return true;
        MutexLock lock(m_mutex);
        try {
            m_modules.insert(module);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        }
    }
    void remove(void* module) noexcept EXCLUDES(m_mutex) {
        if (g_isEnded.load()) return;
        MutexLock lock(m_mutex);
        m_modules.erase(module);
    }
    bool contains(void* module) noexcept EXCLUDES(m_mutex) {
        if (g_isEnded.load()) return false;
        MutexLock lock(m_mutex);
        return m_modules.contains(module);
    }

private:
    Mutex m_mutex;
    std::set<void*> m_modules GUARDED_BY(m_mutex);
};

LocalModules g_localModules;

struct ModuleList {
    std::unique_ptr<void*[]> modules;
    size_t count = 0;

    void* const* begin() const { return modules.get(); }
    void* const* end() const { return modules.get() + count; }
};

// The process's modules, or nothing with the error text set.
std::optional<ModuleList> fetchModules() noexcept {
    const std::optional<size_t> capacity = system::countModules();
    if (!capacity) {
        t_error = "enumerate modules failed before memory allocation";
        return std::nullopt;
    }
    ModuleList list;
    list.modules.reset(new (std::nothrow) void*[*capacity]);
    if (list.modules == nullptr) {
        t_error = "malloc failed";
        return std::nullopt;
    }
    const std::optional<size_t> count = system::listModules(list.modules.get(), *capacity);
    if (!count) {
        t_error = "enumerate modules failed after memory allocation";
        return std::nullopt;
    }
    list.count = *count;
    return list;
}

void* resolveInWholeProcess(const ModuleList& list, const char* name) noexcept {
    for (void* module : list) {
        if (g_localModules.contains(module)) continue;
        if (void* address = system::resolveSymbol(module, name)) return address;
    }
    return nullptr;
}

void* openOwnModule() noexcept {
    void* module = system::mainModule();
    if (module == nullptr) t_error = "getting own handle failed";
    return module;
}

void* failOpen(void* module, const char* error) noexcept {
    t_error = error;
    if (module != nullptr) system::unloadModule(module);
    return nullptr;
}

}  // namespace

void* dlOpen(const char* filename, uint32_t flags) noexcept {
    if (filename == nullptr || *filename == '\0') return openOwnModule();
    if ((flags & DL_NOW) == 0 && flags != DL_NOLOAD) {
        return failOpen(nullptr, "flags must either include DL_NOW or only specify DL_NOLOAD");
    }
    if ((flags & DL_NOLOAD) != 0) return system::findLoadedModule(filename);
    const std::optional<size_t> before = system::countModules();
    if (!before) return failOpen(nullptr, "enumerate modules failed before loading module");
    void* module = system::loadModule(filename);
    if (module == nullptr) return failOpen(nullptr, "load library failed");
    const std::optional<size_t> after = system::countModules();
    if (!after) return failOpen(module, "enumerate modules failed after loading module");
    // A module that was in the process before keeps the visibility that it had.
    if ((flags & DL_LOCAL) != 0 && *before != *after && !g_localModules.add(module)) {
        // Without its place in the set the module would be visible to all: that is no load as asked for.
        return failOpen(module, "load library failed");
    }
    if ((flags & DL_GLOBAL) != 0) g_localModules.remove(module);
    return module;
}

void* dlSym(void* handle, const char* name) noexcept {
    if (handle == nullptr || name == nullptr) return nullptr;
    const std::optional<ModuleList> list = fetchModules();
    if (!list) return nullptr;
    void* address = nullptr;
    if (handle == DL_DEFAULT) {
        address = resolveInWholeProcess(*list, name);
    } else if (std::find(list->begin(), list->end(), handle) != list->end()) {
        // Only a handle of the list is passed on: the system's loader may follow a stale one into freed memory.
        address = system::resolveSymbol(handle, name);
    }
    if (address == nullptr) t_error = "can't resolve symbol";
    return address;
}

int dlClose(void* handle) noexcept {
    if (handle == nullptr) return 0;
    if (!system::unloadModule(handle)) {
        t_error = "free library failed";
        return -1;
    }
    g_localModules.remove(handle);
    return 0;
}

const char* dlError() noexcept {
    return std::exchange(t_error, "");
}

int dlAddr(const void* address, std::string& path) noexcept {
    path.clear();
    if (address == nullptr) {
        t_error = "Input address is nullptr";
        return 0;
    }
    try {
        if (!system::moduleFileOfAddress(address, path)) {
            t_error = "Failed to get module handle";
            return 0;
        }
    } catch (const std::bad_alloc&) {
        path.clear();
    }
    if (path.empty()) {
        t_error = "Failed to get module file name";
        return 0;
    }
    return 1;
}

}  // namespace zant::loader
